// What is recorded of a feed, and when.
#include "recorder/feed_recording.h"

#include "feed/made_exchange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavmir::recorder
{

namespace
{

using namespace tavmir::host;
using project::DataType;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kMinuteMs = 60000;
constexpr int kAddress = 1600;

// The wall clock is twenty minutes ahead of the moments.
class FeedRecordingTest : public testing::Test
{
protected:
    explicit FeedRecordingTest(int everyMs = 0)
        : clock(momentAt(0), WallClock::time_point(std::chrono::seconds(1200))),
          recording({2000, "10.0.0.2:502"}, std::chrono::milliseconds(everyMs), clock)
    {
        FeedEntry connected;
        connected.kind = FeedKind::connected;
        connected.at = momentAt(1);
        recording.take(connected);
        FeedEntry plan = madePlan(1, {madeVariable(DataType::word, kAddress)});
        plan.at = momentAt(1);
        recording.take(plan);
    }

    void reads(int ms, quint32 number)
    {
        FeedEntry entry = entryOf(madeRead(kReadWords, 1, {{kAddress, number}}, momentAt(ms)));
        entry.at = momentAt(ms);
        recording.take(entry);
    }

    void looksUntil(int ms)
    {
        for (; lookedMs < ms; lookedMs += 100) {
            recording.look(momentAt(lookedMs));
        }
        recording.look(momentAt(ms));
    }

    Batch taken(int ms) { return recording.takeBatch(momentAt(ms)); }

    // "at ms: value"
    static std::vector<std::string> texts(const std::vector<SampleRow>& samples)
    {
        std::vector<std::string> texts;
        for (const SampleRow& row : samples) {
            texts.push_back(std::to_string(row.at / 1000 - 1200000) + ": " +
                            std::to_string(row.value.integer));
        }
        return texts;
    }

    static std::vector<std::string> kinds(const Batch& batch)
    {
        std::vector<std::string> kinds;
        for (const EventRow& event : batch.events) {
            kinds.push_back(event.kind.toStdString());
        }
        return kinds;
    }

    static std::vector<Quality> qualities(const Batch& batch)
    {
        std::vector<Quality> qualities;
        for (const QualityRow& row : batch.qualities) {
            qualities.push_back(row.quality.quality);
        }
        return qualities;
    }

    RecordingClock clock;
    FeedRecording recording;
    int lookedMs = 10;
};

class SpacedRecordingTest : public FeedRecordingTest
{
protected:
    SpacedRecordingTest() : FeedRecordingTest(100) {}
};

} // namespace

TEST_F(FeedRecordingTest, AValueIsASampleWhenItChanges)
{
    reads(10, 7);
    reads(20, 7);
    reads(30, 8);
    reads(40, 7);
    EXPECT_THAT(texts(taken(50).samples), ElementsAre("10: 7", "30: 8", "40: 7"));
    EXPECT_THAT(texts(taken(60).samples), IsEmpty());
}

TEST_F(FeedRecordingTest, AValueThatStandsIsASampleOnceAMinute)
{
    for (int ms = 10; ms < 2 * kMinuteMs + 1000; ms += 1000) {
        reads(ms, 7);
    }
    looksUntil(2 * kMinuteMs + 1000);
    EXPECT_THAT(texts(taken(2 * kMinuteMs + 1000).samples),
                ElementsAre("10: 7", "60010: 7", "120010: 7"));
}

TEST_F(FeedRecordingTest, WhatWasNeverReadIsNoSample)
{
    looksUntil(2 * kMinuteMs);
    const Batch batch = taken(2 * kMinuteMs);
    EXPECT_THAT(batch.samples, IsEmpty());
    EXPECT_THAT(qualities(batch), ElementsAre(Quality::never));
}

TEST_F(SpacedRecordingTest, BetweenTwoSamplesIsTheLeastTimeAndTheLastValueIsWrittenThen)
{
    reads(10, 1);
    reads(20, 2);
    reads(60, 3);
    reads(190, 4);
    looksUntil(300);
    EXPECT_THAT(texts(taken(300).samples), ElementsAre("10: 1", "110: 3", "210: 4"));
}

TEST_F(SpacedRecordingTest, WhatWaitsIsWrittenInTheEnd)
{
    reads(10, 1);
    reads(20, 2);
    recording.end(momentAt(30));
    EXPECT_THAT(texts(taken(30).samples), ElementsAre("10: 1", "30: 2"));
}

TEST_F(FeedRecordingTest, AQualityIsWrittenWhenItChangesWithItsReason)
{
    reads(10, 7);
    looksUntil(9000);
    const Batch batch = taken(9000);
    EXPECT_THAT(qualities(batch), ElementsAre(Quality::good, Quality::stale));
    EXPECT_EQ(batch.qualities[0].quality.reason, "");
    EXPECT_EQ(batch.qualities[1].quality.reason, "not read for 2.2 s");
    reads(9001, 7);
    looksUntil(9500);
    EXPECT_THAT(qualities(taken(9500)), ElementsAre(Quality::good));
}

TEST_F(FeedRecordingTest, AnotherReasonIsWrittenToo)
{
    reads(10, 7);
    looksUntil(3000);
    FeedEntry lost;
    lost.kind = FeedKind::connectionLost;
    lost.at = momentAt(3100);
    lost.text = "the controller closed the connection";
    recording.take(lost);
    looksUntil(4000);
    const Batch batch = taken(4000);
    ASSERT_THAT(qualities(batch), ElementsAre(Quality::good, Quality::stale, Quality::stale));
    EXPECT_NE(batch.qualities[2].quality.reason.indexOf("closed the connection"), -1);
}

TEST_F(FeedRecordingTest, EventsAreWrittenInTheirOrder)
{
    FeedEntry entry;
    entry.at = momentAt(10);
    entry.kind = FeedKind::operationEnded;
    entry.operation.state = OutcomeState::refused;
    entry.operation.station = 1;
    entry.operation.firstAddress = kAddress;
    entry.operation.bitsApart = 16;
    entry.text = "why";
    recording.take(entry);
    entry = FeedEntry();
    entry.at = momentAt(20);
    entry.kind = FeedKind::elementSetAside;
    entry.variable = "Main.W";
    entry.text = "refused";
    recording.take(entry);
    const Batch batch = taken(30);
    EXPECT_THAT(kinds(batch), ElementsAre("connected", "variables polled", "write", "refused"));
    EXPECT_EQ(batch.events[2].text, "refused: why");
    EXPECT_EQ(batch.events[2].at, clock.at(momentAt(10)));
    EXPECT_EQ(batch.events[3].subject, "Main.W");
}

TEST_F(FeedRecordingTest, AConnectionThatFailsTheSameWayIsOneEvent)
{
    FeedEntry entry;
    entry.kind = FeedKind::connectFailed;
    for (const char* why : {"refused", "refused", "no route", "refused"}) {
        entry.at = momentAt(10);
        entry.text = why;
        recording.take(entry);
    }
    EXPECT_THAT(kinds(taken(20)), ElementsAre("connected", "variables polled", "connect failed",
                                              "connect failed", "connect failed"));
}

TEST_F(FeedRecordingTest, AWriteThatWasCarriedOutInPartSaysHowMuchOfItWas)
{
    FeedEntry entry;
    entry.at = momentAt(10);
    entry.kind = FeedKind::operationEnded;
    entry.operation.state = OutcomeState::partial;
    entry.operation.elements = 5;
    entry.operation.acknowledged = 3;
    entry.text = "why";
    recording.take(entry);
    EXPECT_EQ(taken(20).events.back().text, "partial: why (3 of 5 elements)");
}

TEST_F(FeedRecordingTest, AControllerThatStopsAnsweringIsOneEventAndItsNextAnswerAnother)
{
    for (int i = 0; i < 2; ++i) {
        FeedEntry lost = entryOf(madeEnd(ExchangeEnd::timeout, 15));
        lost.at = momentAt(10);
        recording.take(lost);
        FeedEntry givenUp;
        givenUp.kind = FeedKind::gaveUp;
        givenUp.at = momentAt(10);
        recording.take(givenUp);
    }
    reads(20, 7);
    reads(30, 7);
    EXPECT_THAT(kinds(taken(40)), ElementsAre("connected", "variables polled", event_kind::kSilent,
                                              event_kind::kAnswers));
}

TEST_F(FeedRecordingTest, WhatStandsAndIsToldAgainIsNoSecondEvent)
{
    FeedEntry again;
    again.kind = FeedKind::connected;
    again.at = momentAt(10);
    again.standing = true;
    recording.take(again);
    EXPECT_THAT(kinds(taken(20)), ElementsAre("connected", "variables polled"));
    again.standing = false; // another connection
    recording.take(again);
    EXPECT_THAT(kinds(taken(20)), ElementsAre("connected"));
}

TEST_F(FeedRecordingTest, WhatWasMissedIsAnEvent)
{
    recording.gap(17, momentAt(10));
    const Batch batch = taken(20);
    EXPECT_EQ(batch.events.back().kind, event_kind::kMissed);
    EXPECT_TRUE(batch.events.back().text.startsWith("17 events"));
    EXPECT_EQ(batch.minutes.back().missed, 17u);
}

TEST_F(FeedRecordingTest, FiguresAreWrittenByTheMinute)
{
    reads(10, 1);
    MinuteRow row = taken(1000).minutes.back();
    EXPECT_EQ(row.replies, 1u);
    EXPECT_EQ(row.connects, 1u);
    reads(2000, 2);
    EXPECT_EQ(taken(3000).minutes.back().replies, 2u) << "the same minute";
    taken(kMinuteMs);
    reads(kMinuteMs + 10, 3);
    row = taken(kMinuteMs + 1000).minutes.back();
    EXPECT_EQ(row.replies, 1u);
    EXPECT_EQ(row.connects, 0u);
    EXPECT_EQ(row.until, clock.at(momentAt(kMinuteMs + 1000)));
}

TEST_F(FeedRecordingTest, AFileBeginsWithHowEverythingStands)
{
    reads(10, 7);
    const Batch batch = recording.standing(momentAt(20));
    ASSERT_EQ(batch.variables.size(), 1u);
    EXPECT_EQ(batch.variables[0].variable.type, "word");
    ASSERT_EQ(batch.polled.size(), 1u);
    ASSERT_EQ(batch.opening.size(), 1u);
    EXPECT_EQ(batch.opening[0].value.integer, 7);
    EXPECT_EQ(batch.opening[0].readAt, clock.at(momentAt(10)));
    EXPECT_EQ(batch.opening[0].quality.quality, Quality::good);
}

TEST_F(FeedRecordingTest, AVariableKeepsItsNumberInAnotherList)
{
    reads(10, 7);
    taken(20);
    FeedEntry plan =
        madePlan(2, {madeVariable(DataType::bit, 100), madeVariable(DataType::word, kAddress)});
    plan.plan = std::make_shared<PolledGeneration>(*plan.plan);
    plan.at = momentAt(30);
    recording.take(plan);
    reads(40, 8);
    const Batch batch = taken(50);
    ASSERT_EQ(batch.samples.size(), 1u);
    ASSERT_EQ(batch.polled.size(), 2u);
    EXPECT_EQ(batch.samples[0].variable, batch.polled[1].variable);
}

} // namespace tavmir::recorder
