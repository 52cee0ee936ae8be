// A moment of a recording in words and as JSON.
#ifndef TAVMIR_HOST_REPLAY_WORDS_H
#define TAVMIR_HOST_REPLAY_WORDS_H

#include "replay_reader.h"

#include <string>

namespace tavmir::host
{

// "since 2026-…Z", with " or before" where what was before is not recorded any more.
//   at  the moment that is shown; the clock may have been set back between the two
QString sinceWords(recorder::Micros since, recorder::Micros at, bool isOrBefore = false);

// How a value could be trusted then, with since when it could not.
ValueQuality qualityThen(const recorder::Standing& standing, bool isRecorded);

// How the line was.
struct LineThen {
    const char* state = "never"; // as of a running host
    QString words;               // "connected to 127.0.0.1:502 since 2026-…Z"
    std::optional<bool> isUp;    // none: nothing says it
    double since = 0;            // milliseconds since 1970; of a loss, whatever reasons came later
};
LineThen lineThen(const ReplayMoment& moment);

// [{"index","name",…}…], nothing of it writable.
std::string recordedVariablesJson(const std::vector<recorder::RecordedValueAt>& values);

// Why a value was as it was then.
//   address  as it is shown
std::string replayExplainJson(const QString& address, const ReplayMoment& moment);

} // namespace tavmir::host

#endif
