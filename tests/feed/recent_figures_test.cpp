// The last pass, the latest round trips and the failures of the last minute.
#include "feed/recent_figures.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using project::DataType;

Exchange madeFailure(ExchangeEnd end, int ms, quint32 attempt = 1)
{
    Exchange exchange = madeRead(kReadWords, 1, {{0, 0}, {16, 0}}, momentAt(ms));
    exchange.end = end;
    exchange.attempt = attempt;
    return exchange;
}

FeedEntry gaveUpAt(int ms)
{
    FeedEntry entry;
    entry.kind = FeedKind::gaveUp;
    entry.at = momentAt(ms);
    return entry;
}

// A good reply to polling of so many words, asked for at `from` and answered at `to`.
FeedEntry polled(int words, int from, int to)
{
    std::vector<ReadElement> elements;
    for (int i = 0; i < words; ++i) {
        elements.push_back({16 * i, 1});
    }
    Exchange exchange = madeRead(kReadWords, 1, elements, momentAt(to));
    exchange.sentAt = momentAt(from);
    return entryOf(exchange);
}

class Recent : public testing::Test
{
protected:
    void watch(int words)
    {
        std::vector<PolledElement> variables;
        for (int i = 0; i < words; ++i) {
            variables.push_back(madeVariable(DataType::word, 16 * i));
        }
        figures_.take(madePlan(1, variables));
    }
    RecentLine at(int ms) const { return figures_.at(momentAt(ms)); }

    RecentFigures figures_;
};

} // namespace

TEST_F(Recent, NothingIsKnownAtFirst)
{
    watch(2);
    EXPECT_FALSE(at(0).passMs.has_value());
    EXPECT_FALSE(at(0).roundTripMs.has_value());
    EXPECT_TRUE(at(0).lastMinute.none());
}

TEST_F(Recent, APassLastsFromItsFirstRequestToItsLastReply)
{
    watch(5);
    figures_.take(polled(3, 100, 101));
    EXPECT_FALSE(at(101).passMs.has_value()) << "three of five";
    figures_.take(polled(2, 104, 107));
    EXPECT_DOUBLE_EQ(7, at(107).passMs.value_or(-1));
    figures_.take(polled(3, 200, 201));
    figures_.take(polled(2, 201, 203));
    EXPECT_DOUBLE_EQ(3, at(203).passMs.value_or(-1));
}

TEST_F(Recent, ARequestThatReachesIntoTheNextPassCountsThere)
{
    watch(5);
    figures_.take(polled(3, 0, 1));
    figures_.take(polled(3, 1, 2));
    EXPECT_DOUBLE_EQ(2, at(2).passMs.value_or(-1));
    figures_.take(polled(3, 10, 11));
    EXPECT_DOUBLE_EQ(2, at(11).passMs.value_or(-1)) << "four of five";
    figures_.take(polled(1, 13, 14));
    EXPECT_DOUBLE_EQ(4, at(14).passMs.value_or(-1));
}

TEST_F(Recent, ARequestThatWasGivenUpIsPassedOver)
{
    watch(4);
    figures_.take(polled(2, 0, 1));
    figures_.take(entryOf(madeFailure(ExchangeEnd::exception, 2)));
    EXPECT_FALSE(at(2).passMs.has_value()) << "it may be repeated";
    figures_.take(gaveUpAt(3));
    EXPECT_DOUBLE_EQ(3, at(3).passMs.value_or(-1));
}

TEST_F(Recent, AnotherListBeginsAnew)
{
    watch(2);
    figures_.take(polled(2, 0, 1));
    watch(4);
    EXPECT_FALSE(at(1).passMs.has_value());
    figures_.take(polled(2, 2, 3));
    EXPECT_FALSE(at(3).passMs.has_value());
}

TEST_F(Recent, TheRoundTripIsTheMedian)
{
    for (const int ms : {1, 100, 2, 3, 90}) {
        figures_.take(polled(1, 0, ms));
    }
    EXPECT_DOUBLE_EQ(3, at(100).roundTripMs.value_or(-1));
}

TEST_F(Recent, TheSlowRoundTripIsThatOfOneInAHundred)
{
    watch(1);
    for (int i = 0; i < 100; ++i) {
        const int trip = i == 50 ? 70 : i == 60 ? 40 : 2;
        figures_.take(polled(1, 1000 + 100 * i, 1000 + 100 * i + trip));
    }
    EXPECT_DOUBLE_EQ(40, *at(12000).slowRoundTripMs);
    EXPECT_DOUBLE_EQ(2, *at(12000).roundTripMs);
}

TEST_F(Recent, WhatCameLateIsCountedAndIsNoFailure)
{
    Exchange exchange = madeRead(kReadWords, 1, {{0, 0}}, momentAt(1000));
    exchange.foreignFrames = 2;
    figures_.take(entryOf(exchange));
    FeedEntry dropped;
    dropped.kind = FeedKind::framesDropped;
    dropped.frames = 3;
    dropped.at = momentAt(2000);
    figures_.take(dropped);
    EXPECT_EQ(5, at(3000).lastMinute.late);
    EXPECT_TRUE(at(3000).lastMinute.none());
}

