// Bad or missing replies: repeats, giving up, and what is said about it.
#include "support/cycle_test.h"

using namespace tavmir::test;

namespace
{

class CycleFailure : public CycleTest
{
protected:
    static QString failureLine(int number, const char* hexDigits)
    {
        return expectedLine({"Communication_Protocol", " ", quoted("DataCom"), " ", number,
                             "ERROR ", quoted(hexDigits)});
    }
};

TEST_F(CycleFailure, WithoutRetriesTheFirstFailureGivesUp)
{
    host.info.scanDone = 1;
    PLC_driver.scanCount = 3;
    poll(4, 0, 3);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 44);
    EXPECT_TRUE(PLC_driver.commFailed);
    EXPECT_EQ(PLC_driver.scanCount, 0);
    EXPECT_EQ(host.info.scanDone, 0);
    EXPECT_EQ(host.info.retryCount, 0);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_EQ(PLC_driver.retVar.status, 44);
}

TEST_F(CycleFailure, WithTwoRetriesTheThirdFailureGivesUp)
{
    host.info.retryLimit = 2;
    host.info.scanDone = 1;
    poll(4, 0);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 0);
    EXPECT_EQ(host.info.retryCount, 1);
    EXPECT_EQ(answerNothing(), 0);
    EXPECT_EQ(host.info.retryCount, 2);
    EXPECT_FALSE(PLC_driver.commFailed);
    EXPECT_EQ(host.info.scanDone, 1);
    EXPECT_TRUE(callbacks.failed.empty());
    EXPECT_EQ(answerNothing(), 41);
    EXPECT_EQ(host.info.retryCount, 0);
    EXPECT_TRUE(PLC_driver.commFailed);
    EXPECT_EQ(callbacks.failed.size(), 1u);
}

TEST_F(CycleFailure, AFailedRequestIsSentAgainUnchanged)
{
    host.info.retryLimit = 1;
    pollMany(2, 4);
    const QByteArray frame = ComCommunication()->frame;
    answerNothing();
    queueWrite(4, 0);
    const Protocol* again = ComCommunication();
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->frame, frame);
    EXPECT_EQ(PLC_driver.transactionCounter, 1);
    EXPECT_EQ(PLC_driver.readVarList.first().status, -1);
    EXPECT_EQ(PLC_driver.protocolList.size(), 1);
}

TEST_F(CycleFailure, RetriesCountFailuresSinceTheLastGiveUpAlsoOfOtherRequests)
{
    host.info.retryLimit = 2;
    poll(4, 0);
    poll(1, 0);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 0);
    EXPECT_EQ(answer(), 1);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 0);
    EXPECT_EQ(answer(), 1);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 41);
}

TEST_F(CycleFailure, EachFailureWritesTheRequestAndTheReplyInHex)
{
    host.info.retryLimit = 1;
    poll(4, 0x12);
    ComCommunication();
    QByteArray reply = hex("ab cd 00 ef");
    EXPECT_EQ(DataCom(&reply, reply.size())->status, 0);
    const QStringList lines = QStringList() << failureLine(547, "00000000000701660100000012")
                                            << failureLine(548, "ABCD00EF");
    EXPECT_EQ(diagnostics.lines(), lines);
    EXPECT_EQ(diagnostics.types(), (std::vector<QtMsgType>{QtDebugMsg, QtDebugMsg}));

    diagnostics.clear();
    EXPECT_EQ(DataCom(&reply, reply.size())->status, 71);
    EXPECT_EQ(diagnostics.lines(), lines) << "the failure that gives up writes them too";
}

TEST_F(CycleFailure, ASilentFailureWritesAnEmptyReply)
{
    host.info.retryLimit = 5;
    poll(4, 0);
    ComCommunication();
    answerNothing();
    DataCom(nullptr, 0);
    const QString request = failureLine(547, "00000000000701660100000000");
    const QString reply = failureLine(548, "");
    EXPECT_EQ(diagnostics.lines(), QStringList() << request << reply << request << reply);
}

