// The driver's lists from outside: what is taken out of them, and what stays.
#include "driver/request_lists.h"

#include "driver/driver_loader.h"
#include "support/driver_file.h"

#include <gtest/gtest.h>

#include <vector>

namespace tavmir::host
{

namespace
{

using Keys = std::vector<int>;

class RequestLists : public testing::Test
{
protected:
    RequestLists() : driver_(Driver::load(test::driverFile(TAVMIR_DRIVER), problems_)) {}

    void SetUp() override { ASSERT_TRUE(driver_) << problems_.join('\n').toStdString(); }

    Communication_Protocol& context() { return *driver_->api().context; }

    static void fill(QList<RW_VAR>& list, const Keys& keys)
    {
        for (const int key : keys) {
            RW_VAR entry;
            entry.hostKey = 1000;
            entry.varKey = key;
            entry.elementAddress = 16 * key;
            list << entry;
        }
    }

    static Keys keysOf(const QList<RW_VAR>& list)
    {
        Keys keys;
        for (const RW_VAR& entry : list) {
            keys.push_back(entry.varKey);
        }
        return keys;
    }

    QStringList problems_;
    std::unique_ptr<Driver> driver_;
};

bool all(int, int)
{
    return true;
}

} // namespace

TEST_F(RequestLists, WhatIsInFlightStaysAndTheFirstBehindItGoes)
{
    fill(context().writeVarList, {1, 2, 3, 4});
    EXPECT_EQ(2, withdraw(context(), RequestList::writes, all, 2));
    EXPECT_EQ((Keys{1, 2}), keysOf(context().writeVarList));
    EXPECT_EQ(2, withdraw(context(), RequestList::writes, all, 0));
    EXPECT_EQ(Keys{}, keysOf(context().writeVarList));
}

TEST_F(RequestLists, OnlyTheEntriesThatAreToGoGo)
{
    fill(context().onceReadList, {1, 2, 3, 2, 5});
    const auto second = [](int hostKey, int varKey) { return hostKey == 1000 && varKey == 2; };
    EXPECT_EQ(2, withdraw(context(), RequestList::onceReads, second, 0));
    EXPECT_EQ((Keys{1, 3, 5}), keysOf(context().onceReadList));
}

TEST_F(RequestLists, EachListIsTakenForItself)
{
    fill(context().writeVarList, {1});
    fill(context().onceReadList, {2, 3});
    EXPECT_EQ(2, withdraw(context(), RequestList::onceReads, all, 0));
    EXPECT_EQ(Keys{1}, keysOf(context().writeVarList));
}

TEST_F(RequestLists, TheListsLockIsHeldWhileLookingAndFreeAfterwards)
{
    fill(context().writeVarList, {1});
    bool wasFree = true;
    const auto look = [&](int, int) {
        wasFree = context().listMutex.tryLock();
        return true;
    };
    withdraw(context(), RequestList::writes, look, 0);
    EXPECT_FALSE(wasFree);
    ASSERT_TRUE(context().listMutex.tryLock());
    context().listMutex.unlock();
}

TEST_F(RequestLists, TheBatchIsEveryEntryOfTheRequest)
{
    fill(context().writeVarList, {7, 8, 9});
    context().batchCount = 2;
    context().batchElements[0] = &context().writeVarList[0];
    context().batchElements[1] = &context().writeVarList[1];
    const std::vector<BatchEntry> batch = currentBatch(context());
    context().batchCount = 0;
    ASSERT_EQ(2u, batch.size());
    EXPECT_EQ(7, batch[0].varKey);
    EXPECT_EQ(8, batch[1].varKey);
    EXPECT_EQ(1000, batch[1].hostKey);
}

TEST_F(RequestLists, TurnsOfTheOnlyKindThatWaitsAreForgotten)
{
    for (const bool writesWait : {true, false}) {
        context().writeTurns = 5;
        context().onceReadTurns = 4;
        keepPollingOut(context(), writesWait, !writesWait);
        EXPECT_EQ(0, context().writeTurns);
        EXPECT_EQ(0, context().onceReadTurns);
    }
}

TEST_F(RequestLists, WhileBothWaitFiveWritesMakeRoomForAReadAndThatForWrites)
{
    context().cycleState = 1;
    context().writeTurns = 5;
    context().onceReadTurns = 4;
    keepPollingOut(context(), true, true);
    EXPECT_EQ(5, context().writeTurns) << "the driver takes the read";
    EXPECT_EQ(0, context().onceReadTurns);
    context().cycleState = 2;
    keepPollingOut(context(), true, true);
    EXPECT_EQ(0, context().writeTurns);
}

} // namespace tavmir::host
