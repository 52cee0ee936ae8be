// Requests that are given up: what is dropped, what is reported, and how the cycle goes on.
#include "support/cycle_test.h"

using namespace tavmir::test;

namespace
{

class GiveUp : public CycleTest
{
};

TEST_F(GiveUp, GivingUpDropsEveryQueuedRequest)
{
    poll(4, 0);
    ComCommunication();
    PLC_driver.protocolList.append(Protocol());
    PLC_driver.protocolList.append(Protocol());
    answerNothing();
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
}

TEST_F(GiveUp, AGivenUpPollEndsItsTurnAndPollingGoesOn)
{
    poll(4, 16, 5, 6);
    poll(1, 900, 7, 8);
    ComCommunication();
    answerNothing();
    EXPECT_EQ(PLC_driver.retVar.hostKey, 5);
    EXPECT_EQ(PLC_driver.retVar.varKey, 6);
    EXPECT_EQ(PLC_driver.retVar.status, 46);
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{900, 16}));
    EXPECT_EQ(PLC_driver.readVarList.at(1).status, 0);
    EXPECT_EQ(callbacks.failed, (std::vector<CommFail>{{0, 5, 1}}))
        << "the head is copied before the report";
    EXPECT_TRUE(callbacks.done.empty());

    const Protocol* next = ComCommunication();
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->var.elementAddress, 900);
}

TEST_F(GiveUp, AGivenUpPollKeepsWritesAndOneShotReads)
{
    poll(4, 0);
    ComCommunication();
    queueWrite(4, 0);
    queueOnce(4, 0);
    answerNothing();
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_EQ(PLC_driver.onceReadList.size(), 1);
}

TEST_F(GiveUp, AGivenUpWriteReportsTheHostKeyOfTheLastPoll)
{
    poll(4, 0, 77, 1);
    turn();
    queueWrite(4, 0, 5, 5);
    ComCommunication();
    answerNothing();
    EXPECT_EQ(callbacks.failed, (std::vector<CommFail>{{0, 77, 1}}));
}

TEST_F(GiveUp, VariablesAreReportedBeforeTheGiveUp)
{
    queueWrite(4, 0, 5, 5);
    ComCommunication();
    std::vector<std::size_t> doneSoFar;
    callbacks.insideCallback = [&] { doneSoFar.push_back(callbacks.failed.size()); };
    answerNothing();
    EXPECT_EQ(doneSoFar, (std::vector<std::size_t>{0, 1}));
}

TEST_F(GiveUp, TheFailedMarkStaysUntilTheNextGoodReply)
{
    host.info.retryLimit = 0;
    poll(4, 0);
    ComCommunication();
    answerNothing();
    EXPECT_TRUE(PLC_driver.commFailed);
    host.info.retryLimit = 1;
    ComCommunication();
    EXPECT_TRUE(PLC_driver.commFailed);
    answerNothing();
    EXPECT_TRUE(PLC_driver.commFailed);
    answer();
    EXPECT_FALSE(PLC_driver.commFailed);
}

TEST_F(GiveUp, TheCacheShowsAFailedWriteUntilTheElementIsRead)
{
    PLC_driver.wordCache.insert(16, 1);
    PLC_driver.writeVarList << writeOf(4, 16, hex("34 12"));
    ComCommunication();
    answerNothing();
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    poll(4, 16);
    ComCommunication();
    QByteArray reply = readReply(2, {1});
    DataCom(&reply, reply.size());
    EXPECT_EQ(PLC_driver.wordCache.value(16), 1);
}

TEST_F(GiveUp, WhileFailedAWriteTurnThatSucceedsReportsOne)
{
    PLC_driver.commFailed = true;
    queueWrite(4, 0, 5, 5);
    ComCommunication();
    answer();
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 5, 5, 1}}));
    EXPECT_TRUE(callbacks.failed.empty());
}

TEST_F(GiveUp, BeforeAnyChoiceAGiveUpIsReportedAndTouchesNoList)
{
    Protocol request;
    request.replyLength = 9;
    PLC_driver.protocolList.append(request);
    PLC_driver.batchCount = 1;
    queueWrite(4, 0);
    queueOnce(4, 0);
    ASSERT_EQ(PLC_driver.cycleState, 100);
    EXPECT_EQ(answerNothing(), 41);
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_EQ(PLC_driver.onceReadList.size(), 1);
    EXPECT_EQ(callbacks.failed.size(), 1u);
    EXPECT_TRUE(callbacks.done.empty());
}

TEST_F(GiveUp, WithoutACallbackAGiveUpIsSilent)
{
    RegistCallBackFuncIntf(nullptr, nullptr);
    poll(4, 0);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 41);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
}

TEST_F(GiveUp, ReplyCountsAreNotTouchedByFailures)
{
    host.info.retryLimit = 1;
    poll(4, 0);
    ComCommunication();
    answerNothing();
    EXPECT_EQ(host.info.replyCount, 0);
    EXPECT_EQ(host.info.replyQuota, 1);
}

TEST_F(GiveUp, OfTheHostsRecordOnlyTheDriversWordsChange)
{
    HostRecord record;
    record.setUpForOperation();
    const HostRecord before = record;
    SetComInfo(&record.info);
    poll(4, 0);
    queueWrite(4, 0);
    turns(2);
    ComCommunication();
    answerNothing();
    for (int word = 0; word < kAllWords; ++word) {
        const bool drivers = word == 8 || (word >= 10 && word <= 13) || word == 17;
        if (!drivers) {
            EXPECT_EQ(record.word(word), before.word(word)) << word;
        }
    }
}

} // namespace
