#include "checked/forked_host.h"
#include "checked/small_host.h"
#include "support/qt_compat.h"

#include <unistd.h>

#include <atomic>
#include <thread>

namespace tavmir::checked_tests
{

namespace
{

std::atomic<bool> inside;
std::atomic<bool> leave;

void waitInHandler(QtMsgType, const QString&)
{
    inside = true;
    while (!leave) {
        ::usleep(1000);
    }
}

void drop(QtMsgType, const QString&) {}

void waitUntilInside()
{
    while (!inside) {
        ::usleep(1000);
    }
}

void writeBit()
{
    QByteArray bit(1, '\1');
    SetRegisterData("Main.W.b[3]", 0, QString(), 1, &bit, 1, 1, 1);
}

// Runs `second` while a thread is inside `first`, whose diagnostic line the handler holds until
// that is told, or after it.
void together(void (*first)(), void (*second)(), const char* id, bool beside)
{
    test::installMessageHook(&waitInHandler);
    leave = !beside;
    std::thread thread(first);
    if (beside) {
        waitUntilInside();
    } else {
        thread.join();
    }
    test::installMessageHook(beside ? &waitInHandler : &drop);
    std::thread releasing([beside, id] {
        if (beside) {
            waitForReport(id);
        }
        leave = true;
    });
    second();
    releasing.join();
    if (beside) {
        thread.join();
    }
}

void passLabelsBesideARead(bool beside)
{
    together(
        [] {
            QByteArray data;
            GetRegisterData("Nope.X", 0, 0, 0, &data, 1);
        },
        [] {
            QList<Label_Type_Info> list = labels();
            PassVarName_2(&list);
        },
        "pass-labels-beside-parsing", beside);
}

void passLabelsBeside(bool beside)
{
    setUp();
    passLabelsBesideARead(beside);
}

void passLabelsInACallbackBeside(bool beside)
{
    static bool besideARead;
    besideARead = beside;
    insideCallback = [] {
        insideCallback = nullptr;
        passLabelsBesideARead(besideARead);
    };
    turnWithCallback();
}

void readThenWriteBitsBeside(bool beside)
{
    setUpPolling(QList<const char*>() << "Main.W");
    turn();
    together(&writeBit, &writeBit, "bit-writes-beside-each-other", beside);
}

// While DataCom runs a callback, another thread calls; the callback stays until that is told.
void besideTheCycle(void (*call)(), const char* id, bool beside)
{
    setUpPolling(QList<const char*>() << "Main.W");
    turn();
    static std::thread other;
    static void (*otherCall)();
    static const char* awaited;
    otherCall = call;
    awaited = id;
    if (beside) {
        insideCallback = [] {
            insideCallback = nullptr;
            other = std::thread(otherCall);
            waitForReport(awaited);
        };
    }
    const RW_VAR var = goodWrite();
    AddListWriteVar(&var);
    turn();
    if (beside) {
        other.join();
    } else {
        call();
    }
}

void cycleOnTwoThreads(bool atTheSameTime)
{
    setUp();
    if (atTheSameTime) {
        ComCommunication();
    }
    std::thread thread([] { ComCommunication(); });
    thread.join();
    if (!atTheSameTime) {
        ComCommunication();
    }
}

void queueWhileHolding(bool holding)
{
    setUp();
    PLC_driver.listMutex.lock();
    if (!holding) {
        PLC_driver.listMutex.unlock();
    }
    const RW_VAR var = goodWrite();
    AddListWriteVar(&var);
}

// `call` takes cacheMutex, since it stores what is written.
void storeWhileHolding(void (*call)(), bool holding)
{
    setUp();
    const RW_VAR var = goodWrite();
    AddListWriteVar(&var);
    PLC_driver.cacheMutex.lock();
    if (!holding) {
        PLC_driver.cacheMutex.unlock();
    }
    call();
}

void askForARequest()
{
    ComCommunication();
}

void setInTheCachesOnly()
{
    PLC_driver.comInfo->writeMode = 0;
    QByteArray word(2, '\1');
    SetRegisterData("Main.W", 0, QString(), 1, &word, 1, 1, 1);
}

void setWhileTheLinkIsDown()
{
    PLC_driver.commFailed = true;
    QByteArray word(2, '\1');
    SetRegisterData("Main.W", 0, QString(), 1, &word, 1, 1, 1);
}

void queueAfterARebuildOf(const char* address)
{
    setUpPolling(QList<const char*>() << address);
    const RW_VAR var = goodWrite();
    AddListWriteVar(&var);
}

// Another thread puts one-shot reads into the list itself, while rebuilds are running.
void fillTheListByHand(bool withLock)
{
    setUp();
    QList<HOSTVAR> vars;
    for (int i = 0; i < 20000; ++i) {
        vars << test::hostVar("Main.Run", 1);
    }
    static std::atomic<bool> told{false};
    static bool locking;
    locking = withLock;
    PLC_driver.onceReadList.reserve(100000);
    std::thread filling([] {
        const RW_VAR var = test::element(4, 48);
        while (!told) {
            if (locking) {
                PLC_driver.listMutex.lock();
                PLC_driver.onceReadList.append(var);
                PLC_driver.listMutex.unlock();
            } else if (PLC_driver.listMutex.tryLock()) {
                PLC_driver.listMutex.unlock();
            } else {
                PLC_driver.onceReadList.append(var);
            }
            ::usleep(100);
        }
    });
    std::thread watching([] {
        if (!locking) {
            waitForReport("list-without-lock");
            told = true;
        }
    });
    const int rebuilds = withLock ? 20 : 1000000;
    for (int i = 0; i < rebuilds && !told; ++i) {
        ReCreatReadVarList(&vars);
    }
    told = true;
    watching.join();
    filling.join();
}

} // namespace

std::vector<HostPair> threadHosts()
{
    return {
        {"cycle-thread", [] { cycleOnTwoThreads(true); }, [] { cycleOnTwoThreads(false); }},
        {"cycle-overlap", [] { besideTheCycle([] { ComCommunication(); }, "cycle-overlap", true); },
         [] { besideTheCycle([] { ComCommunication(); }, "cycle-overlap", false); }},
        {"pass-labels-beside-parsing", [] { passLabelsBeside(true); },
         [] { passLabelsBeside(false); }},
        {"pass-labels-beside-parsing", [] { passLabelsInACallbackBeside(true); },
         [] { passLabelsInACallbackBeside(false); }},
        {"bit-write-beside-cycle",
         [] { besideTheCycle(&writeBit, "bit-write-beside-cycle", true); },
         [] { besideTheCycle(&writeBit, "bit-write-beside-cycle", false); }},
        {"bit-writes-beside-each-other", [] { readThenWriteBitsBeside(true); },
         [] { readThenWriteBitsBeside(false); }},
        {"lock-held-too-long", [] { queueWhileHolding(true); }, [] { queueWhileHolding(false); },
         "abort"},
        {"lock-held-too-long", [] { storeWhileHolding(&askForARequest, true); },
         [] { storeWhileHolding(&askForARequest, false); }, "abort"},
        {"lock-held-too-long", [] { storeWhileHolding(&setInTheCachesOnly, true); },
         [] { storeWhileHolding(&setInTheCachesOnly, false); }, "abort"},
        {"lock-held-too-long", [] { storeWhileHolding(&setWhileTheLinkIsDown, true); },
         [] { storeWhileHolding(&setWhileTheLinkIsDown, false); }, "abort"},
        {"lists-left-locked", [] { queueAfterARebuildOf("Main.Axis[1]"); },
         [] { queueAfterARebuildOf("Main.Axis[1].Pos"); }, "abort not:rebuild-type"},
        {"list-without-lock", [] { fillTheListByHand(false); }, [] { fillTheListByHand(true); }},
    };
}

} // namespace tavmir::checked_tests
