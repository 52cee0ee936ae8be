// How a run's recording is: for the strip of the table, and in the closing statistics.
#ifndef TAVMIR_HOST_RECORDING_REPORT_H
#define TAVMIR_HOST_RECORDING_REPORT_H

#include "recorder/recording_state.h"
#include "run_view.h"

#include <QtCore/QJsonValue>
#include <QtCore/QStringList>

#include <optional>

namespace tavmir::host
{

// Each: none is a run that records nothing.
RecordingStrip recordingInStrip(const std::optional<recorder::RecordingState>& state);
QStringList recordingLines(const std::optional<recorder::RecordingState>& state);
QJsonValue recordingJson(const std::optional<recorder::RecordingState>& state);

} // namespace tavmir::host

#endif
