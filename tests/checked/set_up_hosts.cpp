#include "checked/small_host.h"
#include "support/qt_compat.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>
#include <thread>

namespace tavmir::checked_tests
{

namespace
{

const std::size_t kPage = 4096;

int otherVarDone(int, int, int, int)
{
    return 0;
}

void* freshPage()
{
    return ::mmap(nullptr, kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}

void cycleOnAPage(bool taken)
{
    void* const page = freshPage();
    SetComInfo(new (page) ComInfo());
    ComCommunication();
    if (taken) {
        ::munmap(page, kPage);
    }
    ComCommunication();
}

// A thread is inside the driver until the message handler lets it go.
void threadInsideTheDriver(bool waitForIt)
{
    setUp();
    static bool inside = false;
    static bool leave = false;
    test::installMessageHook([](QtMsgType, const QString&) {
        __atomic_store_n(&inside, true, __ATOMIC_SEQ_CST);
        while (!__atomic_load_n(&leave, __ATOMIC_SEQ_CST)) {
            ::usleep(1000);
        }
    });
    std::thread thread([] {
        QByteArray data;
        GetRegisterData("Nope.X", 0, 0, 0, &data, 1);
    });
    while (!__atomic_load_n(&inside, __ATOMIC_SEQ_CST)) {
        ::usleep(1000);
    }
    if (!waitForIt) {
        thread.detach();
        return;
    }
    __atomic_store_n(&leave, true, __ATOMIC_SEQ_CST);
    thread.join();
}

} // namespace

std::vector<HostPair> setUpHosts()
{
    return {
        {"com-info-missing", [] { ComCommunication(); },
         [] {
             SetComInfo(&record());
             ComCommunication();
         }},
        {"com-info-null", [] { SetComInfo(nullptr); }, [] { SetComInfo(&record()); }},
        {"com-info-unreadable", [] { cycleOnAPage(true); }, [] { cycleOnAPage(false); }},
        {"set-up-order",
         [] {
             RegistCallBackFuncIntf(nullptr, nullptr);
             SetComInfo(&record());
         },
         [] {
             SetComInfo(&record());
             RegistCallBackFuncIntf(nullptr, nullptr);
         }},
        {"set-up-after-cycle",
         [] {
             setUp();
             ComCommunication();
             FlashLocalRegister(nullptr, nullptr, nullptr);
         },
         [] {
             setUp();
             FlashLocalRegister(nullptr, nullptr, nullptr);
             ComCommunication();
         }},
        {"set-up-after-cycle",
         [] {
             turnWithCallback();
             RegistCallBackFuncIntf(&otherVarDone, nullptr);
         },
         [] {
             insideCallback = [] { RegistCallBackFuncIntf(&otherVarDone, nullptr); };
             turnWithCallback();
             turn();
         }},
        {"set-up-member-changed",
         [] {
             setUp();
             turn();
             PLC_driver.varDoneCallback = &otherVarDone;
             turn();
         },
         [] {
             insideCallback = [] { PLC_driver.varDoneCallback = &otherVarDone; };
             turnWithCallback();
             turn();
         }},
        {"set-up-member-changed",
         [] {
             setUp();
             turn();
             PLC_driver.commFailCallback = nullptr;
             turn();
         },
         [] {
             setUp();
             PLC_driver.varDoneCallback = &otherVarDone;
             PLC_driver.commFailCallback = nullptr;
             turn();
             turn();
         }},
        {"read-var-after-cycle",
         [] {
             setUp();
             ComCommunication();
             pollWords(1);
         },
         [] {
             setUp();
             pollWords(1);
             ComCommunication();
         }},
        {"unload-during-call", [] { threadInsideTheDriver(false); },
         [] { threadInsideTheDriver(true); }, "report", true},
    };
}

} // namespace tavmir::checked_tests
