#include "checked/small_host.h"
#include "support/qt_compat.h"

#include <unistd.h>

#include <stdexcept>

namespace tavmir::checked_tests
{

namespace
{

void withCallback(void (*inside)())
{
    insideCallback = inside;
    turnWithCallback();
}

void rebuildWithHandler(test::MessageHook handler)
{
    setUp();
    test::installMessageHook(handler);
    QList<HOSTVAR> vars;
    vars << test::hostVar("Main.W", 1);
    ReCreatReadVarList(&vars);
    test::installMessageHook(nullptr);
}

void readValue()
{
    QByteArray data;
    GetRegisterData("Main.W", 0, 0, 0, &data, 1);
}

} // namespace

std::vector<HostPair> callbackHosts()
{
    return {
        {"call-in-callback",
         [] {
             withCallback([] {
                 const RW_VAR var = goodWrite();
                 AddListWriteVar(&var);
             });
         },
         [] { withCallback(&readValue); }, "abort"},
        {"call-in-message-handler",
         [] { rebuildWithHandler([](QtMsgType, const QString&) { Ethernetcontains(1); }); },
         [] { rebuildWithHandler([](QtMsgType, const QString&) {}); }},
        {"callback-blocks", [] { withCallback([] { ::usleep(2100000); }); },
         [] { withCallback([] { ::usleep(1000); }); }},
        {"callback-changes-turn", [] { withCallback([] { PLC_driver.batchCount = 0; }); },
         [] { withCallback([] { PLC_driver.writeVarList.clear(); }); }},
        {"callback-unlocks-lists", [] { withCallback([] { PLC_driver.listMutex.unlock(); }); },
         [] {
             withCallback([] {
                 PLC_driver.cacheMutex.lock();
                 PLC_driver.cacheMutex.unlock();
             });
         },
         "abort"},
        {"callback-throws", [] { withCallback([] { throw std::runtime_error("lost"); }); },
         [] {
             withCallback([] {
                 try {
                     throw std::runtime_error("found");
                 } catch (const std::runtime_error&) {
                 }
             });
         }},
    };
}

} // namespace tavmir::checked_tests
