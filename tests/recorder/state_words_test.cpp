// What a recording says of itself.
#include "recorder/state_words.h"

#include "made_recording.h"

#include <gtest/gtest.h>

namespace tavmir::recorder
{

TEST(StateWords, DurationsAreTakenOutOfReasons)
{
    EXPECT_EQ(withoutDurations("not read for 3.2 s"), "not read for");
    EXPECT_EQ(withoutDurations("no reply from 10.0.0.2:502 for 12 min: it did not answer within "
                               "500 ms"),
              withoutDurations("no reply from 10.0.0.2:502 for 3.2 s: it did not answer within "
                               "500 ms"));
    EXPECT_EQ(withoutDurations("refused, code 2 (illegal data address)"),
              "refused, code 2 (illegal data address)");
}

TEST(StateWords, ARunningRecordingTellsSizeAndTime)
{
    RecordingState state;
    state.bytes = 3 * kMiB / 2;
    state.limit = 1024 * kMiB;
    state.from = momentOf(0);
    state.until = momentOf(0) + 125 * kMinute;
    EXPECT_EQ(recordingWords(state), "recording: 1.5 of 1024 MiB, covers 2 h 5 min");
    state.lostSamples = 3;
    state.missedEvents = 4;
    EXPECT_EQ(recordingWords(state),
              "recording: 1.5 of 1024 MiB, covers 2 h 5 min, 3 samples lost, "
              "4 events missed");
}

TEST(StateWords, AFailingOneTellsWhyAndSinceWhen)
{
    RecordingState state;
    state.problem = "database or disk is full";
    state.failedAt = momentOf(3000);
    EXPECT_EQ(recordingWords(state), "NOT RECORDING since 00:00:03 UTC: database or disk is full");
}

} // namespace tavmir::recorder
