// The end of a write or one-shot turn: which entries leave their list, which variables are
// reported. Both kinds follow the same rules; each test runs for both.
#include "support/cycle_test.h"

#include <string>

using namespace tavmir::test;

namespace
{

enum class Kind { write, once };

class ReportedTurn : public CycleTest, public ::testing::WithParamInterface<Kind>
{
protected:
    QList<RW_VAR>& list()
    {
        return GetParam() == Kind::write ? PLC_driver.writeVarList : PLC_driver.onceReadList;
    }

    void queue(int dataType, int address, int hostKey, int varKey)
    {
        if (GetParam() == Kind::write) {
            queueWrite(dataType, address, hostKey, varKey);
        } else {
            queueOnce(dataType, address, hostKey, varKey);
        }
    }
};

TEST_P(ReportedTurn, FinishedEntriesLeaveTheListAndTheOthersStay)
{
    for (const int dataType : {4, 4, 1, 4}) {
        queue(dataType, list().size(), list().size(), 0);
    }
    ComCommunication();
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(addressesOf(list()), (std::vector<int>{2, 3}));
}

TEST_P(ReportedTurn, AFinishedVariableIsReportedWithTheStationOfTheConnection)
{
    queue(4, 16, -3, 2000000000);
    ComCommunication();
    answer();
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, -3, 2000000000, 1}}));
    EXPECT_TRUE(callbacks.failed.empty());
    EXPECT_TRUE(list().isEmpty());
}

TEST_P(ReportedTurn, PairsAreReportedOnceEachFromTheBack)
{
    queue(4, 0, 1, 1);
    queue(4, 16, 2, 2);
    queue(4, 32, 1, 1);
    queue(4, 48, 3, 3);
    queue(4, 64, 3, 3);
    ComCommunication();
    answer();
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 3, 3, 1}, {70, 1, 1, 1}, {70, 2, 2, 1}}));
}

TEST_P(ReportedTurn, BothKeysTellVariablesApart)
{
    queue(4, 0, 1, 1);
    queue(4, 16, 1, 2);
    queue(4, 32, 2, 1);
    ComCommunication();
    answer();
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 2, 1, 1}, {70, 1, 2, 1}, {70, 1, 1, 1}}));
}

TEST_P(ReportedTurn, AVariableQueuedAgainBehindTheBatchIsReportedAfterItsLastEntry)
{
    queue(4, 0, 1, 1);
    queue(4, 16, 2, 2);
    queue(1, 0, 3, 3);
    queue(1, 1, 1, 1);
    ComCommunication();
    answer();
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 2, 2, 1}}));
    ComCommunication();
    answer();
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 2, 2, 1}, {70, 1, 1, 1}, {70, 3, 3, 1}}));
}

TEST_P(ReportedTurn, OnlyTheWholePairWaitingBehindHoldsAReportBack)
{
    queue(4, 0, 1, 1);
    queue(1, 0, 1, 9);
    queue(1, 1, 9, 1);
    ComCommunication();
    answer();
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 1, 1, 1}}));
}

TEST_P(ReportedTurn, EntriesQueuedWhileTheRequestWasInFlightStay)
{
    queue(4, 0, 1, 1);
    ComCommunication();
    queue(4, 16, 2, 2);
    answer();
    EXPECT_EQ(addressesOf(list()), std::vector<int>{16});
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 1, 1, 1}}));
}

TEST_P(ReportedTurn, AListShorterThanTheBatchIsEmptied)
{
    queue(4, 0, 1, 1);
    queue(4, 16, 2, 2);
    ComCommunication();
    PLC_driver.batchCount = 2;
    list().removeLast();
    answerNothing();
    EXPECT_TRUE(list().isEmpty());
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 1, 1, 2}}));
}

TEST_P(ReportedTurn, AFullBatchOfDistinctVariablesReportsEach)
{
    for (int i = 0; i < 45; ++i) {
        queue(1, i, i, 100 + i);
    }
    ComCommunication();
    ASSERT_EQ(PLC_driver.batchCount, 45);
    answer();
    ASSERT_EQ(callbacks.done.size(), 45u);
    for (int i = 0; i < 45; ++i) {
        EXPECT_EQ(callbacks.done[static_cast<std::size_t>(i)], (VarDone{70, 44 - i, 144 - i, 1}));
    }
}