TEST_F(CycleFailure, TheLineNamesTheHeadRequest)
{
    poll(4, 0);
    ComCommunication();
    PLC_driver.protocolList.append(Protocol());
    PLC_driver.protocolList.last().frame = hex("77");
    answerNothing();
    EXPECT_EQ(diagnostics.lines().first(), failureLine(547, "00000000000701660100000000"));
}

TEST_F(CycleFailure, CodesTellSilenceFromAWrongLength)
{
    for (const int hostKey : {0, 11, 12, -1}) {
        const int place = hostKey == 11 ? 11 : 0;
        PLC_driver.readVarList.clear();
        poll(4, 0, hostKey);
        ComCommunication();
        EXPECT_EQ(answerNothing(), 41 + place) << hostKey;
        ComCommunication();
        QByteArray reply = hex("01");
        EXPECT_EQ(DataCom(&reply, 1)->status, 71 + place) << hostKey;
    }
}

TEST_F(CycleFailure, AWrongLengthStoresNothing)
{
    host.info.retryLimit = 10;
    poll(4, 16);
    ComCommunication();
    const QByteArray good = readReply(2, {0x1234});
    for (const QByteArray& bad : {good + 'x', good.left(14), good.left(9)}) {
        QByteArray reply = bad;
        EXPECT_EQ(DataCom(&reply, reply.size())->status, 0);
    }
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(CycleFailure, GivingUpDropsEveryQueuedRequest)
{
    poll(4, 0);
    ComCommunication();
    PLC_driver.protocolList.append(Protocol());
    PLC_driver.protocolList.append(Protocol());
    answerNothing();
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
}

TEST_F(CycleFailure, AGivenUpPollEndsItsTurnAndPollingGoesOn)
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

TEST_F(CycleFailure, AGivenUpPollKeepsWritesAndOneShotReads)
{
    poll(4, 0);
    ComCommunication();
    queueWrite(4, 0);
    queueOnce(4, 0);
    answerNothing();
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_EQ(PLC_driver.onceReadList.size(), 1);
}

TEST_F(CycleFailure, AGivenUpWriteReportsTheHostKeyOfTheLastPoll)
{
    poll(4, 0, 77, 1);
    turn();
    queueWrite(4, 0, 5, 5);
    ComCommunication();
    answerNothing();
    EXPECT_EQ(callbacks.failed, (std::vector<CommFail>{{0, 77, 1}}));
}

TEST_F(CycleFailure, VariablesAreReportedBeforeTheGiveUp)
{
    queueWrite(4, 0, 5, 5);
    ComCommunication();
    std::vector<std::size_t> doneSoFar;
    callbacks.insideCallback = [&] { doneSoFar.push_back(callbacks.failed.size()); };
    answerNothing();
    EXPECT_EQ(doneSoFar, (std::vector<std::size_t>{0, 1}));
}

TEST_F(CycleFailure, TheFailedMarkStaysUntilTheNextGoodReply)
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

TEST_F(CycleFailure, WhileFailedAWriteTurnThatSucceedsReportsOne)
{
    PLC_driver.commFailed = true;
    queueWrite(4, 0, 5, 5);
    ComCommunication();
    answer();
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 5, 5, 1}}));
    EXPECT_TRUE(callbacks.failed.empty());
}

TEST_F(CycleFailure, BeforeAnyChoiceAGiveUpIsReportedAndTouchesNoList)
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

TEST_F(CycleFailure, WithoutACallbackAGiveUpIsSilent)
{
    RegistCallBackFuncIntf(nullptr, nullptr);
    poll(4, 0);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 41);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
}

TEST_F(CycleFailure, ReplyCountsAreNotTouchedByFailures)
{
    host.info.retryLimit = 1;
    poll(4, 0);
    ComCommunication();
    answerNothing();
    EXPECT_EQ(host.info.replyCount, 0);
    EXPECT_EQ(host.info.replyQuota, 1);
}

TEST_F(CycleFailure, OfTheHostsRecordOnlyTheDriversWordsChange)
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
