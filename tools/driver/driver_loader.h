// Loads the driver library as a panel does and looks its entry points up by name.
#ifndef TAVMIR_DRIVER_DRIVER_LOADER_H
#define TAVMIR_DRIVER_DRIVER_LOADER_H

#include "tavmir_kx_tcp/host_interface.h"

#include <QtCore/QStringList>

#include <memory>

namespace tavmir::host
{

// The driver's entry points. What each does, locks and expects stands in host_interface.h.
struct DriverApi {
    decltype(&::SetComInfo) setComInfo = nullptr;
    decltype(&::RegistCallBackFuncIntf) registerCallbacks = nullptr;
    decltype(&::FlashLocalRegister) setLocalAreas = nullptr;
    decltype(&::PassVarName_2) passLabels = nullptr;
    decltype(&::AddListReadVar) addPolled = nullptr;
    decltype(&::AddListWriteVar) addWrite = nullptr;
    decltype(&::AddListOnceReadVar) addOnceRead = nullptr;
    decltype(&::ReCreatReadVarList) rebuildPolled = nullptr;
    decltype(&::ComCommunication) nextRequest = nullptr;
    decltype(&::DataCom) takeReply = nullptr;
    decltype(&::GetRegisterData) readCached = nullptr;
    decltype(&::SetRegisterData) writeValue = nullptr;
    decltype(&::EnCommStation) enableStation = nullptr;
    decltype(&::EnableEthernet) enableEthernet = nullptr;
    decltype(&::PLCAddressChangeIntef) changeAddress = nullptr;
    decltype(&::QueryFinishFlag) queryFinish = nullptr;
    decltype(&::Ethernetcontains) stationDisabled = nullptr;
    decltype(&::customMessageHandler) logMessage = nullptr;
    Communication_Protocol* context = nullptr; // PLC_driver
};

// A freshly loaded driver; unloads it when destroyed. No call may be running then, and no callback
// or message handler of it installed.
//
// The driver keeps its lists, caches and the host's connection record for as long as it is loaded,
// so a second user would inherit the first one's queue. Its reports do not say whose they are
// either: a process has one Driver at a time, whatever its file.
class Driver
{
public:
    // file  the library; empty: beside this program, then where the loader looks
    // Returns null and one message for each thing missing when it cannot be used, or is in use.
    static std::unique_ptr<Driver> load(const QString& file, QStringList& problems);

    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    const DriverApi& api() const { return api_; }
    const QString& fileName() const { return fileName_; }

private:
    Driver(void* library, const QString& fileName) : library_(library), fileName_(fileName) {}
    void lookUp(QStringList& problems);

    void* library_;
    QString fileName_;
    DriverApi api_;
};

} // namespace tavmir::host

#endif
