// The recorder with a feed: what comes into the files, also when they cannot be written.
#include "recorder/recorder.h"

#include "feed/made_exchange.h"
#include "made_recording.h"
#include "recorder/recording_reader.h"
#include "support/wait_until.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

namespace tavmir::recorder
{

namespace
{

using namespace tavmir::host;
using project::DataType;

constexpr int kAddress = 1600;
constexpr int kPatienceMs = 60000;

// No file of this program may grow beyond this.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_ = {};
};

class RecorderTest : public testing::Test
{
protected:
    RecorderTest()
    {
        options.folder = QString::fromStdString(folder.pathOf("recording"));
        options.limitBytes = 16 * kMiB;
        facts.program = "test";
        facts.project = "{}";
        feed.publish(madePlan(1, {madeVariable(DataType::word, kAddress)}));
        begin();
    }

    void begin()
    {
        recorder = std::make_unique<Recorder>(options, facts, QualityRules(),
                                              [this](const QString& text) { said << text; });
        opened = recorder->open();
        if (opened.isEmpty()) {
            recorder->start(feed);
        }
    }

    void reads(quint32 number)
    {
        feed.publish(madeRead(kReadWords, 1, {{kAddress, number}}, Clock::now()));
    }

    bool isWritten(quint64 samples)
    {
        return test::waitUntil([&] { return recorder->state().samples >= samples; }, kPatienceMs);
    }

    std::vector<qint64> recorded()
    {
        QString problem;
        const auto reader = RecordingReader::open(options.folder, problem);
        std::vector<qint64> values;
        reader->parts([&](RecordingPart& part) {
            part.samples(1, 0, 2 * kEpoch,
                         [&](const SampleRow& row) { values.push_back(row.value.integer); });
            return true;
        });
        return values;
    }

    std::vector<EventRow> events(const QString& kind)
    {
        QString problem;
        const auto reader = RecordingReader::open(options.folder, problem);
        std::vector<EventRow> found;
        for (const EventRow& event : reader->lastEvents(2 * kEpoch, 1000)) {
            if (event.kind == kind) {
                found.push_back(event);
            }
        }
        return found;
    }

    size_t files() { return membersOf(options.folder.toStdString()).size(); }

    test::TemporaryFolder folder;
    RecorderOptions options;
    FileFacts facts;
    Feed feed;
    QStringList said; // by the recorder's thread
    QString opened;
    std::unique_ptr<Recorder> recorder;
};

} // namespace

TEST_F(RecorderTest, ABurstThatNoLongerFitsIntoAFileIsNotLost)
{
    recorder.reset();
    options.folder = QString::fromStdString(folder.pathOf("burst"));
    options.limitBytes = 4 * kMiB;
    begin();
    constexpr quint32 kBurst = 15000;
    constexpr quint32 kAll = 6 * kBurst;
    for (quint32 number = 1; number <= kAll; ++number) {
        reads(number);
        if (number % kBurst == 0) {
            ASSERT_TRUE(isWritten(number)) << said.join("\n").toStdString();
        }
    }
    EXPECT_EQ(recorder->state().lostSamples, 0U);
    recorder->stop();
    EXPECT_GT(files(), 1U);
    const std::vector<qint64> values = recorded(); // of the files that the limit leaves
    EXPECT_GT(values.size(), kBurst);
    for (size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(values[i], static_cast<qint64>((kAll - values.size() + i + 1) % 65536));
    }
}

TEST_F(RecorderTest, WritesWhatTheFeedTellsAndLeavesNoLog)
{
    ASSERT_EQ(opened, "");
    reads(7);
    reads(8);
    recorder->stop();
    EXPECT_THAT(recorded(), testing::ElementsAre(7, 8));
    const std::vector<Member> members = membersOf(options.folder.toStdString());
    ASSERT_EQ(members.size(), 1u);
    EXPECT_FALSE(members[0].hasLog);
    const RecordingState state = recorder->state();
    EXPECT_TRUE(state.isOn()) << state.problem.toStdString();
    EXPECT_EQ(state.samples, 2u);
    EXPECT_EQ(state.bytes, members[0].bytes);
    EXPECT_LT(state.from, state.until);
    EXPECT_EQ(events(event_kind::kEnded).size(), 1u);
}

TEST_F(RecorderTest, IsWrittenWithinAboutASecond)
{
    reads(7);
    EXPECT_TRUE(isWritten(1));
    EXPECT_THAT(recorded(), testing::ElementsAre(7)) << "while it goes on";
}

TEST_F(RecorderTest, GoesOnInAFolderWithAnotherFileAndSaysWhatIsMissing)
{
    reads(7);
    recorder->stop();
    const Micros ended = recorder->state().until;
    recorder.reset();
    begin();
    ASSERT_EQ(opened, "");
    recorder->stop();
    EXPECT_EQ(files(), 2u);
    const std::vector<EventRow> gaps = events(event_kind::kGap);
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_EQ(gaps[0].at, ended);
    EXPECT_GT(gaps[0].until, ended);
}

TEST_F(RecorderTest, WhatCannotBeWrittenIsToldAndRecordingGoesOnWhenItCan)
{
    reads(7);
    ASSERT_TRUE(isWritten(1));
    {
        const FileSizeLimit limit(4096);
        reads(8);
        ASSERT_TRUE(test::waitUntil([&] { return !recorder->state().isOn(); }, kPatienceMs));
        reads(9);
        EXPECT_NE(recorder->state().problem, "");
        EXPECT_GT(recorder->state().failedAt, 0);
        EXPECT_EQ(recorder->state().lostSamples, 1u);
    }
    ASSERT_TRUE(test::waitUntil([&] { return recorder->state().isOn(); }, kPatienceMs));
    reads(10);
    recorder->stop();
    EXPECT_THAT(recorded(), testing::ElementsAre(7, 9, 10)) << "as it stands when it goes on";
    const std::vector<EventRow> gaps = events(event_kind::kGap);
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_LT(gaps[0].at, gaps[0].until);
    EXPECT_EQ(events(event_kind::kStorage).size(), 1u);
    ASSERT_EQ(said.size(), 2);
    EXPECT_TRUE(said[0].startsWith("the recording cannot be written: "));
    EXPECT_TRUE(said[1].startsWith("the recording is written again; nothing was recorded from "));
}

TEST_F(RecorderTest, AFileThatWasRemovedIsFollowedByAnother)
{
    reads(7);
    ASSERT_TRUE(isWritten(1));
    for (const Member& member : membersOf(options.folder.toStdString())) {
        removeMember(member);
    }
    ASSERT_TRUE(test::waitUntil([&] { return files() == 1; }, kPatienceMs));
    ASSERT_TRUE(test::waitUntil([&] { return recorder->state().isOn(); }, kPatienceMs));
    reads(8);
    recorder->stop();
    EXPECT_EQ(recorded().back(), 8);
    const std::vector<EventRow> gaps = events(event_kind::kGap);
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_LT(gaps[0].at, gaps[0].until);
}

TEST_F(RecorderTest, TwoCannotRecordIntoOneFolder)
{
    Recorder second(options, facts, QualityRules(), [](const QString&) {});
    EXPECT_TRUE(second.open().endsWith("another program records into it"));
}

TEST_F(RecorderTest, AProjectThatIsTooLargeForTheLimitIsRefused)
{
    recorder.reset();
    facts.project = QByteArray(2 * kMiB, ' ');
    begin();
    EXPECT_TRUE(opened.contains("is too small")) << opened.toStdString();
}

} // namespace tavmir::recorder
