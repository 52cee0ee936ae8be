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

} // namespace
