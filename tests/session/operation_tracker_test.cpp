// Each operation ends exactly once.
#include "session/operation_tracker.h"

#include <gtest/gtest.h>

#include <thread>

namespace tavmir::host
{

namespace
{

constexpr int kPatientMs = 60000;
const int kWriteKey = OperationTracker::hostKey(OperationKind::write);
const int kReadKey = OperationTracker::hostKey(OperationKind::read);

} // namespace

TEST(Tracker, KeysStayClearOfThoseThatColourResultCodes)
{
    EXPECT_GE(kWriteKey, 1000);
    EXPECT_GE(kReadKey, 1000);
    EXPECT_NE(kWriteKey, kReadKey);
}

TEST(Tracker, EndIsToldToWhoWaits)
{
    OperationTracker tracker;
    const OperationId good = tracker.begin(OperationKind::write, 1, 1);
    const OperationId bad = tracker.begin(OperationKind::write, 1, 1);
    EXPECT_NE(good.key, bad.key);
    std::thread driver([&] {
        tracker.finished(kWriteKey, bad.key, false, "why");
        tracker.finished(kWriteKey, good.key, true, "");
    });
    EXPECT_TRUE(tracker.await(good, Deadline(kPatientMs)).ok());
    const OperationOutcome outcome = tracker.await(bad, Deadline(kPatientMs));
    EXPECT_EQ(OperationState::failed, outcome.state);
    EXPECT_EQ("why", outcome.reason.toStdString());
    driver.join();
}

TEST(Tracker, SecondEndOfTheSameOperationIsIgnored)
{
    OperationTracker tracker;
    const OperationId id = tracker.begin(OperationKind::write, 1, 1);
    tracker.finished(kWriteKey, id.key, true, "");
    tracker.finished(kWriteKey, id.key, false, "late");
    tracker.dropAll(OperationKind::write, "late");
    EXPECT_TRUE(tracker.await(id, Deadline(0)).ok());
    const OperationCounts counts = tracker.counts(OperationKind::write);
    EXPECT_EQ(1u, counts.done);
    EXPECT_EQ(0u, counts.reportedFailed + counts.dropped);
}

TEST(Tracker, ReadsAndWritesAreApart)
{
    OperationTracker tracker;
    const OperationId write = tracker.begin(OperationKind::write, 1, 1);
    const OperationId read = tracker.begin(OperationKind::read, 1, 1);
    EXPECT_EQ(write.key, read.key);
    tracker.finished(kReadKey, read.key, true, "");
    tracker.finished(12345, write.key, true, "");
    tracker.dropAll(OperationKind::read, "x");
    EXPECT_TRUE(tracker.await(read, Deadline(0)).ok());
    EXPECT_EQ(OperationState::unknown, tracker.await(write, Deadline(0)).state);
}

TEST(Tracker, DroppedOperationsFail)
{
    OperationTracker tracker;
    const OperationId first = tracker.begin(OperationKind::write, 1, 1);
    const OperationId second = tracker.begin(OperationKind::write, 1, 1);
    tracker.finished(kWriteKey, first.key, false, "reported");
    tracker.dropAll(OperationKind::write, "dropped");
    EXPECT_EQ("reported", tracker.await(first, Deadline(0)).reason.toStdString());
    EXPECT_EQ("dropped", tracker.await(second, Deadline(0)).reason.toStdString());
    EXPECT_EQ(1u, tracker.counts(OperationKind::write).reportedFailed);
    EXPECT_EQ(1u, tracker.counts(OperationKind::write).dropped);
}

TEST(Tracker, AfterTheEndNothingIsPending)
{
    OperationTracker tracker;
    const OperationId before = tracker.begin(OperationKind::read, 1, 1);
    tracker.close("over");
    const OperationId after = tracker.begin(OperationKind::write, 1, 1);
    EXPECT_EQ("over", tracker.await(before, Deadline(kPatientMs)).reason.toStdString());
    EXPECT_EQ("over", tracker.await(after, Deadline(kPatientMs)).reason.toStdString());
    EXPECT_TRUE(tracker.awaitIdle(OperationKind::write, -1, Deadline(0)));
}

TEST(Tracker, AbandonedOperationIsCountedAtItsEnd)
{
    OperationTracker tracker;
    const OperationId id = tracker.begin(OperationKind::write, 3, 1);
    EXPECT_EQ(OperationState::unknown, tracker.await(id, Deadline(1)).state);
    EXPECT_FALSE(tracker.awaitRoom(OperationKind::write, 2, Deadline(0)));
    tracker.finished(kWriteKey, id.key, true, "");
    EXPECT_EQ(1u, tracker.counts(OperationKind::write).done);
    EXPECT_TRUE(tracker.awaitRoom(OperationKind::write, 0, Deadline(0)));
    EXPECT_EQ(OperationState::failed, tracker.await(id, Deadline(0)).state);
}

TEST(Tracker, RoomCountsElementsThatHaveNotEnded)
{
    OperationTracker tracker;
    const OperationId id = tracker.begin(OperationKind::read, 8, 1);
    EXPECT_TRUE(tracker.awaitRoom(OperationKind::read, 8, Deadline(0)));
    EXPECT_FALSE(tracker.awaitRoom(OperationKind::read, 7, Deadline(0)));
    tracker.finished(kReadKey, id.key, true, "");
    EXPECT_TRUE(tracker.awaitRoom(OperationKind::read, 0, Deadline(0)));
    const OperationId cancelled = tracker.begin(OperationKind::read, 8, 1);
    tracker.cancel(cancelled);
    tracker.cancel(cancelled);
    EXPECT_TRUE(tracker.awaitRoom(OperationKind::read, 0, Deadline(0)));
    EXPECT_EQ(1u, tracker.counts(OperationKind::read).begun);
    EXPECT_EQ("the driver did not take it",
              tracker.await(cancelled, Deadline(0)).reason.toStdString());
}

TEST(Tracker, IdleMeansNothingPendingForOtherStations)
{
    OperationTracker tracker;
    EXPECT_TRUE(tracker.awaitIdle(OperationKind::write, 1, Deadline(0)));
    const OperationId id = tracker.begin(OperationKind::write, 1, 1);
    EXPECT_TRUE(tracker.awaitIdle(OperationKind::write, 1, Deadline(0)));
    EXPECT_FALSE(tracker.awaitIdle(OperationKind::write, 2, Deadline(0)));
    EXPECT_FALSE(tracker.awaitIdle(OperationKind::write, -1, Deadline(0)));
    EXPECT_TRUE(tracker.awaitIdle(OperationKind::read, 2, Deadline(0)));
    tracker.finished(kWriteKey, id.key, true, "");
    EXPECT_TRUE(tracker.awaitIdle(OperationKind::write, -1, Deadline(0)));
}

} // namespace tavmir::host
