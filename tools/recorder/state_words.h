// What a recording says of itself in words.
#ifndef TAVMIR_RECORDER_STATE_WORDS_H
#define TAVMIR_RECORDER_STATE_WORDS_H

#include "recording_state.h"

namespace tavmir::recorder
{

// A reason without the durations in it, which change all the time: "not read for 3.2 s" is
// "not read for".
QString withoutDurations(const QString& reason);

// "12.3 MiB"
QString bytesText(quint64 bytes);

// "recording: 12.3 of 1024 MiB, 2 h 5 min"; "NOT RECORDING since 12:00:03 UTC: disk I/O error".
QString recordingWords(const RecordingState& state);

// "2026-03-01T12:00:00.123Z"
QString momentText(Micros at);

} // namespace tavmir::recorder

#endif
