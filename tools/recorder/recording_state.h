// How a recording is.
#ifndef TAVMIR_RECORDER_RECORDING_STATE_H
#define TAVMIR_RECORDER_RECORDING_STATE_H

#include "recorded_value.h"

namespace tavmir::recorder
{

struct RecordingState {
    QString folder;
    QString problem;     // why nothing can be written; empty: it is
    Micros failedAt = 0; // since when, with a problem
    quint64 bytes = 0;   // all its files
    quint64 limit = 0;   // of them
    // The time that the folder covers, gaps included: from the least beginning of its files to the
    // greatest end, also when the clock was set between them.
    Micros from = 0;
    Micros until = 0;
    quint64 samples = 0;      // written by this program
    quint64 lostSamples = 0;  // that could not be written
    quint64 missedEvents = 0; // of the feed, which the recorder was too slow for

    bool isOn() const { return problem.isEmpty(); }
};

} // namespace tavmir::recorder

#endif
