// A good reply: what is counted, and when the turn ends.
#include "support/cycle_test.h"
#include "support/locks.h"

using namespace tavmir::test;

namespace
{

class CycleReply : public CycleTest
{
};

TEST_F(CycleReply, NothingInFlightGivesStatusOneAndChangesNothingElse)
{
    PLC_driver.retVar.status = 55;
    PLC_driver.retVar.hostKey = 5;
    host.info.retryCount = 0;
    host.info.replyCount = 0;
    QByteArray reply("abc");
    RW_VAR* result = DataCom(&reply, 3);
    EXPECT_EQ(result, &PLC_driver.retVar);
    EXPECT_EQ(result->status, 1);
    EXPECT_EQ(result->hostKey, 5);
    EXPECT_EQ(host.info.replyCount, 0);
    EXPECT_EQ(host.info.retryCount, 0);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(CycleReply, NothingInFlightNeedsNoLock)
{
    EXPECT_TRUE(endsWhileHeld(PLC_driver.listMutex, [] { DataCom(nullptr, 0); }));
    EXPECT_EQ(PLC_driver.retVar.status, 1);
}

TEST_F(CycleReply, AGoodReplyRemovesTheRequestAndReportsOne)
{
    poll(4, 16);
    ComCommunication();
    PLC_driver.commFailed = true;
    QByteArray reply = readReply(2, {0x1234});
    RW_VAR* result = DataCom(&reply, reply.size());
    EXPECT_EQ(result, &PLC_driver.retVar);
    EXPECT_EQ(result->status, 1);
    EXPECT_FALSE(PLC_driver.commFailed);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_EQ(host.info.replyCount, 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    EXPECT_TRUE(callbacks.failed.empty());
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(CycleReply, OnlyTheHeadRequestIsRemoved)
{
    poll(4, 16);
    ComCommunication();
    PLC_driver.protocolList.append(Protocol());
    PLC_driver.protocolList.last().frame = hex("77");
    answer();
    ASSERT_EQ(PLC_driver.protocolList.size(), 1);
    EXPECT_EQ(PLC_driver.protocolList.first().frame, hex("77"));
}

TEST_F(CycleReply, ARequestThatExpectsNoReplyIsGoodWithoutOne)
{
    poll(4, 16);
    ComCommunication();
    PLC_driver.protocolList.first().replyLength = 0;
    EXPECT_EQ(DataCom(nullptr, 0)->status, 1);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(CycleReply, AReplyWithoutValuesIsGoodButStoresNothing)
{
    poll(4, 16);
    PLC_driver.readVarList.first().hostData2 = 1;
    ComCommunication();
    QByteArray reply = readReply(2, {0x1234});
    EXPECT_EQ(DataCom(&reply, reply.size())->status, 1);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
}

TEST_F(CycleReply, AHigherQuotaKeepsAPollingTurnOpenAndTheSameBatchIsSentAgain)
{
    pollMany(2, 4);
    poll(1, 900);
    const QByteArray firstFrame = ComCommunication()->frame;
    host.info.replyQuota = 2;
    host.info.scanDone = 0;
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(host.info.replyCount, 1);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_EQ(PLC_driver.readVarList.first().status, -1);
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{0, 32, 900}));
    EXPECT_EQ(PLC_driver.scanCount, 0) << "only turn ends are counted";

    const Protocol* again = ComCommunication();
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->frame.mid(2), firstFrame.mid(2));
    EXPECT_EQ(again->frame.left(2), hex("00 01"));
    EXPECT_EQ(host.info.replyQuota, 1);
    EXPECT_EQ(host.info.replyCount, 0);
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{900, 0, 32}));
}

TEST_F(CycleReply, AHigherQuotaKeepsAWriteTurnOpen)
{
    queueWrite(4, 16, 1, 2);
    ComCommunication();
    host.info.replyQuota = 2;
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_TRUE(callbacks.done.empty());
    ComCommunication();
    EXPECT_EQ(answer(), 1);
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 1, 2, 1}}));
}

TEST_F(CycleReply, AReachedOrPassedQuotaEndsTheTurn)
{
    for (const qint32 quota : {1, 0, -5}) {
        PLC_driver.readVarList.clear();
        poll(4, 0);
        poll(1, 900);
        ComCommunication();
        host.info.replyQuota = quota;
        answer();
        EXPECT_EQ(PLC_driver.readVarList.first().elementAddress, 900) << quota;
    }
}

TEST_F(CycleReply, APassIsDoneWhenMoreTurnsEndedThanThePolledListHasEntries)
{
    for (const int dataType : {1, 4, 6}) {
        poll(dataType, 0);
    }
    host.info.scanDone = 0;
    for (int turnEnds = 1; turnEnds <= 3; ++turnEnds) {
        turn();
        EXPECT_EQ(PLC_driver.scanCount, turnEnds);
        EXPECT_EQ(host.info.scanDone, 0);
    }
    turn();
    EXPECT_EQ(PLC_driver.scanCount, 0);
    EXPECT_EQ(host.info.scanDone, 1);
    turn();
    EXPECT_EQ(PLC_driver.scanCount, 0) << "a finished pass is not counted on";
    EXPECT_EQ(host.info.scanDone, 1);
}

TEST_F(CycleReply, WriteTurnsCountTowardsThePassToo)
{
    poll(4, 0);
    queueWrite(4, 0);
    queueOnce(4, 0);
    host.info.scanDone = 0;
    EXPECT_EQ(turns(1), "w");
    EXPECT_EQ(PLC_driver.scanCount, 1);
    EXPECT_EQ(turns(1), "o");
    EXPECT_EQ(PLC_driver.scanCount, 0);
    EXPECT_EQ(host.info.scanDone, 1);
}

TEST_F(CycleReply, WithAnEmptyPolledListOneTurnIsAPass)
{
    queueWrite(4, 0);
    host.info.scanDone = 0;
    turn();
    EXPECT_EQ(PLC_driver.scanCount, 0);
    EXPECT_EQ(host.info.scanDone, 1);
}

TEST_F(CycleReply, AGoodReplyDoesNotResetTheRetryCount)
{
    host.info.retryLimit = 1;
    poll(4, 0);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 0);
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(host.info.retryCount, 1);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 41) << "the second failure since the last give-up";
}

TEST_F(CycleReply, BeforeAnyChoiceATurnEndTouchesNoList)
{
    Protocol request;
    request.replyLength = 0;
    PLC_driver.protocolList.append(request);
    host.info.replyQuota = 1;
    host.info.replyCount = 0;
    PLC_driver.batchCount = 1;
    queueWrite(4, 0);
    queueOnce(4, 0);
    poll(4, 0);
    PLC_driver.readVarList.first().status = -1;
    ASSERT_EQ(PLC_driver.cycleState, 100);
    EXPECT_EQ(DataCom(nullptr, 0)->status, 1);
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_EQ(PLC_driver.onceReadList.size(), 1);
    EXPECT_EQ(PLC_driver.readVarList.first().status, -1);
    EXPECT_TRUE(callbacks.done.empty());
}

} // namespace
