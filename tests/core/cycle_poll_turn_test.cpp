// The end of a polling turn: the result record and the rotation of the polled list.
#include "support/cycle_test.h"

using namespace tavmir::test;

namespace
{

class PollTurn : public CycleTest
{
};

TEST_F(PollTurn, TheHeadIsReportedInTheResultRecordWithoutValue)
{
    RW_VAR head = element(4, 16, 9);
    head.hostKey = 5;
    head.varKey = 6;
    head.hostData3 = 33;
    head.addressText = "Main.W";
    head.auxText = "aux";
    head.hostData13 = 1313;
    head.value = hex("01 02");
    PLC_driver.readVarList << head << element(4, 32);
    PLC_driver.retVar.value = hex("0F");
    ComCommunication();
    EXPECT_EQ(answer(), 1);

    RW_VAR expected = head;
    expected.status = 1;
    expected.value.clear();
    EXPECT_TRUE(sameRecord(PLC_driver.retVar, expected));
}

TEST_F(PollTurn, TheListIsRotatedByTheBatch)
{
    for (const int dataType : {1, 1, 4, 1}) {
        poll(dataType, PLC_driver.readVarList.size());
    }
    turn();
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{2, 3, 0, 1}));
    turn();
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{3, 0, 1, 2}));
    turn();
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{2, 3, 0, 1}));
}

TEST_F(PollTurn, EveryEntryIsPolledBeforeTheFirstComesAgain)
{
    pollMany(100, 4);
    std::vector<int> polled;
    for (int i = 0; i < 3; ++i) {
        ComCommunication();
        for (int entry = 0; entry < PLC_driver.batchCount; ++entry) {
            polled.push_back(PLC_driver.batchElements[entry]->elementAddress);
        }
        answer();
    }
    ASSERT_EQ(polled.size(), 3u * 38);
    for (std::size_t i = 0; i < polled.size(); ++i) {
        EXPECT_EQ(polled[i], 32 * static_cast<int>(i % 100));
    }
}

TEST_F(PollTurn, ListsOfEveryLengthKeepTheirOrderOverManyTurns)
{
    for (int size = 1; size <= 40; ++size) {
        PLC_driver.readVarList.clear();
        for (int i = 0; i < size; ++i) {
            poll(i % 3 == 0 ? 1 : 4, i, i, i);
        }
        int first = 0;
        for (int round = 0; round < 60; ++round) {
            ComCommunication();
            const int batch = PLC_driver.batchCount;
            answer();
            first = (first + batch) % size;
            ASSERT_EQ(PLC_driver.readVarList.size(), size);
            for (int i = 0; i < size; ++i) {
                ASSERT_EQ(PLC_driver.readVarList.at(i).hostKey, (first + i) % size);
            }
        }
    }
}

TEST_F(PollTurn, ABatchLongerThanTheListThatIsLeftDoesNoHarm)
{
    pollMany(5, 4);
    ComCommunication();
    PLC_driver.readVarList.erase(PLC_driver.readVarList.begin() + 2, PLC_driver.readVarList.end());
    ASSERT_EQ(PLC_driver.batchCount, 5);
    EXPECT_EQ(answerNothing(), 41);
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{32, 0}));
}

TEST_F(PollTurn, TheMarkOfTheHeadIsTakenBack)
{
    pollMany(3, 4);
    turn();
    for (const RW_VAR& var : PLC_driver.readVarList) {
        EXPECT_EQ(var.status, 0);
    }
    EXPECT_EQ(PLC_driver.readVarList.size(), 3);
}

TEST_F(PollTurn, AHeadWithoutItsMarkIsLeftWhereItIs)
{
    poll(4, 16, 3, 4);
    poll(1, 900);
    ComCommunication();
    PLC_driver.readVarList.first().status = 0;
    PLC_driver.retVar.hostKey = 99;
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{16, 900}));
    EXPECT_EQ(PLC_driver.retVar.hostKey, 99);
}

TEST_F(PollTurn, AListThatTheHostEmptiedMeanwhileIsNoHarm)
{
    poll(4, 16);
    ComCommunication();
    PLC_driver.readVarList.clear();
    EXPECT_EQ(answerNothing(), 41);
    EXPECT_TRUE(PLC_driver.readVarList.isEmpty());
}

TEST_F(PollTurn, PollingReportsNoVariable)
{
    pollMany(3, 4);
    turns(3);
    EXPECT_TRUE(callbacks.done.empty());
    EXPECT_TRUE(callbacks.failed.empty());
}

TEST_F(PollTurn, WriteAndOneShotTurnsLeaveTheResultRecordButTheStatus)
{
    poll(4, 16, 8, 9);
    turn();
    queueWrite(4, 0, 1, 2);
    queueOnce(4, 0, 3, 4);
    EXPECT_EQ(turns(2), "wo");
    EXPECT_EQ(PLC_driver.retVar.hostKey, 8);
    EXPECT_EQ(PLC_driver.retVar.varKey, 9);
    EXPECT_EQ(PLC_driver.retVar.status, 1);
}

TEST_F(PollTurn, AListSharedWithACopyOfTheHostIsRotatedAlone)
{
    pollMany(2, 4);
    poll(1, 900);
    ComCommunication();
    const QList<RW_VAR> hostsCopy = PLC_driver.readVarList;
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(addressesOf(hostsCopy), (std::vector<int>{0, 32, 900}));
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{900, 0, 32}));
}

} // namespace
