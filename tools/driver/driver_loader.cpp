// dlopen, and one dlsym for each entry point.
#include "driver_loader.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <dlfcn.h>

#include <atomic>

namespace tavmir::host
{

namespace
{

constexpr char kLibrary[] = "libtavmir_kx_tcp.so.1";

// The two entry points with C++ names, as the compilers of all supported panels spell them.
constexpr char kStationDisabledName[] = "_Z16Ethernetcontainsi";
constexpr char kLogMessageName[] = "_Z20customMessageHandler9QtMsgTypePKc";

// Installed programs have the library in ../lib, programs of a build tree in ../../src.
QString findDriver()
{
    const QDir programs(QCoreApplication::applicationDirPath());
    for (const char* folder : {"../lib/", "../../src/"}) {
        const QFileInfo candidate(programs.filePath(QString(folder) + kLibrary));
        if (candidate.exists()) {
            return candidate.canonicalFilePath();
        }
    }
    return kLibrary;
}

std::atomic<bool> oneIsLoaded{false};

bool isLoaded(const QString& name)
{
    void* library = dlopen(QFile::encodeName(name).constData(), RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) {
        return false;
    }
    dlclose(library);
    return true;
}

template <typename Function>
void lookUpOne(void* library, const char* symbol, const char* shownName, const QString& file,
               Function& function, QStringList& problems)
{
    function = reinterpret_cast<Function>(dlsym(library, symbol));
    if (function == nullptr) {
        problems << QString("driver %1 has no entry point %2").arg(file, shownName);
    }
}

} // namespace

std::unique_ptr<Driver> Driver::load(const QString& file, QStringList& problems)
{
    QString name = file.isEmpty() ? findDriver() : file;
    // A name without a slash would be searched for, not opened.
    if (!file.isEmpty()) {
        name = QFileInfo(file).absoluteFilePath();
    }
    if (isLoaded(name)) {
        problems << QString("driver %1 is in use in this process already").arg(name);
        return nullptr;
    }
    if (oneIsLoaded.exchange(true)) {
        problems << QString("driver %1: another one is in use in this process").arg(name);
        return nullptr;
    }
    void* library = dlopen(QFile::encodeName(name).constData(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        oneIsLoaded = false;
        problems << QString("cannot load the driver: %1").arg(QString::fromLocal8Bit(dlerror()));
        return nullptr;
    }
    std::unique_ptr<Driver> driver(new Driver(library, name));
    driver->lookUp(problems);
    if (!problems.isEmpty()) {
        return nullptr;
    }
    return driver;
}

Driver::~Driver()
{
    dlclose(library_);
    oneIsLoaded = false;
}

void Driver::lookUp(QStringList& problems)
{
    const auto plain = [&](const char* name, auto& function) {
        lookUpOne(library_, name, name, fileName_, function, problems);
    };
    plain("SetComInfo", api_.setComInfo);
    plain("RegistCallBackFuncIntf", api_.registerCallbacks);
    plain("FlashLocalRegister", api_.setLocalAreas);
    plain("PassVarName_2", api_.passLabels);
    plain("AddListReadVar", api_.addPolled);
    plain("AddListWriteVar", api_.addWrite);
    plain("AddListOnceReadVar", api_.addOnceRead);
    plain("ReCreatReadVarList", api_.rebuildPolled);
    plain("ComCommunication", api_.nextRequest);
    plain("DataCom", api_.takeReply);
    plain("GetRegisterData", api_.readCached);
    plain("SetRegisterData", api_.writeValue);
    plain("EnCommStation", api_.enableStation);
    plain("EnableEthernet", api_.enableEthernet);
    plain("PLCAddressChangeIntef", api_.changeAddress);
    plain("QueryFinishFlag", api_.queryFinish);
    lookUpOne(library_, kStationDisabledName, "Ethernetcontains(int)", fileName_,
              api_.stationDisabled, problems);
    api_.context = static_cast<Communication_Protocol*>(dlsym(library_, "PLC_driver"));
    if (api_.context == nullptr) {
        problems << QString("driver %1 has no global PLC_driver").arg(fileName_);
    }
    lookUpOne(library_, kLogMessageName, "customMessageHandler(QtMsgType, const char*)", fileName_,
              api_.logMessage, problems);
}

} // namespace tavmir::host
