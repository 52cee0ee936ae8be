// Trends out of a recording.
#include "host/recorded_past.h"

#include "recorder/made_recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using namespace recorder;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr qint64 kEpochMs = kEpoch / 1000;

// Two files, 0 to 10 s and 15 to 25 s; the second knows another variable, too.
class RecordedPastTest : public testing::Test
{
protected:
    RecordedPastTest()
    {
        Batch rows;
        rows.variables = numbered({madeRecorded("Main.A")});
        rows.polled = {{momentOf(0), 0, 1}};
        rows.samples = {sampleAt(1, 1000, 5), sampleAt(1, 2000, 9), sampleAt(1, 3000, 9),
                        sampleAt(1, 7000, 4)};
        rows.qualities = {qualityAt(1, 1000, Quality::good),
                          qualityAt(1, 4000, Quality::bad, "refused"),
                          qualityAt(1, 6000, Quality::good)};
        rows.events = {{momentOf(4000), 0, event_kind::kSetAside, "Main.A", "refused"},
                       {momentOf(5000), 0, event_kind::kWrite, "Main.B", "done"}};
        made.addFile(1, momentOf(0), momentOf(10000), Batch(), rows);
        Batch opening;
        opening.variables = numbered({madeRecorded("Main.B"), madeRecorded("Main.A")});
        opening.opening = {{1, RecordedValue::of(qint64(1)), momentOf(14000), {Quality::good, ""}},
                           {2, RecordedValue::of(qint64(4)), momentOf(14000), {Quality::good, ""}}};
        opening.events = {{momentOf(10000), momentOf(15000), event_kind::kGap, "", "nobody"}};
        Batch second;
        second.samples = {sampleAt(2, 16000, 8)};
        second.events = {{momentOf(18000), momentOf(20000), event_kind::kGap, "", "disk full"}};
        made.addFile(2, momentOf(15000), momentOf(25000), opening, second);
    }

    HistoryPiece ask(const char* address, qint64 from, qint64 to, size_t points = 100)
    {
        return RecordedPast(made.folder()).history(address, kEpochMs + from, kEpochMs + to, points);
    }

    static std::vector<qint64> times(const HistoryPiece& piece)
    {
        std::vector<qint64> all;
        for (const double at : piece.t) {
            all.push_back(static_cast<qint64>(at) - kEpochMs);
        }
        return all;
    }

    static std::vector<std::string> gaps(const HistoryPiece& piece)
    {
        std::vector<std::string> all;
        for (const HistoryGap& gap : piece.gaps) {
            all.push_back(std::to_string(gap.from - kEpochMs) + "-" +
                          std::to_string(gap.to - kEpochMs) + " " + gap.reason.toStdString());
        }
        return all;
    }

    MadeRecording made;
};

} // namespace

TEST_F(RecordedPastTest, EachChangeIsThereOnceAlsoAcrossFiles)
{
    const HistoryPiece piece = ask("Main.A", 0, 25000);
    EXPECT_THAT(times(piece), ElementsAre(1000, 2000, 7000, 16000));
    EXPECT_THAT(piece.last, ElementsAre(5, 9, 4, 8));
    EXPECT_EQ(piece.min, piece.last);
    EXPECT_EQ(kEpochMs, piece.oldest);
}

TEST_F(RecordedPastTest, WhatWasNotGoodOrNotRecordedIsAGap)
{
    EXPECT_THAT(gaps(ask("Main.A", 0, 30000)),
                ElementsAre("0-1000 never: no reply has brought it yet", "4000-6000 bad: refused",
                            "10000-15000 nothing was recorded at this time",
                            "18000-20000 nothing was recorded at this time",
                            "25000-30000 nothing was recorded at this time"));
}

TEST_F(RecordedPastTest, TheValueThatStoodThereComesFirst)
{
    const HistoryPiece piece = ask("Main.A", 2500, 6500);
    EXPECT_THAT(times(piece), ElementsAre(2000));
    EXPECT_THAT(piece.last, ElementsAre(9));
    EXPECT_THAT(times(ask("Main.A", 15500, 15900)), ElementsAre(14000));
}

TEST_F(RecordedPastTest, AVariableThatWasNotPolledThenHasAGap)
{
    const HistoryPiece piece = ask("Main.B", 5000, 17000);
    EXPECT_THAT(gaps(piece), ElementsAre("5000-10000 not polled at this time",
                                         "10000-15000 nothing was recorded at this time"));
    EXPECT_THAT(times(piece), ElementsAre(14000));
}

TEST_F(RecordedPastTest, ManySamplesAreThinnedToSpansWithLeastAndMost)
{
    const HistoryPiece piece = ask("Main.A", 0, 10000, 2);
    EXPECT_LE(piece.t.size(), 3U);
    EXPECT_EQ(4, *std::min_element(piece.min.begin(), piece.min.end()));
    EXPECT_EQ(9, *std::max_element(piece.max.begin(), piece.max.end()));
    EXPECT_EQ(4, piece.last.back());
    EXPECT_TRUE(std::is_sorted(piece.t.begin(), piece.t.end()));
}

TEST_F(RecordedPastTest, EventsOfTheVariableAndOfAllStandBesideIt)
{
    const HistoryPiece piece = ask("Main.A", 0, 25000);
    std::vector<std::string> texts;
    for (const PageEvent& event : piece.events) {
        texts.push_back(event.text.toStdString());
    }
    EXPECT_THAT(texts, ElementsAre("refused Main.A: refused",
                                   "not recorded until 2026-01-01T00:00:15.000Z: nobody",
                                   "not recorded until 2026-01-01T00:00:20.000Z: disk full"));
}

TEST_F(RecordedPastTest, WithoutARecordingEverythingIsAGap)
{
    RecordedPast past(made.folder() + "/none");
    const HistoryPiece piece = past.history("Main.A", kEpochMs, kEpochMs + 1000, 100);
    EXPECT_THAT(piece.t, IsEmpty());
    EXPECT_THAT(gaps(piece), ElementsAre("0-1000 nothing was recorded at this time"));
    EXPECT_FALSE(piece.oldest);
}

} // namespace tavmir::host
