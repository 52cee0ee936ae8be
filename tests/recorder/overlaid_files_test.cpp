// Reading a recording in which the clock was set back: later files lie before earlier ones, or over
// them.
#include "made_recording.h"
#include "recorder/recording_export.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavmir::recorder
{

namespace
{

using host::Quality;
using testing::ElementsAre;

// In seconds: the first file from 3000 to 3600, the second, recorded later, from 0 to 600, the
// third from 300 to 3300, with a gap from 3100 to 3200.
class OverlaidFilesTest : public testing::Test
{
protected:
    OverlaidFilesTest()
    {
        add(1, 3000, 3600, {{3010, 1}, {3150, 2}, {3400, 3}}, {});
        add(2, 0, 600, {{10, 4}, {400, 5}}, {});
        const EventRow gap = {at(3100), at(3200), event_kind::kGap, "", "disk full"};
        add(3, 300, 3300, {{410, 6}, {3050, 7}, {3250, 8}}, {gap});
        QString problem;
        reader = RecordingReader::open(made.folder(), problem);
    }

    static Micros at(qint64 seconds) { return momentOf(seconds * 1000); }

    void add(quint64 number, qint64 from, qint64 until,
             const std::vector<std::pair<qint64, qint64>>& samples,
             const std::vector<EventRow>& events)
    {
        Batch opening;
        opening.variables = numbered({madeRecorded("A")});
        opening.polled = {{at(from), 0, 1}};
        opening.events = {{at(from), 0, event_kind::kClock, "", QString::number(number)}};
        Batch rows;
        rows.qualities = {qualityAt(1, from * 1000, Quality::good)};
        for (const auto& [second, value] : samples) {
            rows.samples.push_back(sampleAt(1, second * 1000, value));
        }
        rows.events = events;
        made.addFile(number, at(from), at(until), opening, rows);
    }

    quint64 fileAt(qint64 second) { return reader->partAt(at(second))->number(); }

    MadeRecording made;
    std::unique_ptr<RecordingReader> reader;
};

} // namespace

TEST_F(OverlaidFilesTest, CoverageIsFromTheLeastBeginningToTheGreatestEnd)
{
    EXPECT_EQ(reader->begin(), at(0));
    EXPECT_EQ(reader->coverage().from, at(0));
    EXPECT_EQ(reader->coverage().until, at(3600));
    ASSERT_EQ(reader->stretches().size(), 1U) << "what one leaves out the other has";
}

TEST_F(OverlaidFilesTest, OfSeveralFilesTheOneRecordedLastSaysWhatWas)
{
    EXPECT_EQ(fileAt(100), 2U);
    EXPECT_EQ(fileAt(500), 3U);
    EXPECT_EQ(fileAt(3050), 3U);
    EXPECT_EQ(fileAt(3150), 1U) << "where the last has a gap";
    EXPECT_EQ(fileAt(3250), 3U);
    EXPECT_EQ(fileAt(3400), 1U);
    EXPECT_EQ(fileAt(9000), 1U) << "which goes on the longest";
    EXPECT_EQ(reader->valuesAt(at(3450)).front().standing.value.integer, 3);
    EXPECT_EQ(reader->valuesAt(at(3450)).front().standing.quality.quality, Quality::good);
    EXPECT_EQ(reader->newestPart()->number(), 3U);
}

TEST_F(OverlaidFilesTest, PiecesComeInTheOrderOfTimeAndEachMomentOnce)
{
    std::vector<std::string> pieces;
    reader->piecesWithin({at(-100), at(3500)}, [&](RecordingPart& part, TimeSpan piece) {
        pieces.push_back(std::to_string(part.number()) + ": " +
                         std::to_string((piece.from - kEpoch) / kSecond) + "-" +
                         std::to_string((piece.until - kEpoch) / kSecond));
    });
    EXPECT_THAT(pieces, ElementsAre("2: 0-300", "3: 300-3100", "1: 3100-3200", "3: 3200-3300",
                                    "1: 3300-3500"));
}

TEST_F(OverlaidFilesTest, AFileIsLookedAtWhereverItKnowsSomething)
{
    std::vector<quint64> numbers;
    reader->partsWithin({at(3400), at(3500)}, [&](RecordingPart& part) {
        numbers.push_back(part.number());
        return true;
    });
    EXPECT_THAT(numbers, ElementsAre(1U)) << "though later files begin before";
}

TEST_F(OverlaidFilesTest, TheLastEventsAreThoseOfAllFilesByTime)
{
    const auto texts = [this](size_t limit) {
        std::vector<std::string> all;
        for (const EventRow& event : reader->lastEvents(at(9000), limit)) {
            all.push_back(event.text.toStdString());
        }
        return all;
    };
    EXPECT_THAT(texts(100), ElementsAre("2", "3", "1", "disk full"));
    EXPECT_THAT(texts(2), ElementsAre("1", "disk full"));
}

TEST_F(OverlaidFilesTest, AnExportHasAllRowsInTheOrderTheyWereRecordedIn)
{
    QString problem;
    RecordingExport walk(*reader, {}, problem);
    std::vector<qint64> values;
    ExportSink sink;
    sink.row = [&](Micros, size_t, const ExportCell& cell) {
        if (!cell.value.isNone()) {
            values.push_back(cell.value.integer);
        }
    };
    sink.goesOn = [](TimeSpan, TimeSpan) { return true; };
    walk.walk({0, 2 * kEpoch}, 0, sink);
    EXPECT_THAT(values, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

} // namespace tavmir::recorder