TEST_P(ReportedTurn, GivenUpVariablesAreReportedWithTwoEvenWhenTheyWaitAgain)
{
    queue(4, 0, 1, 1);
    queue(4, 16, 2, 2);
    queue(4, 32, 1, 1);
    queue(1, 0, 1, 1);
    queue(1, 1, 5, 5);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 42);
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 1, 1, 2}, {70, 2, 2, 2}}));
}

TEST_P(ReportedTurn, WhatWaitedBehindAGivenUpBatchIsDroppedWithoutReport)
{
    queue(4, 0, 1, 1);
    queue(1, 0, 5, 5);
    ComCommunication();
    answerNothing();
    EXPECT_TRUE(list().isEmpty());
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 1, 1, 2}}));
    EXPECT_EQ(callbacks.failed, (std::vector<CommFail>{{0, 0, 1}}));
}

TEST_P(ReportedTurn, AGiveUpLeavesTheOtherListsAlone)
{
    queue(4, 0, 1, 1);
    poll(4, 0);
    if (GetParam() == Kind::write) {
        queueOnce(4, 0, 2, 2);
    }
    ComCommunication();
    if (GetParam() == Kind::once) {
        queueWrite(4, 0, 2, 2);
    }
    answerNothing();
    EXPECT_TRUE(list().isEmpty());
    const QList<RW_VAR>& other =
        GetParam() == Kind::write ? PLC_driver.onceReadList : PLC_driver.writeVarList;
    EXPECT_EQ(other.size(), 1);
    EXPECT_EQ(PLC_driver.readVarList.size(), 1);
}

TEST_P(ReportedTurn, WithoutACallbackTheEntriesLeaveAllTheSame)
{
    RegistCallBackFuncIntf(nullptr, nullptr);
    queue(4, 0, 1, 1);
    queue(1, 0, 2, 2);
    ComCommunication();
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(list().size(), 1);
    ComCommunication();
    EXPECT_EQ(answerNothing(), 43);
    EXPECT_TRUE(list().isEmpty());
}

TEST_P(ReportedTurn, AListSharedWithACopyOfTheHostIsTrimmedAlone)
{
    queue(4, 0, 1, 1);
    queue(1, 0, 2, 2);
    ComCommunication();
    const QList<RW_VAR> hostsCopy = list();
    answer();
    EXPECT_EQ(hostsCopy.size(), 2);
    EXPECT_EQ(list().size(), 1);
    EXPECT_EQ(callbacks.done, (std::vector<VarDone>{{70, 1, 1, 1}}));
}

std::string kindName(const ::testing::TestParamInfo<Kind>& info)
{
    return info.param == Kind::write ? "Write" : "OneShot";
}

INSTANTIATE_TEST_SUITE_P(EachList, ReportedTurn, ::testing::Values(Kind::write, Kind::once),
                         kindName);

class WriteTurn : public CycleTest
{
};

TEST_F(WriteTurn, ValuesEnterTheCachesWhenTheRequestIsBuilt)
{
    PLC_driver.writeVarList << writeOf(4, 16, hex("34 12")) << writeOf(4, 32, hex("78 56"));
    ComCommunication();
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    EXPECT_EQ(PLC_driver.wordCache.value(32), 0x5678);
}

TEST_F(WriteTurn, ItsReplyIsNineBytesAndStoresNothing)
{
    PLC_driver.writeVarList << writeOf(4, 16, hex("34 12"));
    const Protocol* request = ComCommunication();
    EXPECT_EQ(request->replyLength, 9);
    QByteArray reply = hex("FF FF FF FF FF FF FF FF FF");
    EXPECT_EQ(DataCom(&reply, 9)->status, 1);
    EXPECT_EQ(PLC_driver.wordCache.size(), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
}

TEST_F(WriteTurn, AOneShotReadStoresItsValuesBeforeItIsReported)
{
    queueOnce(6, 64, 1, 1);
    ComCommunication();
    unsigned int seen = 0;
    callbacks.insideCallback = [&] { seen = PLC_driver.dwordCache.value(64); };
    QByteArray reply = readReply(4, {100000});
    DataCom(&reply, reply.size());
    EXPECT_EQ(seen, 100000u);
}

} // namespace
