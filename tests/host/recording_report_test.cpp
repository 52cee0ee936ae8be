// What a run says of its recording.
#include "host/recording_report.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonObject>

namespace tavmir::host
{

namespace
{

recorder::RecordingState madeState()
{
    recorder::RecordingState state;
    state.folder = "line1";
    state.bytes = 3 << 20;
    state.limit = 8 << 20;
    state.from = 1767225600 * recorder::kSecond;
    state.until = state.from + 5 * recorder::kMinute;
    state.samples = 7;
    return state;
}

} // namespace

TEST(RecordingReport, ARunWithoutRecordingSaysNothing)
{
    EXPECT_TRUE(recordingInStrip(std::nullopt).words.isEmpty());
    EXPECT_TRUE(recordingLines(std::nullopt).isEmpty());
    EXPECT_TRUE(recordingJson(std::nullopt).isNull());
}

TEST(RecordingReport, SizeAndTimeStandInStripAndStatistics)
{
    const RecordingStrip strip = recordingInStrip(madeState());
    EXPECT_EQ(strip.words, "recording: 3.0 of 8 MiB, covers 5 min");
    EXPECT_FALSE(strip.isFailing);
    EXPECT_EQ(recordingLines(madeState()),
              QStringList("  recording: 3.0 of 8 MiB, covers 5 min; 7 samples written into line1, "
                          "from 2026-01-01T00:00:00.000Z to 2026-01-01T00:05:00.000Z"));
    const QJsonObject json = recordingJson(madeState()).toObject();
    EXPECT_EQ(json.value("bytes").toInt(), 3 << 20);
    EXPECT_EQ(json.value("until").toString(), "2026-01-01T00:05:00.000Z");
    EXPECT_TRUE(json.value("problem").isNull());
}

TEST(RecordingReport, AFailingOneIsMarked)
{
    recorder::RecordingState state = madeState();
    state.problem = "disk I/O error";
    EXPECT_TRUE(recordingInStrip(state).isFailing);
    EXPECT_TRUE(recordingInStrip(state).words.startsWith("NOT RECORDING since "));
    EXPECT_EQ(recordingJson(state).toObject().value("problem").toString(), "disk I/O error");
}

} // namespace tavmir::host
