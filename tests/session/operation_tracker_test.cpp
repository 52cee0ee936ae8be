// Pending operations: the line before them, their keys, their ends.
#include "session/operation_tracker.h"

#include "support/wait_until.h"

#include <gtest/gtest.h>

#include <thread>

namespace tavmir::host
{

namespace
{

constexpr int kPatientMs = 60000;
constexpr int kAnyNumber = 1000000;

OperationShape shapeAt(int station, int elements = 1)
{
    OperationShape shape;
    shape.station = station;
    shape.elements = elements;
    return shape;
}

class Tracker : public testing::Test
{
protected:
    OperationId begin(OperationKind kind, int station = 1, int elements = 1,
                      int deadlineMs = kPatientMs)
    {
        const OperationId id =
            tracker_.admit(kind, shapeAt(station, elements), Deadline(deadlineMs), kAnyNumber);
        tracker_.given(id);
        return id;
    }

    void acknowledge(const OperationId& id, int count)
    {
        Exchange good;
        good.end = ExchangeEnd::reply;
        good.replySize = good.expectedReply = 9;
        good.sentBytes = 15;
        RequestAttempts attempts;
        attempts.add(good, QString());
        tracker_.requestEnded(id, count, attempts);
    }

    Feed feed_;
    OperationTracker tracker_{feed_};
};

} // namespace

TEST_F(Tracker, KeysStayClearOfThoseThatColourResultCodes)
{
    const OperationId id = begin(OperationKind::write);
    EXPECT_GT(driverKeys(id).hostKey, 11);
    EXPECT_GT(driverKeys(id).varKey, -1);
}

TEST_F(Tracker, KeysAreToldApartAndNeverRepeat)
{
    OperationTracker other(feed_);
    const OperationId first = begin(OperationKind::read);
    const OperationId second =
        other.admit(OperationKind::read, shapeAt(1), Deadline(kPatientMs), kAnyNumber);
    EXPECT_NE(first.key, second.key) << "in one process, whatever the session";
    for (const quint64 key :
         {quint64{1}, quint64{0x7FFFFFFF}, quint64{0x80000000}, quint64{0x123456789}}) {
        for (const OperationKind kind : {OperationKind::write, OperationKind::read}) {
            const DriverKeys keys = driverKeys({kind, key});
            EXPECT_EQ((OperationId{kind, key}), operationOf(keys.hostKey, keys.varKey).value());
        }
    }
    EXPECT_FALSE(operationOf(0, -1).has_value()) << "a polled element";
}

TEST_F(Tracker, EndIsToldToWhoWaits)
{
    const OperationId id = begin(OperationKind::write);
    std::thread driver([&] {
        acknowledge(id, 1);
        tracker_.ended(id, "left");
    });
    const std::optional<Outcome> outcome = tracker_.awaitUntilDeadline(id);
    driver.join();
    ASSERT_TRUE(outcome);
    EXPECT_EQ("done", outcomeInWords(*outcome).toStdString());
    EXPECT_FALSE(tracker_.awaitUntilDeadline(id)) << "an outcome is taken once";
}

TEST_F(Tracker, DroppedOperationsWereNotSent)
{
    const OperationId given = begin(OperationKind::write);
    const OperationId other = begin(OperationKind::read);
    const OperationId admitted =
        tracker_.admit(OperationKind::write, shapeAt(1), Deadline(kPatientMs), kAnyNumber);
    tracker_.dropGiven(OperationKind::write, "dropped");
    EXPECT_EQ("not sent: dropped", outcomeInWords(tracker_.claimOrAbandon(given)).toStdString());
    EXPECT_TRUE(tracker_.isPending(other)) << "of the other kind";
    EXPECT_TRUE(tracker_.isPending(admitted)) << "the driver does not have it yet";
}

TEST_F(Tracker, AfterTheEndNothingIsPending)
{
    const OperationId early = begin(OperationKind::write);
    tracker_.close("the host stops");
    EXPECT_EQ("not sent: the host stops",
              outcomeInWords(tracker_.claimOrAbandon(early)).toStdString());
    const OperationId late = begin(OperationKind::read);
    EXPECT_EQ("not sent: the host stops",
              outcomeInWords(tracker_.claimOrAbandon(late)).toStdString());
    EXPECT_FALSE(tracker_.hasWork(OperationKind::write) || tracker_.hasWork(OperationKind::read));
}

TEST_F(Tracker, OtherStationsWaitInLineAndNobodyOvertakes)
{
    const OperationId first = begin(OperationKind::read, 1);
    std::atomic<bool> secondAdmitted{false};
    std::atomic<bool> thirdAdmitted{false};
    OperationId second;
    std::thread two([&] {
        second = tracker_.admit(OperationKind::read, shapeAt(2), Deadline(kPatientMs), kAnyNumber);
        secondAdmitted = true;
    });
    // A place in line shows in what is begun behind it: it waits although its station is free.
    OperationId third;
    std::thread three;
    ASSERT_TRUE(test::waitUntil([&] {
        const OperationId probe =
            tracker_.admit(OperationKind::read, shapeAt(1), Deadline(1), kAnyNumber);
        const bool overtook = tracker_.isPending(probe);
        tracker_.ended(probe, "probe");
        return !overtook; // the second stands in line
    }));
    three = std::thread([&] {
        third = tracker_.admit(OperationKind::read, shapeAt(1), Deadline(kPatientMs), kAnyNumber);
        thirdAdmitted = true;
    });
    EXPECT_FALSE(secondAdmitted);
    EXPECT_FALSE(thirdAdmitted);
    tracker_.ended(first, "over");
    ASSERT_TRUE(test::waitUntil([&] { return secondAdmitted.load(); }));
    EXPECT_FALSE(thirdAdmitted) << "of another station than what is pending";
    two.join();
    tracker_.ended(second, "over");
    three.join();
    EXPECT_TRUE(tracker_.isPending(third));
}

TEST_F(Tracker, WhatIsAloneIsNoneWhileOthersArePendingAndOthersWaitForIt)
{
    const OperationId first = begin(OperationKind::read);
    EXPECT_FALSE(tracker_.admitAlone(OperationKind::read));
    EXPECT_TRUE(tracker_.admitAlone(OperationKind::write))
        << "of the other kind nothing is pending";
    tracker_.ended(first, "over");
    const std::optional<OperationId> alone = tracker_.admitAlone(OperationKind::read);
    ASSERT_TRUE(alone);
    EXPECT_FALSE(tracker_.admitAlone(OperationKind::read));
    const OperationId other =
        tracker_.admit(OperationKind::read, shapeAt(1), Deadline(1), kAnyNumber);
    EXPECT_FALSE(tracker_.isPending(other));
    tracker_.ended(*alone, QString());
    EXPECT_TRUE(tracker_.isPending(begin(OperationKind::read)));
}

TEST_F(Tracker, RoomCountsElementsThatHaveNotEnded)
{
    const OperationId ten = begin(OperationKind::read, 1, 10);
    const OperationId fits = tracker_.admit(OperationKind::read, shapeAt(1, 5), Deadline(1), 15);
    EXPECT_TRUE(tracker_.isPending(fits));
    const OperationId tooMuch = tracker_.admit(OperationKind::read, shapeAt(1, 1), Deadline(1), 15);
    EXPECT_FALSE(tracker_.isPending(tooMuch));
    EXPECT_EQ("not sent: earlier ones did not end in time",
              outcomeInWords(tracker_.claimOrAbandon(tooMuch)).toStdString());
    EXPECT_EQ(15, tracker_.pending(OperationKind::read));
    tracker_.ended(ten, "over");
    EXPECT_EQ(5, tracker_.pending(OperationKind::read));
}

TEST_F(Tracker, ExpiryIsToldOnceAndOnlyOfWhatWasGiven)
{
    const OperationId soon = begin(OperationKind::write, 1, 1, 0);
    const OperationId later = begin(OperationKind::write);
    tracker_.admit(OperationKind::write, shapeAt(1), Deadline(0), kAnyNumber);
    EXPECT_EQ(std::vector<OperationId>{soon}, tracker_.takeExpired(Clock::now()));
    EXPECT_TRUE(tracker_.takeExpired(Clock::now()).empty());
    EXPECT_TRUE(tracker_.isPending(later));
    EXPECT_FALSE(tracker_.awaitUntilDeadline(soon)) << "it is still pending";
}

TEST_F(Tracker, ValuesOfAReadStandInTheOrderOfItsElements)
{
    OperationShape shape = shapeAt(1, 3);
    shape.firstAddress = 1600;
    const OperationId id =
        tracker_.admit(OperationKind::read, shape, Deadline(kPatientMs), kAnyNumber);
    tracker_.given(id);
    tracker_.valueCame(id, 1632, 0x0605);
    tracker_.valueCame(id, 1600, 0x0201);
    tracker_.valueCame(id, 1648, 0x0909); // behind its end
    tracker_.valueCame(id, 1584, 0x0808); // before its begin
    acknowledge(id, 3);
    tracker_.ended(id, "left");
    EXPECT_EQ(QByteArray::fromHex("010200000506"), tracker_.claimOrAbandon(id).bytes);
}

TEST_F(Tracker, OutcomesThatNobodyClaimsDoNotPileUp)
{
    const OperationId first = begin(OperationKind::write);
    tracker_.ended(first, "over");
    for (size_t i = 0; i < OperationTracker::kMostUnclaimed; ++i) {
        tracker_.ended(begin(OperationKind::write), "over");
    }
    EXPECT_EQ("unknown: what became of it is not known any more",
              outcomeInWords(tracker_.claimOrAbandon(first)).toStdString())
        << "the oldest goes first";
}

TEST_F(Tracker, AsManyOutcomesAsPromisedAreKept)
{
    const OperationId first = begin(OperationKind::write);
    tracker_.ended(first, "over");
    for (size_t i = 1; i < OperationTracker::kMostUnclaimed; ++i) {
        tracker_.ended(begin(OperationKind::write), "over");
    }
    EXPECT_EQ("not sent: over", outcomeInWords(tracker_.claimOrAbandon(first)).toStdString());
}

TEST_F(Tracker, WhatWasAbandonedLeavesNoOutcomeBehind)
{
    const OperationId id = begin(OperationKind::write);
    EXPECT_EQ("unknown: no answer in its time, and it is still under way",
              outcomeInWords(tracker_.claimOrAbandon(id)).toStdString());
    tracker_.ended(id, "over");
    EXPECT_EQ("unknown: what became of it is not known any more",
              outcomeInWords(tracker_.claimOrAbandon(id)).toStdString());
}

TEST_F(Tracker, WhatIsStillUnderWaySaysHowFarItCame)
{
    const OperationId id = begin(OperationKind::write, 1, 60);
    acknowledge(id, 38);
    const Outcome outcome = tracker_.claimOrAbandon(id);
    EXPECT_EQ("partial: 38 of 60 elements done, the rest unknown: no answer in its time, and it is "
              "still under way",
              outcomeInWords(outcome).toStdString());
    EXPECT_EQ(38, outcome.acknowledged);
    EXPECT_EQ(60, outcome.elements);
}

TEST_F(Tracker, AllExpireAtTheirVeryDeadline)
{
    const Deadline deadline(kPatientMs);
    std::vector<OperationId> ids;
    for (int i = 0; i < 3; ++i) {
        ids.push_back(tracker_.admit(OperationKind::write, shapeAt(1), deadline, kAnyNumber));
        tracker_.given(ids.back());
    }
    EXPECT_TRUE(tracker_.takeExpired(deadline.end() - Clock::duration(1)).empty());
    EXPECT_EQ(ids, tracker_.takeExpired(deadline.end()));
}

TEST_F(Tracker, AllThatTheDriverDroppedEnd)
{
    const OperationId ids[] = {begin(OperationKind::write), begin(OperationKind::write),
                               begin(OperationKind::write)};
    tracker_.dropGiven(OperationKind::write, "dropped");
    for (const OperationId& id : ids) {
        EXPECT_FALSE(tracker_.isPending(id));
    }
    EXPECT_FALSE(tracker_.hasWork(OperationKind::write) || tracker_.hasWork(OperationKind::read));
}

TEST_F(Tracker, ClosingEndsAllAndWhoWaitsInLine)
{
    const OperationId pending[] = {begin(OperationKind::write), begin(OperationKind::write),
                                   begin(OperationKind::read)};
    OperationId waiting;
    std::thread inLine([&] {
        waiting =
            tracker_.admit(OperationKind::write, shapeAt(2), Deadline(kPatientMs), kAnyNumber);
    });
    tracker_.close("the host stops");
    inLine.join();
    for (const OperationId& id : {pending[0], pending[1], pending[2], waiting}) {
        const std::optional<Outcome> outcome(tracker_.claimOrAbandon(id));
        ASSERT_TRUE(outcome);
        EXPECT_EQ("not sent: the host stops", outcomeInWords(*outcome).toStdString());
    }
}

TEST_F(Tracker, AllInLineGoWhenTheyFit)
{
    const OperationId first = begin(OperationKind::read, 1);
    std::atomic<int> admitted{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            tracker_.admit(OperationKind::read, shapeAt(2), Deadline(kPatientMs), kAnyNumber);
            ++admitted;
        });
    }
    tracker_.ended(first, "over");
    EXPECT_TRUE(test::waitUntil([&] { return admitted == 4; }));
    tracker_.close("the test ends");
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(Tracker, NobodyWaitsForTheOtherKind)
{
    begin(OperationKind::read);
    EXPECT_TRUE(tracker_.awaitIdle(OperationKind::write, Deadline(1000)));
    EXPECT_FALSE(tracker_.awaitIdle(OperationKind::read, Deadline(1)));
}

TEST_F(Tracker, WhatIsDoneWithoutARequestIsDoneWhole)
{
    const OperationId id =
        tracker_.admit(OperationKind::write, shapeAt(1, 3), Deadline(kPatientMs), kAnyNumber);
    tracker_.done(id, "stored");
    const Outcome outcome = tracker_.claimOrAbandon(id);
    EXPECT_EQ("done: stored", outcomeInWords(outcome).toStdString());
    EXPECT_EQ(3, outcome.acknowledged);
}

TEST_F(Tracker, KeysThatNoSessionMadeAreNoOperation)
{
    EXPECT_FALSE(operationOf(999, 5).has_value());
    EXPECT_FALSE(operationOf(1000, -1).has_value());
    EXPECT_TRUE(operationOf(1000, 0).has_value());
}

} // namespace tavmir::host
