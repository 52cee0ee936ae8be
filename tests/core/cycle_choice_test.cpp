// What the cycle sends next: writes, one-shot reads, polling.
#include "support/cycle_test.h"

using namespace tavmir::test;

namespace
{

class Cycle : public CycleTest
{
};

TEST_F(Cycle, AQueuedRequestIsReturnedAgainAndNothingElseHappens)
{
    Protocol queued;
    queued.frame = hex("01 02 03");
    PLC_driver.protocolList.append(queued);
    PLC_driver.protocolList.append(Protocol());
    PLC_driver.pendingReadList.append(element(4, 16));
    queueWrite(4, 32);
    PLC_driver.batchCount = 9;
    PLC_driver.writeTurns = 3;
    PLC_driver.onceReadTurns = 2;
    host.info.scanDone = 0;

    Protocol* request = ComCommunication();

    EXPECT_EQ(request, &PLC_driver.protocolList.first());
    EXPECT_EQ(request->frame, hex("01 02 03"));
    EXPECT_EQ(PLC_driver.protocolList.size(), 2);
    EXPECT_EQ(PLC_driver.pendingReadList.size(), 1);
    EXPECT_TRUE(PLC_driver.readVarList.isEmpty());
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_EQ(PLC_driver.batchCount, 9);
    EXPECT_EQ(PLC_driver.cycleState, 100);
    EXPECT_EQ(PLC_driver.writeTurns, 3);
    EXPECT_EQ(PLC_driver.onceReadTurns, 2);
    EXPECT_EQ(PLC_driver.transactionCounter, 0);
    EXPECT_EQ(host.info.scanDone, 0);
}

TEST_F(Cycle, ARebuiltListReplacesThePolledListBeforeTheChoice)
{
    poll(1, 500);
    PLC_driver.pendingReadList.append(element(4, 16));
    PLC_driver.pendingReadList.append(element(4, 32));

    ASSERT_NE(ComCommunication(), nullptr);

    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{16, 32}));
    EXPECT_TRUE(PLC_driver.pendingReadList.isEmpty());
    EXPECT_EQ(PLC_driver.batchElements[0]->elementAddress, 16);
}

TEST_F(Cycle, ARebuiltListIsTakenEvenWhenAWriteGoesFirst)
{
    PLC_driver.pendingReadList.append(element(4, 16));
    queueWrite(4, 32);
    ComCommunication();
    EXPECT_EQ(PLC_driver.cycleState, 1);
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), std::vector<int>{16});
}

TEST_F(Cycle, WithoutARebuiltListThePolledListStays)
{
    poll(1, 500);
    ComCommunication();
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), std::vector<int>{500});
}

TEST_F(Cycle, AWriteTurnIsMarkedAndCounted)
{
    queueWrite(4, 32);
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(request, &PLC_driver.protocolList.first());
    EXPECT_EQ(request->frame.at(7), 'g');
    EXPECT_EQ(PLC_driver.cycleState, 1);
    EXPECT_EQ(PLC_driver.writeTurns, 1);
    EXPECT_EQ(PLC_driver.onceReadTurns, 0);
    EXPECT_EQ(PLC_driver.batchCount, 1);
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1) << "the entry stays until the turn ends";
}

TEST_F(Cycle, AOneShotTurnIsMarkedAndCounted)
{
    queueOnce(6, 32);
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(request->frame.at(7), 'l');
    EXPECT_EQ(PLC_driver.cycleState, 2);
    EXPECT_EQ(PLC_driver.onceReadTurns, 1);
    EXPECT_EQ(PLC_driver.writeTurns, 0);
    EXPECT_EQ(PLC_driver.onceReadList.size(), 1);
}

TEST_F(Cycle, APollingTurnMarksTheHeadAndResetsBothCounters)
{
    PLC_driver.writeTurns = 5;
    PLC_driver.onceReadTurns = 5;
    queueWrite(4, 0);
    queueOnce(4, 0);
    poll(1, 10);
    poll(1, 11);
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(request->frame.at(7), 'd');
    EXPECT_EQ(PLC_driver.cycleState, 0);
    EXPECT_EQ(PLC_driver.writeTurns, 0);
    EXPECT_EQ(PLC_driver.onceReadTurns, 0);
    EXPECT_EQ(PLC_driver.readVarList.at(0).status, -1);
    EXPECT_EQ(PLC_driver.readVarList.at(1).status, 0);
    EXPECT_EQ(request->var.status, -1) << "the request's copy is made of the marked head";
}

