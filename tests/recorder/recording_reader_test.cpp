// Reading files back.
#include "recorder/recording_reader.h"

#include "made_recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavmir::recorder
{

namespace
{

using host::Quality;

// Two files, ten seconds each, nothing between 10 s and 15 s; and a gap within the second.
class RecordingReaderTest : public testing::Test
{
protected:
    RecordingReaderTest()
    {
        Batch rows;
        rows.variables = numbered({madeRecorded("Main.A"), madeRecorded("Main.T", "text", "text")});
        rows.polled = {{momentOf(0), 0, 1}, {momentOf(0), 1, 2}};
        rows.samples = {sampleAt(1, 1000, 5),
                        sampleAt(1, 2000, 9),
                        sampleAt(1, 3000, 7),
                        {2, momentOf(1000), RecordedValue::of(QString("on"))}};
        rows.qualities = {qualityAt(1, 1000, Quality::good), qualityAt(2, 1000, Quality::good),
                          qualityAt(1, 4000, Quality::bad, "refused"),
                          qualityAt(1, 6000, Quality::good)};
        rows.events = {{momentOf(0), 0, event_kind::kBegan, "", ""},
                       {momentOf(4000), 0, event_kind::kSetAside, "Main.A", "refused"}};
        MinuteRow minute;
        minute.at = momentOf(0);
        minute.until = momentOf(10000);
        minute.replies = 12;
        minute.roundTripMedian = 250;
        rows.minutes = {minute};
        made.addFile(1, momentOf(0), momentOf(10000), Batch(), rows);

        Batch opening; // with other ids
        opening.variables =
            numbered({madeRecorded("Main.T", "text", "text"), madeRecorded("Main.A")});
        opening.polled = {{momentOf(15000), 0, 2}, {momentOf(15000), 1, 1}};
        opening.opening = {
            {2, RecordedValue::of(qint64(7)), momentOf(3000), {Quality::good, ""}},
            {1, RecordedValue::of(QString("on")), momentOf(1000), {Quality::stale, "old"}}};
        opening.events = {{momentOf(10000), momentOf(15000), event_kind::kGap, "", "nobody"}};
        Batch second;
        second.samples = {sampleAt(2, 16000, 8), sampleAt(2, 22000, 3)};
        second.events = {{momentOf(18000), momentOf(20000), event_kind::kGap, "", "disk full"}};
        made.addFile(2, momentOf(15000), momentOf(25000), opening, second);
        QString problem;
        reader = RecordingReader::open(made.folder(), problem);
    }

    MadeRecording made;
    std::unique_ptr<RecordingReader> reader;
};

} // namespace

TEST_F(RecordingReaderTest, CoversFromTheFirstToTheLast)
{
    EXPECT_EQ(reader->coverage().from, momentOf(0));
    EXPECT_EQ(reader->coverage().until, momentOf(25000));
    const std::vector<TimeSpan> stretches = reader->stretches();
    ASSERT_EQ(stretches.size(), 3u);
    EXPECT_EQ(stretches[0].until, momentOf(10000));
    EXPECT_EQ(stretches[1].from, momentOf(15000));
    EXPECT_EQ(stretches[1].until, momentOf(18000));
    EXPECT_EQ(stretches[2].from, momentOf(20000));
}

TEST_F(RecordingReaderTest, TheNewestFileHasProjectAndControllerOfItsOwn)
{
    const std::unique_ptr<RecordingPart> newest = reader->newestPart();
    EXPECT_EQ(newest->project(), "project 2");
    EXPECT_EQ(newest->about("controller"), "10.0.0.2:502");
}

TEST_F(RecordingReaderTest, GivesAllVariablesOnce)
{
    const std::vector<RecordedVariable> variables = reader->variables();
    ASSERT_EQ(variables.size(), 2u);
    EXPECT_EQ(variables[0].address, "Main.T");
    EXPECT_EQ(variables[1], madeRecorded("Main.A"));
}

TEST_F(RecordingReaderTest, ValuesAtATimeAreThoseThatStoodThen)
{
    const std::vector<RecordedValueAt> values = reader->valuesAt(momentOf(4500));
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0].variable.address, "Main.A");
    EXPECT_EQ(values[0].standing.value.integer, 7);
    EXPECT_EQ(values[0].standing.at, momentOf(3000));
    EXPECT_EQ(values[0].standing.quality.quality, Quality::bad);
    EXPECT_EQ(values[0].standing.qualityAt, momentOf(4000));
    EXPECT_EQ(values[1].standing.value.text, "on");
}

