#include "driver_library.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace tavmir
{
namespace probe
{

namespace
{

const std::streamoff kMostLibraryBytes = 256 * 1024 * 1024;
const char kLibraryName[] = "libtavmir_kx_tcp.so.1";

// The folder of this program, with a slash at its end; empty when it cannot be told.
std::string programFolder()
{
    char program[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program);
    if (length <= 0 || length >= static_cast<ssize_t>(sizeof program)) {
        return std::string();
    }
    std::string path(program, static_cast<std::size_t>(length));
    return path.erase(path.rfind('/') + 1);
}

// The library in the program's folder, or where an installation has it; empty when neither is
// there.
std::string installedWithThisProgram()
{
    const std::string folder = programFolder();
    const std::string places[] = {folder + kLibraryName,
                                  folder + TAVMIR_LIBRARY_FOLDER "/" + kLibraryName};
    for (const std::string& place : places) {
        if (!folder.empty() && access(place.c_str(), R_OK) == 0) {
            return place;
        }
    }
    return std::string();
}

// True when the file names the QtCore that this program does not use. Two of them in one process
// take one another's functions.
bool madeForTheOtherQt(const std::string& file)
{
    const char* other = QT_VERSION < 0x050000 ? "libQt5Core.so.5" : "libQtCore.so.4";
    std::ifstream library(file.c_str(), std::ios::binary | std::ios::ate);
    const std::streamoff size = library.tellg();
    if (size <= 0 || size > kMostLibraryBytes) { // not there, or a folder
        return false;
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    library.seekg(0);
    library.read(&bytes[0], static_cast<std::streamsize>(size));
    return bytes.find(other) != std::string::npos;
}

template <typename Pointer> void resolve(void* handle, const char* name, Pointer& pointer)
{
    void* address = dlsym(handle, name);
    std::memcpy(&pointer, &address, sizeof pointer);
}

} // namespace

DriverLibrary::DriverLibrary() : handle(nullptr) {}

DriverLibrary::~DriverLibrary()
{
    if (handle != nullptr) {
        dlclose(handle);
    }
}

std::string DriverLibrary::load(const std::string& file)
{
    std::string name = file.empty() ? installedWithThisProgram() : file;
    if (name.empty()) {
        name = kLibraryName;
    }
    if (madeForTheOtherQt(name)) {
        return name + ": made for another Qt than this program's " + QT_VERSION_STR;
    }
    handle = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle != nullptr) {
        return std::string();
    }
    const char* reason = dlerror();
    return reason != nullptr ? reason : "cannot load " + name;
}

std::string DriverLibrary::path() const
{
    struct link_map* map = nullptr;
    if (handle == nullptr || dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0) {
        return std::string();
    }
    char resolved[PATH_MAX];
    return realpath(map->l_name, resolved) != nullptr ? resolved : map->l_name;
}

std::string DriverLibrary::version() const
{
    const std::string file = path();
    const std::size_t suffix = file.rfind(".so.");
    return suffix == std::string::npos ? "unknown" : file.substr(suffix + 4);
}

std::vector<std::string> DriverLibrary::expectedNames()
{
    return {"SetComInfo",
            "RegistCallBackFuncIntf",
            "FlashLocalRegister",
            "PassVarName_2",
            "AddListReadVar",
            "AddListWriteVar",
            "AddListOnceReadVar",
            "ReCreatReadVarList",
            "ComCommunication",
            "DataCom",
            "GetRegisterData",
            "SetRegisterData",
            "EnCommStation",
            "EnableEthernet",
            "PLCAddressChangeIntef",
            "QueryFinishFlag",
            "PLC_driver",
            "LB",
            "LW",
            "RWI",
            "_Z16Ethernetcontainsi",
            "_Z20customMessageHandler9QtMsgTypePKc"};
}

std::vector<std::string> DriverLibrary::missingNames() const
{
    std::vector<std::string> missing;
    for (const std::string& name : expectedNames()) {
        if (handle == nullptr || dlsym(handle, name.c_str()) == nullptr) {
            missing.push_back(name);
        }
    }
    return missing;
}

DriverCalls DriverLibrary::calls() const
{
    DriverCalls calls;
    resolve(handle, "SetComInfo", calls.setComInfo);
    resolve(handle, "RegistCallBackFuncIntf", calls.registerCallbacks);
    resolve(handle, "PassVarName_2", calls.passLabels);
    resolve(handle, "ReCreatReadVarList", calls.rebuildReadList);
    resolve(handle, "ComCommunication", calls.nextRequest);
    resolve(handle, "DataCom", calls.takeAnswer);
    resolve(handle, "GetRegisterData", calls.getValues);
    return calls;
}

} // namespace probe
} // namespace tavmir
