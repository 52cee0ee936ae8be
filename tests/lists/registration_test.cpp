// Polled variables and writes are registered as they stand.
#include "support/driver_test.h"
#include "support/locks.h"
#include "support/records.h"
#include "support/wait_until.h"

#include <atomic>
#include <climits>
#include <thread>

using namespace tavmir::test;

namespace
{

class Registration : public DriverTest
{
protected:
    static RW_VAR oddRecord()
    {
        RW_VAR var = writeOf(99, INT_MIN, hex("01 02 03"), -5, 6);
        var.addressText = "no such address";
        var.auxText = "aux";
        var.station = -7;
        var.count = -8;
        var.hostData3 = 3;
        var.hostData4 = 4;
        var.status = 5;
        var.hostData12 = 12;
        var.hostData13 = 13;
        return var;
    }
};

TEST_F(Registration, APolledRecordIsAppendedAsItStandsAndTheSizeReturned)
{
    const RW_VAR var = oddRecord();
    EXPECT_EQ(AddListReadVar(&var), 1);
    EXPECT_EQ(AddListReadVar(&var), 2);
    const RW_VAR other = element(4, 16);
    EXPECT_EQ(AddListReadVar(&other), 3);
    EXPECT_TRUE(sameRecord(PLC_driver.readVarList.at(0), oddRecord()));
    EXPECT_TRUE(sameRecord(PLC_driver.readVarList.at(1), oddRecord()));
    EXPECT_TRUE(sameRecord(PLC_driver.readVarList.at(2), other));
    EXPECT_TRUE(sameRecord(var, oddRecord()));
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(Registration, AWriteIsAppendedAsItStandsEveryTime)
{
    const RW_VAR var = oddRecord();
    EXPECT_EQ(AddListWriteVar(&var), 1);
    EXPECT_EQ(AddListWriteVar(&var), 2);
    EXPECT_EQ(AddListWriteVar(&var), 3);
    EXPECT_EQ(PLC_driver.writeVarList.size(), 3);
    EXPECT_TRUE(sameRecord(PLC_driver.writeVarList.at(2), oddRecord()));
    EXPECT_TRUE(sameRecord(var, oddRecord()));
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(Registration, TheHostMayChangeItsRecordAfterwards)
{
    RW_VAR var = oddRecord();
    AddListWriteVar(&var);
    AddListReadVar(&var);
    var.value[0] = 'x';
    var.addressText = "changed";
    EXPECT_TRUE(sameRecord(PLC_driver.writeVarList.at(0), oddRecord()));
    EXPECT_TRUE(sameRecord(PLC_driver.readVarList.at(0), oddRecord()));
}

TEST_F(Registration, WritesAreNotLimitedInNumber)
{
    const RW_VAR var = writeOf(4, 0, hex("00 00"));
    for (int i = 1; i <= 3000; ++i) {
        ASSERT_EQ(AddListWriteVar(&var), i);
    }
}

TEST_F(Registration, APolledRecordIsAppendedWithoutAnyLock)
{
    for (QMutex* mutex :
         {&PLC_driver.listMutex, &PLC_driver.cacheMutex, &PLC_driver.stationMutex}) {
        EXPECT_TRUE(endsWhileHeld(*mutex, [] {
            const RW_VAR var = element(4, 0);
            AddListReadVar(&var);
        }));
    }
    EXPECT_EQ(PLC_driver.readVarList.size(), 3);
}

TEST_F(Registration, AWriteWaitsForTheListMutexOnly)
{
    const RW_VAR var = writeOf(4, 0, hex("00 00"));
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [&] { AddListWriteVar(&var); }));
    EXPECT_TRUE(endsWhileHeld(PLC_driver.cacheMutex, [&] { AddListWriteVar(&var); }));
    EXPECT_TRUE(endsWhileHeld(PLC_driver.stationMutex, [&] { AddListWriteVar(&var); }));
    EXPECT_TRUE(isFree(PLC_driver.listMutex));
}

// The call takes the mutex twice: it must have it for the first of its two steps already.
TEST_F(Registration, AWriteIsNotQueuedBeforeTheListMutexIsFree)
{
    const RW_VAR var = writeOf(4, 0, hex("00 00"));
    std::atomic<bool> started(false);
    PLC_driver.listMutex.lock();
    std::thread thread([&] {
        started = true;
        AddListWriteVar(&var);
    });
    EXPECT_TRUE(waitUntil([&] { return started.load(); }));
    EXPECT_FALSE(waitUntil([] { return !PLC_driver.writeVarList.isEmpty(); }, 60));
    PLC_driver.listMutex.unlock();
    thread.join();
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
}

} // namespace