TEST_F(RecordingReaderTest, AFileStandsByItself)
{
    const std::vector<RecordedValueAt> values = reader->valuesAt(momentOf(15500));
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0].standing.value.integer, 7);
    EXPECT_EQ(values[0].standing.at, momentOf(3000));
    EXPECT_EQ(values[1].standing.quality.reason, "old");
}

TEST_F(RecordingReaderTest, WhereNothingWasRecordedNothingIsGood)
{
    for (const int ms : {12000, 19000, 26000}) {
        const std::vector<RecordedValueAt> values = reader->valuesAt(momentOf(ms));
        ASSERT_EQ(values.size(), 2u) << ms;
        EXPECT_EQ(values[0].standing.quality.quality, Quality::stale) << ms;
        EXPECT_EQ(values[0].standing.quality.reason, kNotRecorded) << ms;
    }
    EXPECT_THAT(reader->valuesAt(momentOf(-1)), testing::IsEmpty());
}

TEST_F(RecordingReaderTest, TheLastEventsComeInTheirOrderAndNotMoreThanAsked)
{
    const std::vector<EventRow> all = reader->lastEvents(momentOf(30000), 100);
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all[0].kind, event_kind::kBegan);
    EXPECT_EQ(all[1].subject, "Main.A");
    EXPECT_EQ(all[2].until, momentOf(15000));
    const std::vector<EventRow> last = reader->lastEvents(momentOf(30000), 3);
    ASSERT_EQ(last.size(), 3u);
    EXPECT_EQ(last[0].subject, "Main.A");
    EXPECT_EQ(reader->lastEvents(momentOf(3999), 100).size(), 1u);
    EXPECT_EQ(reader->lastEvents(momentOf(4000), 100).size(), 2u);
}

TEST_F(RecordingReaderTest, OnlyFilesOfTheTimeAreLookedAt)
{
    const auto begins = [this](qint64 from, qint64 until) {
        std::vector<Micros> all;
        reader->partsWithin({momentOf(from), momentOf(until)}, [&](RecordingPart& part) {
            all.push_back(part.began());
            return true;
        });
        return all;
    };
    EXPECT_THAT(begins(0, 1000), testing::ElementsAre(momentOf(0)));
    EXPECT_THAT(begins(16000, 17000), testing::ElementsAre(momentOf(15000)));
    EXPECT_THAT(begins(0, 17000), testing::ElementsAre(momentOf(0), momentOf(15000)));
    EXPECT_EQ(reader->partAt(momentOf(12000))->began(), momentOf(0));
    EXPECT_EQ(reader->partAt(momentOf(-1)), nullptr);
}

TEST_F(RecordingReaderTest, MinutesComeBackAsTheyWere)
{
    const std::vector<MinuteRow> minutes = reader->minutes({momentOf(5000), momentOf(6000)});
    ASSERT_EQ(minutes.size(), 1u);
    EXPECT_EQ(minutes[0].replies, 12u);
    EXPECT_EQ(minutes[0].roundTripMedian, 250.0);
    EXPECT_FALSE(minutes[0].roundTripP99.has_value());
    EXPECT_THAT(reader->minutes({momentOf(10000), momentOf(20000)}), testing::IsEmpty());
}

TEST_F(RecordingReaderTest, AFileThatGoesIsLeftOut)
{
    removeMember(membersOf(made.path()).front());
    EXPECT_EQ(reader->coverage().from, momentOf(15000));
}

TEST_F(RecordingReaderTest, AnotherVersionIsToldAndNotRead)
{
    QString problem;
    const std::string path = membersOf(made.path()).front().path;
    Database::open(path, Database::Mode::write, problem)->run("PRAGMA user_version = 2");
    std::vector<QString> problems;
    reader->parts([](RecordingPart&) { return true; },
                  [&](const QString& text) { problems.push_back(text); });
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_TRUE(problems[0].endsWith("is of version 2, this program reads version 1"));
}

TEST(RecordingReader, AFolderWithoutRecordingIsRefused)
{
    const test::TemporaryFolder folder;
    QString problem;
    EXPECT_EQ(RecordingReader::open(QString::fromStdString(folder.path()), problem), nullptr);
    EXPECT_TRUE(problem.endsWith("holds no recording"));
}

} // namespace tavmir::recorder