TEST_F(Recent, OldRoundTripsAreForgotten)
{
    for (int i = 0; i < 300; ++i) {
        figures_.take(polled(1, 0, 50));
    }
    for (int i = 0; i < 256; ++i) {
        figures_.take(polled(1, 0, 2));
    }
    EXPECT_DOUBLE_EQ(2, at(100).roundTripMs.value_or(-1));
}

TEST_F(Recent, FailuresOfTheLastMinuteAreCounted)
{
    figures_.take(entryOf(madeFailure(ExchangeEnd::timeout, 1000)));
    figures_.take(entryOf(madeFailure(ExchangeEnd::cut, 1500, 2)));
    figures_.take(entryOf(madeFailure(ExchangeEnd::exception, 2000, 3)));
    figures_.take(gaveUpAt(2500));
    const FailureCounts counts = at(3000).lastMinute;
    EXPECT_EQ(2u, counts.timeouts);
    EXPECT_EQ(2u, counts.retries);
    EXPECT_EQ(1u, counts.exceptions);
    EXPECT_EQ(1u, counts.giveUps);
    EXPECT_FALSE(counts.none());
}

TEST_F(Recent, WhatIsOlderThanAMinuteIsForgotten)
{
    figures_.take(entryOf(madeFailure(ExchangeEnd::timeout, 1000)));
    EXPECT_EQ(1u, at(59000).lastMinute.timeouts);
    EXPECT_EQ(0u, at(62000).lastMinute.timeouts);
    figures_.take(entryOf(madeFailure(ExchangeEnd::timeout, 61000)));
    EXPECT_EQ(1u, at(62000).lastMinute.timeouts) << "the same place in the ring";
}

TEST_F(Recent, WhatHappenedBeforeTheReaderCameIsNotCounted)
{
    FeedEntry entry = entryOf(madeFailure(ExchangeEnd::timeout, 1000));
    entry.standing = true;
    figures_.take(entry);
    EXPECT_TRUE(at(1000).lastMinute.none());
}

TEST_F(Recent, WhatWasMeasuredOnAConnectionEndsWithIt)
{
    watch(2);
    figures_.take(polled(2, 100, 104));
    EXPECT_DOUBLE_EQ(4, at(104).passMs.value_or(-1));
    FeedEntry lost = gaveUpAt(200);
    lost.kind = FeedKind::connectionLost;
    figures_.take(lost);
    EXPECT_FALSE(at(201).passMs.has_value());
    EXPECT_FALSE(at(201).roundTripMs.has_value());
    FeedEntry failed = gaveUpAt(300);
    failed.kind = FeedKind::connectFailed;
    figures_.take(failed);
    figures_.take(failed);
    EXPECT_EQ(1u, at(301).lastMinute.lostConnections);
    EXPECT_EQ(2u, at(301).lastMinute.failedConnects);
    EXPECT_FALSE(at(301).lastMinute.none());
}

TEST_F(Recent, APassThatALostConnectionCutIsNotMeasuredAndTheNextIsCountedFromItsBegin)
{
    watch(4);
    figures_.take(polled(2, 0, 1));
    FeedEntry lost = gaveUpAt(2);
    lost.kind = FeedKind::connectionLost;
    figures_.take(lost);
    figures_.take(entryOf(madeFailure(ExchangeEnd::notSent, 3)));
    figures_.take(gaveUpAt(4));
    EXPECT_FALSE(at(4).passMs.has_value()) << "cut";
    figures_.take(polled(2, 100, 101));
    EXPECT_FALSE(at(101).passMs.has_value()) << "two of four";
    figures_.take(polled(2, 101, 103));
    EXPECT_DOUBLE_EQ(3, at(103).passMs.value_or(-1));
}

TEST_F(Recent, PassesInWhichNothingIsSentAreNotMeasured)
{
    watch(2);
    for (int ms = 0; ms < 30; ms += 10) {
        figures_.take(entryOf(madeFailure(ExchangeEnd::notSent, ms)));
        figures_.take(gaveUpAt(ms + 1));
    }
    EXPECT_FALSE(at(30).passMs.has_value());
}

TEST_F(Recent, ARoundTripOfLongAgoIsNotToldAsNow)
{
    watch(2);
    figures_.take(polled(2, 100, 104));
    EXPECT_DOUBLE_EQ(4, at(59000).roundTripMs.value_or(-1));
    EXPECT_FALSE(at(61000).roundTripMs.has_value());
}

TEST_F(Recent, APassIsOverWithoutWhatIsSetAside)
{
    std::vector<PolledElement> variables;
    for (int i = 0; i < 3; ++i) {
        variables.push_back(madeVariable(DataType::word, 16 * i));
    }
    const FeedEntry whole = madePlan(1, variables);
    auto plan = std::make_shared<PolledGeneration>(*whole.plan);
    plan->setAside.push_back({2, "refused"});
    FeedEntry entry = whole;
    entry.plan = plan;
    figures_.take(entry);
    figures_.take(polled(2, 100, 104));
    EXPECT_DOUBLE_EQ(4, at(104).passMs.value_or(-1));
}

} // namespace tavmir::host
