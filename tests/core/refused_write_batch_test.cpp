// Writes of a data type that has no write encoding: dropped with one line a batch, and the
// writes behind them still go out.
#include "support/cycle_test.h"

using namespace tavmir::test;

namespace
{

class RefusedWriteBatch : public CycleTest
{
protected:
    static QString refusalLine(int dataType)
    {
        return expectedLine(
            {"Func_Write", " ", quoted("WriteAnalog"), " ", 67, "ERROR ", dataType});
    }
};

TEST_F(RefusedWriteBatch, TheWriteBehindItGoesOutInTheSameCall)
{
    queueWrite(3, 0, 1, 1);
    queueWrite(3, 16, 2, 2);
    queueWrite(4, 32, 3, 3);
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(request->frame, hex("00 00 00 00 00 09 01 67 01 00 00 00 20 00 00"));
    EXPECT_EQ(addressesOf(PLC_driver.writeVarList), std::vector<int>{32});
    EXPECT_EQ(PLC_driver.batchCount, 1);
    EXPECT_EQ(PLC_driver.cycleState, 1);
    EXPECT_EQ(PLC_driver.writeTurns, 1);
    EXPECT_EQ(PLC_driver.transactionCounter, 1);
    EXPECT_EQ(diagnostics.lines().first(), refusalLine(3));
    EXPECT_EQ(diagnostics.lines().size(), 2) << "one refusal, one frame";
    answer();
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 3, 3, 1}}));
}

TEST_F(RefusedWriteBatch, IsDroppedWhateverRequestsAreQueued)
{
    queueWrite(3, 0, 1, 1);
    diagnostics.onLine([](const QString&) { PLC_driver.protocolList.append(Protocol()); });
    ComCommunication();
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
    EXPECT_EQ(PLC_driver.writeTurns, 0);
    EXPECT_EQ(PLC_driver.cycleState, 100);
}

TEST_F(RefusedWriteBatch, WithoutOtherWritesPollingGoesOnInTheSameCall)
{
    queueWrite(2, 0, 1, 1);
    poll(4, 16);
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(request->frame.at(7), 'f');
    EXPECT_EQ(PLC_driver.cycleState, 0);
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
    EXPECT_TRUE(callbacks.done.empty());
    EXPECT_EQ(diagnostics.lines(), QStringList() << refusalLine(2));
}

TEST_F(RefusedWriteBatch, WithoutOtherWritesAOneShotReadGoesOutInTheSameCall)
{
    queueWrite(5, 0);
    queueOnce(4, 16);
    ComCommunication();
    EXPECT_EQ(PLC_driver.cycleState, 2);
    EXPECT_EQ(PLC_driver.onceReadTurns, 1);
    EXPECT_EQ(PLC_driver.writeTurns, 0);
}

TEST_F(RefusedWriteBatch, WithNothingElseNothingIsSent)
{
    host.info.scanDone = 0;
    queueWrite(3, 0);
    EXPECT_EQ(ComCommunication(), nullptr);
    EXPECT_EQ(host.info.scanDone, 1);
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_EQ(PLC_driver.transactionCounter, 0);
    EXPECT_TRUE(callbacks.done.empty());
    EXPECT_TRUE(callbacks.failed.empty());
}

TEST_F(RefusedWriteBatch, EveryTypeWithoutEncodingIsRefusedOncePerRun)
{
    QStringList expected;
    for (const int dataType : {0, 2, 3, 5, 8, 9, 11, 12, 255, -1}) {
        queueWrite(dataType, 0);
        queueWrite(dataType, 16);
        expected << refusalLine(dataType);
    }
    EXPECT_EQ(ComCommunication(), nullptr);
    EXPECT_EQ(diagnostics.lines(), expected);
    EXPECT_TRUE(PLC_driver.byteCache.isEmpty());
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    EXPECT_TRUE(PLC_driver.dwordCache.isEmpty());
}

TEST_F(RefusedWriteBatch, ALongRunIsRefusedBatchByBatch)
{
    queueWrites(100, 3);
    EXPECT_EQ(ComCommunication(), nullptr);
    EXPECT_EQ(diagnostics.lines(), QStringList()
                                       << refusalLine(3) << refusalLine(3) << refusalLine(3))
        << "38, 38 and 24 writes";
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
}

TEST_F(RefusedWriteBatch, IsNotCountedAsATurn)
{
    PLC_driver.writeTurns = 4;
    queueWrite(3, 0);
    queueWrite(4, 16);
    queueWrite(3, 32);
    poll(4, 0);
    EXPECT_EQ(turn(), 'w');
    EXPECT_EQ(PLC_driver.writeTurns, 5);
    EXPECT_EQ(turn(), 'p');
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1) << "refused only when its turn has come";
}

TEST_F(RefusedWriteBatch, WhileTheLinkIsFailedItIsRefusedAllTheSame)
{
    PLC_driver.commFailed = true;
    queueWrite(3, 0);
    queueWrite(4, 16);
    ASSERT_NE(ComCommunication(), nullptr);
    EXPECT_EQ(diagnostics.lines().first(), refusalLine(3));
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
}

} // namespace
