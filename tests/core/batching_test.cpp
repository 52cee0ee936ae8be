// Which entries share a request.
#include "support/cycle_test.h"

using namespace tavmir::test;

namespace
{

class Batching : public CycleTest
{
protected:
    int polledBatch(int entries, int dataType)
    {
        PLC_driver.readVarList.clear();
        PLC_driver.protocolList.clear();
        pollMany(entries, dataType);
        ComCommunication();
        return PLC_driver.batchCount;
    }
};

TEST_F(Batching, LargestBatchOfEachType)
{
    EXPECT_EQ(polledBatch(60, 1), 45);
    EXPECT_EQ(polledBatch(60, 4), 38);
    EXPECT_EQ(polledBatch(60, 10), 38);
    EXPECT_EQ(polledBatch(60, 6), 28);
    EXPECT_EQ(polledBatch(60, 7), 28);
}

TEST_F(Batching, EveryLengthBelowTheLargestIsTakenWhole)
{
    for (int entries = 1; entries <= 45; ++entries) {
        EXPECT_EQ(polledBatch(entries, 1), entries);
    }
    for (int entries = 1; entries <= 38; ++entries) {
        EXPECT_EQ(polledBatch(entries, 4), entries);
    }
    for (int entries = 1; entries <= 28; ++entries) {
        EXPECT_EQ(polledBatch(entries, 6), entries);
    }
    EXPECT_EQ(polledBatch(46, 1), 45);
    EXPECT_EQ(polledBatch(39, 4), 38);
    EXPECT_EQ(polledBatch(29, 6), 28);
}

TEST_F(Batching, TheSameLimitsHoldForWritesAndOneShotReads)
{
    const int types[5] = {1, 4, 10, 6, 7};
    const int largest[5] = {45, 38, 38, 28, 28};
    for (int i = 0; i < 5; ++i) {
        PLC_driver.protocolList.clear();
        PLC_driver.writeTurns = 0;
        PLC_driver.onceReadTurns = 0;
        PLC_driver.writeVarList.clear();
        PLC_driver.onceReadList.clear();
        queueOnces(60, types[i]);
        ComCommunication();
        EXPECT_EQ(PLC_driver.batchCount, largest[i]) << "one-shot, type " << types[i];
        PLC_driver.protocolList.clear();
        queueWrites(60, types[i]);
        ComCommunication();
        EXPECT_EQ(PLC_driver.batchCount, largest[i]) << "write, type " << types[i];
    }
}

TEST_F(Batching, NeverMixesDataTypes)
{
    for (const int dataType : {1, 1, 4, 1}) {
        poll(dataType, 0);
    }
    ComCommunication();
    EXPECT_EQ(PLC_driver.batchCount, 2);
    answer();
    ComCommunication();
    EXPECT_EQ(PLC_driver.batchCount, 1);
    EXPECT_EQ(PLC_driver.batchElements[0]->dataType, 4);
    answer();
    ComCommunication();
    EXPECT_EQ(PLC_driver.batchCount, 3);
}

TEST_F(Batching, TypesOfOneCacheAreStillDifferentTypes)
{
    poll(4, 0);
    poll(10, 16);
    ComCommunication();
    EXPECT_EQ(PLC_driver.batchCount, 1);
    answer();
    PLC_driver.readVarList.clear();
    poll(6, 0);
    poll(7, 32);
    ComCommunication();
    EXPECT_EQ(PLC_driver.batchCount, 1);
}

TEST_F(Batching, DoesNotCompareStationsOrAddresses)
{
    PLC_driver.readVarList << element(4, 900, 1) << element(4, 16, 2) << element(4, 900, 3);
    const Protocol* request = ComCommunication();
    EXPECT_EQ(PLC_driver.batchCount, 3);
    EXPECT_EQ(request->frame.at(6), char(1));
}

TEST_F(Batching, PointsAtTheListEntriesThemselves)
{
    pollMany(3, 4);
    ComCommunication();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(PLC_driver.batchElements[i], &PLC_driver.readVarList[i]);
    }

    PLC_driver.protocolList.clear();
    queueOnces(2, 6);
    ComCommunication();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(PLC_driver.batchElements[i], &PLC_driver.onceReadList[i]);
    }

    PLC_driver.protocolList.clear();
    queueWrites(2, 1);
    ComCommunication();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(PLC_driver.batchElements[i], &PLC_driver.writeVarList[i]);
    }
}

TEST_F(Batching, EntriesKeepTheirPlaceWhileOthersAreQueuedBehind)
{
    queueWrites(2, 4);
    ComCommunication();
    const RW_VAR* first = PLC_driver.batchElements[0];
    for (int i = 0; i < 500; ++i) {
        const RW_VAR later = writeOf(4, 5000 + i, hex("00 00"));
        AddListWriteVar(&later);
    }
    EXPECT_EQ(&PLC_driver.writeVarList[0], first);
    EXPECT_EQ(PLC_driver.batchElements[1], &PLC_driver.writeVarList[1]);
}

TEST_F(Batching, ARebuiltListDoesNotMoveTheEntriesOfTheFirstTurn)
{
    // The cycle takes the rebuilt list over; a copy that the host made of it meanwhile must not
    // make the batch point into the host's copy.
    PLC_driver.pendingReadList << element(4, 16) << element(4, 32);
    const QList<RW_VAR> hostsCopy = PLC_driver.pendingReadList;
    ComCommunication();
    EXPECT_EQ(PLC_driver.batchElements[0], &PLC_driver.readVarList[0]);
    EXPECT_EQ(PLC_driver.batchElements[1], &PLC_driver.readVarList[1]);
    EXPECT_EQ(hostsCopy.at(0).status, 0);
}

TEST_F(Batching, ABatchOfOneIsBuilt)
{
    poll(6, 0);
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(PLC_driver.batchCount, 1);
    EXPECT_EQ(request->frame.at(8), char(1));
    EXPECT_EQ(request->frameLength, 13);
}

} // namespace
