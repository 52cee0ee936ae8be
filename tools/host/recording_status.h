// How a run's recording is, for the strip of the page.
#ifndef TAVMIR_HOST_RECORDING_STATUS_H
#define TAVMIR_HOST_RECORDING_STATUS_H

#include "recorder/recording_state.h"

#include <optional>
#include <string>

namespace tavmir::host
{

// {"state","text","bytes","limit","from","to"}; "null": nothing is recorded.
std::string recordingStatus(const std::optional<recorder::RecordingState>& state);

} // namespace tavmir::host

#endif
