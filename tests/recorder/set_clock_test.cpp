// A wall clock that is set while it is recorded, and between two runs.
#include "feed/made_exchange.h"
#include "made_recording.h"
#include "recorder/recorder.h"
#include "recorder/recording_reader.h"
#include "recorder/state_words.h"
#include "support/wait_until.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

namespace tavmir::recorder
{

namespace
{

using namespace tavmir::host;
using testing::HasSubstr;

constexpr int kAddress = 1600;
constexpr int kPatienceMs = 60000;
constexpr qint64 kHourMs = 3600 * 1000;
constexpr Micros kHour = kHourMs * 1000;

class SetClockTest : public testing::Test
{
protected:
    SetClockTest()
    {
        options.folder = QString::fromStdString(folder.pathOf("recording"));
        options.limitBytes = 16 * kMiB;
        facts.program = "test";
        facts.project = "{}";
        feed.publish(madePlan(1, {madeVariable(project::DataType::word, kAddress)}));
        begin();
    }

    void begin()
    {
        recorder = std::make_unique<Recorder>(
            options, facts, QualityRules(), [](const QString&) {}, [this] { return wall(); });
        ASSERT_EQ(recorder->open(), "");
        recorder->start(feed);
    }

    WallClock::time_point wall() const
    {
        return WallClock::now() + std::chrono::milliseconds(aheadMs);
    }

    Micros wallMicros() const
    {
        return std::chrono::duration_cast<std::chrono::microseconds>(wall().time_since_epoch())
            .count();
    }

    size_t files() const { return membersOf(options.folder.toStdString()).size(); }

    // 7 is recorded, then the clock is set, another file begins, and 8 is recorded.
    void recordOverTheSetting(qint64 byMs)
    {
        reads(7);
        ASSERT_TRUE(test::waitUntil([&] { return recorder->state().samples >= 1; }, kPatienceMs));
        before = wallMicros();
        aheadMs += byMs;
        ASSERT_TRUE(test::waitUntil([&] { return files() == 2; }, kPatienceMs));
        after = wallMicros();
        reads(8);
        ASSERT_TRUE(test::waitUntil([&] { return recorder->state().samples >= 2; }, kPatienceMs));
    }

    void reads(quint32 number)
    {
        feed.publish(madeRead(kReadWords, 1, {{kAddress, number}}, Clock::now()));
    }

    // In the order recorded.
    std::vector<SampleRow> samples() const
    {
        std::vector<SampleRow> rows;
        reader()->parts([&](RecordingPart& part) {
            part.samples(1, 0, 4 * kEpoch, [&](const SampleRow& row) { rows.push_back(row); });
            return true;
        });
        return rows;
    }

    std::vector<EventRow> settings() const
    {
        std::vector<EventRow> found;
        for (const EventRow& event : reader()->lastEvents(4 * kEpoch, 1000)) {
            if (event.kind == event_kind::kClock) {
                found.push_back(event);
            }
        }
        return found;
    }

    std::unique_ptr<RecordingReader> reader() const
    {
        QString problem;
        return RecordingReader::open(options.folder, problem);
    }

    void checkBothSides(const char* said)
    {
        recorder->stop();
        const std::vector<SampleRow> rows = samples();
        ASSERT_EQ(rows.size(), 2U);
        EXPECT_EQ(rows[0].value.integer, 7);
        EXPECT_LE(rows[0].at, before);
        EXPECT_LT(before - rows[0].at, kHour / 2) << "by the clock before";
        EXPECT_EQ(rows[1].value.integer, 8);
        EXPECT_GE(rows[1].at, after - kSecond / 10);
        EXPECT_LE(rows[1].at, wallMicros()) << "by the clock behind";
        ASSERT_EQ(settings().size(), 1U);
        EXPECT_THAT(settings()[0].text.toStdString(), HasSubstr(said));
        EXPECT_EQ(recorder->state().lostSamples, 0U);
        EXPECT_EQ(recorder->state().missedEvents, 0U);
    }

    test::TemporaryFolder folder;
    RecorderOptions options;
    FileFacts facts;
    Feed feed;
    std::atomic<qint64> aheadMs{0};
    Micros before = 0; // by the wall clock, when it was set, and when that was seen
    Micros after = 0;
    std::unique_ptr<Recorder> recorder;
};

} // namespace

TEST_F(SetClockTest, SetBackAnotherFileBeginsAndEachSampleStandsAtItsOwnTime)
{
    recordOverTheSetting(-kHourMs);
    checkBothSides("the clock was set back by 3600.");
}

TEST_F(SetClockTest, SetAheadAnotherFileBeginsAndEachSampleStandsAtItsOwnTime)
{
    recordOverTheSetting(kHourMs);
    checkBothSides("the clock was set ahead by 3600.");
}

TEST_F(SetClockTest, LessThanASecondIsFollowedInTheNextFileOnly)
{
    aheadMs += 500;
    reads(7);
    ASSERT_TRUE(test::waitUntil([&] { return recorder->state().samples >= 1; }, kPatienceMs));
    recorder->stop();
    EXPECT_EQ(files(), 1U);
    EXPECT_TRUE(settings().empty());
}

TEST_F(SetClockTest, WhatIsCoveredGoesFromTheLeastBeginningToTheGreatestEnd)
{
    recordOverTheSetting(-kHourMs);
    const RecordingState state = recorder->state();
    EXPECT_GE(state.until, before - kSecond) << "of the file before";
    EXPECT_LT(state.from, after) << "of the file behind";
    EXPECT_GE(state.until - state.from, kHour - 2 * kSecond);
    EXPECT_LT(state.until - state.from, kHour + kHour / 2);
    const TimeSpan coverage = reader()->coverage();
    EXPECT_EQ(coverage.from / 1000, state.from / 1000);
    EXPECT_GE(coverage.until, state.until - kSecond);
}

TEST_F(SetClockTest, AFileOfAnEarlierRunThatEndsLaterIsCovered)
{
    reads(7);
    recorder->stop();
    const Micros until = recorder->state().until;
    recorder.reset();
    aheadMs -= kHourMs;
    begin();
    recorder->stop();
    const RecordingState state = recorder->state();
    EXPECT_EQ(state.until, until);
    EXPECT_LE(state.from, wallMicros());
    EXPECT_THAT(recordingWords(state).toStdString(), HasSubstr("covers 59 min"));
}

TEST_F(SetClockTest, AFileThatIsGoneCoversNothing)
{
    recordOverTheSetting(-kHourMs);
    removeMember(membersOf(options.folder.toStdString()).front());
    recorder->stop();
    const RecordingState state = recorder->state();
    EXPECT_LT(state.until - state.from, kHour / 2);
    EXPECT_LE(state.from, state.until);
    EXPECT_THAT(samples().back().value.integer, 8);
}

} // namespace tavmir::recorder
