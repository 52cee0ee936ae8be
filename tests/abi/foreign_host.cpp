#include "abi/foreign_host.h"

#include <dlfcn.h>

#include <cstring>

namespace foreign
{

namespace
{

// Looks names up until one is missing.
class Names
{
public:
    explicit Names(void* loaded) : library(loaded) {}

    template <typename Pointer> void find(const char* name, Pointer& pointer)
    {
        void* address = dlsym(library, name);
        if (address == nullptr && missing.isEmpty()) {
            missing = QString::fromLatin1(name);
        }
        static_assert(sizeof pointer == sizeof address, "functions and data have one address size");
        std::memcpy(&pointer, &address, sizeof pointer);
    }

    QString firstMissing() const { return missing; }

private:
    void* library;
    QString missing;
};

} // namespace

QString lookUp(void* library, Driver& driver)
{
    Names names(library);
    names.find("SetComInfo", driver.setComInfo);
    names.find("RegistCallBackFuncIntf", driver.registerCallbacks);
    names.find("FlashLocalRegister", driver.flashLocalRegister);
    names.find("PassVarName_2", driver.passLabels);
    names.find("AddListReadVar", driver.addRead);
    names.find("AddListWriteVar", driver.addWrite);
    names.find("AddListOnceReadVar", driver.addOnceRead);
    names.find("ReCreatReadVarList", driver.rebuild);
    names.find("ComCommunication", driver.nextRequest);
    names.find("DataCom", driver.answer);
    names.find("GetRegisterData", driver.get);
    names.find("SetRegisterData", driver.set);
    names.find("EnCommStation", driver.enableStation);
    names.find("EnableEthernet", driver.enableEthernet);
    names.find("PLCAddressChangeIntef", driver.moveAddresses);
    names.find("QueryFinishFlag", driver.finished);
    names.find("LB", driver.localBits);
    names.find("LW", driver.localWords);
    names.find("RWI", driver.localRegisters);
    names.find("PLC_driver", driver.context);
    return names.firstMissing();
}

} // namespace foreign
