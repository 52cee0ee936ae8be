// Which locks the host's get and set calls take.
#include "data/local_values.h"
#include "support/exchange_test.h"
#include "support/locks.h"

using namespace tavmir::test;

namespace
{

class ValueLocks : public ExchangeTest
{
};

TEST_F(ValueLocks, AReadWaitsForTheCacheMutexOnly)
{
    for (const char* address : {"P.W", "P.Bs[0]", "P.D.b[1]", "P.X3"}) {
        EXPECT_TRUE(waitsFor(PLC_driver.cacheMutex, [&] { read(address, 1); })) << address;
        EXPECT_TRUE(endsWhileHeld(PLC_driver.listMutex, [&] { read(address, 1); })) << address;
        EXPECT_TRUE(isFree(PLC_driver.cacheMutex)) << address;
    }
}

TEST_F(ValueLocks, ARefusedReadTakesNoLock)
{
    EXPECT_TRUE(endsWhileHeld(PLC_driver.cacheMutex, [&] { read("P.Nope", 1, 0); }));
}

TEST_F(ValueLocks, StoringLocallyWaitsForTheCacheMutexOnly)
{
    RW_VAR var = writeOf(4, 16, hex("01 00"));
    EXPECT_TRUE(waitsFor(PLC_driver.cacheMutex, [&] { WriteDataToLocal(&var); }));
    EXPECT_TRUE(endsWhileHeld(PLC_driver.listMutex, [&] { WriteDataToLocal(&var); }));
    host.info.writeMode = 0;
    EXPECT_TRUE(waitsFor(PLC_driver.cacheMutex, [&] { write("P.W", hex("01 00"), 1); }));
    EXPECT_TRUE(endsWhileHeld(PLC_driver.listMutex, [&] { write("P.W", hex("01 00"), 1); }));
    EXPECT_TRUE(isFree(PLC_driver.cacheMutex));
}

TEST_F(ValueLocks, QueueingWaitsForTheListMutexOnly)
{
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [&] { write("P.W", hex("01 00"), 1); }));
    EXPECT_TRUE(endsWhileHeld(PLC_driver.cacheMutex, [&] { write("P.W", hex("01 00"), 1); }));
    EXPECT_TRUE(isFree(PLC_driver.listMutex));
}

TEST_F(ValueLocks, ABitWriteLooksItsWordUpWithoutTheCacheMutex)
{
    EXPECT_TRUE(endsWhileHeld(PLC_driver.cacheMutex, [&] { write("P.W.b[1]", hex("01"), 1); }));
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_TRUE(PLC_driver.wordCache.contains(1000));
}

TEST_F(ValueLocks, TheLineOfABitWriteIsWrittenWithBothMutexesFree)
{
    int lines = 0;
    diagnostics.onLine([&](const QString&) {
        ++lines;
        EXPECT_TRUE(isFree(PLC_driver.listMutex));
        EXPECT_TRUE(isFree(PLC_driver.cacheMutex));
    });
    write("P.W.b[1]", hex("01"), 1);
    host.info.writeMode = 0;
    write("P.D.b[1]", hex("01"), 1);
    EXPECT_EQ(lines, 2);
}

TEST_F(ValueLocks, WritingTheCountOfNothingTakesNoLock)
{
    EXPECT_TRUE(endsWhileHeld(PLC_driver.listMutex, [&] { write("P.W", QByteArray(), 0); }))
        << "the size is read without a lock";
    EXPECT_TRUE(endsWhileHeld(PLC_driver.cacheMutex, [&] { write("P.W", QByteArray(), 0); }));
}

} // namespace