TEST_F(Cycle, WritesWinOverOneShotReadsAndBothOverPolling)
{
    queueWrite(4, 0);
    queueOnce(4, 0);
    poll(4, 0);
    EXPECT_EQ(turns(5), "woppp");
}

TEST_F(Cycle, SixthTurnGoesToPollingWhenWritesNeverEnd)
{
    poll(4, 0);
    std::string letters;
    for (int i = 0; i < 13; ++i) {
        queueWrite(4, 16 * i);
        letters += turn();
    }
    EXPECT_EQ(letters, "wwwwwpwwwwwpw");
}

TEST_F(Cycle, SixthTurnGoesToPollingWhenOneShotReadsNeverEnd)
{
    poll(4, 0);
    std::string letters;
    for (int i = 0; i < 13; ++i) {
        queueOnce(4, 16 * i);
        letters += turn();
    }
    EXPECT_EQ(letters, "ooooopooooopo");
}

TEST_F(Cycle, SixthTurnGoesToAOneShotReadWhenOneWaits)
{
    poll(4, 0);
    std::string letters;
    for (int i = 0; i < 23; ++i) {
        queueWrite(4, 16 * i);
        queueOnce(4, 16 * i);
        letters += turn();
    }
    EXPECT_EQ(letters, "wwwwwooooopwwwwwooooopw");
}

TEST_F(Cycle, AOneShotTurnDoesNotResetTheWriteTurns)
{
    for (int i = 0; i < 12; ++i) {
        queueWrite(i % 2 == 0 ? 4 : 1, 0);
    }
    queueOnce(4, 0);
    poll(4, 0);
    EXPECT_EQ(turns(8), "wwwwwopw");
}

TEST_F(Cycle, WithNothingElseToDoTheSixthWriteWaitsForOneEmptyCall)
{
    for (int i = 0; i < 7; ++i) {
        queueWrite(i % 2 == 0 ? 4 : 1, 0);
    }
    EXPECT_EQ(turns(5), "wwwww");
    EXPECT_EQ(PLC_driver.writeTurns, 5);
    host.info.scanDone = 0;
    EXPECT_EQ(turn(), '-');
    EXPECT_EQ(host.info.scanDone, 1);
    EXPECT_EQ(PLC_driver.writeTurns, 0);
    EXPECT_EQ(turns(3), "ww-");
}

TEST_F(Cycle, NothingToSendReturnsNullSetsScanDoneAndResetsTheCounters)
{
    PLC_driver.writeTurns = 2;
    PLC_driver.onceReadTurns = 3;
    PLC_driver.batchCount = 4;
    PLC_driver.cycleState = 1;
    host.info.scanDone = 0;
    EXPECT_EQ(ComCommunication(), nullptr);
    EXPECT_EQ(host.info.scanDone, 1);
    EXPECT_EQ(PLC_driver.writeTurns, 0);
    EXPECT_EQ(PLC_driver.onceReadTurns, 0);
    EXPECT_EQ(PLC_driver.batchCount, 0);
    EXPECT_EQ(PLC_driver.cycleState, 1) << "only a turn that was chosen sets the state";
    EXPECT_EQ(PLC_driver.transactionCounter, 0);
}

TEST_F(Cycle, AFoundRequestLeavesScanDoneAlone)
{
    poll(4, 0);
    for (const qint32 scanDone : {0, 1, 77}) {
        host.info.scanDone = scanDone;
        PLC_driver.protocolList.clear();
        ComCommunication();
        EXPECT_EQ(host.info.scanDone, scanDone);
    }
}

TEST_F(Cycle, ChoosingATurnWritesNoLine)
{
    queueOnce(4, 0);
    poll(4, 0);
    turns(2);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

} // namespace
