// Walking through a recording.
#include "recorder/recording_export.h"

#include "made_recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavmir::recorder
{

namespace
{

using host::Quality;
using testing::ElementsAre;

class RecordingExportTest : public testing::Test
{
protected:
    RecordingExportTest()
    {
        Batch rows;
        rows.variables = numbered({madeRecorded("A"), madeRecorded("B", "word", "hex")});
        rows.samples = {sampleAt(1, 10, 5), sampleAt(2, 20, 31), sampleAt(1, 30, 6)};
        rows.qualities = {qualityAt(1, 10, Quality::good), qualityAt(2, 20, Quality::good),
                          qualityAt(1, 40, Quality::stale, "old")};
        rows.events = {{momentOf(45), momentOf(65), event_kind::kGap, "", ""}};
        made.addFile(1, momentOf(0), momentOf(70), Batch(), rows);
        Batch opening;
        opening.variables = numbered({madeRecorded("A")});
        opening.opening = {{1, RecordedValue::of(qint64(6)), momentOf(30), {Quality::good, ""}}};
        Batch second;
        second.samples = {sampleAt(1, 110, 9)};
        made.addFile(2, momentOf(100), momentOf(120), opening, second);
        QString problem;
        reader = RecordingReader::open(made.folder(), problem);
    }

    std::vector<std::string> walked(const QStringList& addresses, TimeSpan span, qint64 stepMs)
    {
        QString problem;
        RecordingExport walk(*reader, addresses, problem);
        std::vector<std::string> lines;
        ExportSink sink;
        sink.row = [&](Micros at, size_t column, const ExportCell& cell) {
            lines.push_back(text(at) + walk.columns()[column].address.toStdString() + "=" +
                            cell.text.toStdString() + " " + qualityWord(cell.quality.quality));
        };
        sink.step = [&](Micros at, const std::vector<ExportCell>& cells) {
            std::string line = text(at);
            for (const ExportCell& cell : cells) {
                line +=
                    cell.quality.quality == Quality::good ? cell.text.toStdString() + ";" : "-;";
            }
            lines.push_back(line);
        };
        sink.goesOn = [](TimeSpan, TimeSpan) { return true; };
        walk.walk(span, stepMs, sink);
        return lines;
    }

    static std::string text(Micros at) { return std::to_string((at - kEpoch) / 1000) + " "; }

    static constexpr TimeSpan kAll = {0, 2 * kEpoch};
    MadeRecording made;
    std::unique_ptr<RecordingReader> reader;
};

} // namespace

TEST_F(RecordingExportTest, RowsComeInTheOrderOfTime)
{
    EXPECT_THAT(walked({}, kAll, 0), ElementsAre("10 A=5 good", "20 B=0x001F good", "30 A=6 good",
                                                 "40 A=6 stale", "110 A=9 good"));
}

TEST_F(RecordingExportTest, StepsAreWhatStoodThenAndNoneWhereNothingWasRecorded)
{
    EXPECT_THAT(walked({"A", "B"}, kAll, 10),
                ElementsAre("0 -;-;", "10 5;-;", "20 5;0x001F;", "30 6;0x001F;", "40 -;0x001F;",
                            "70 -;0x001F;", "100 6;-;", "110 9;-;", "120 9;-;"));
}

TEST_F(RecordingExportTest, ASpanBeginsWithWhatStoodBefore)
{
    const TimeSpan span = {momentOf(25), momentOf(40)};
    EXPECT_THAT(walked({"A"}, span, 10), ElementsAre("30 6;"));
    EXPECT_THAT(walked({"A"}, span, 0), ElementsAre("30 A=6 good"));
    EXPECT_THAT(walked({"A"}, {momentOf(22), momentOf(30)}, 5), ElementsAre("25 5;"));
}

TEST_F(RecordingExportTest, AWalkEndsWhenNobodyWantsMore)
{
    QString problem;
    RecordingExport walk(*reader, {}, problem);
    int rows = 0;
    ExportSink sink;
    sink.row = [&](Micros, size_t, const ExportCell&) { ++rows; };
    sink.goesOn = [](TimeSpan, TimeSpan) { return false; };
    walk.walk(kAll, 0, sink);
    EXPECT_EQ(rows, 4) << "those of the first piece";
}

TEST_F(RecordingExportTest, AnUnknownAddressIsToldAndAKnownOneIsFoundOnce)
{
    QString problem;
    const RecordingExport walk(*reader, {"name of A", "C"}, problem);
    EXPECT_EQ(problem, "C: the recording has no such variable");
    EXPECT_EQ(walk.columns().size(), 1u);
}

} // namespace tavmir::recorder
