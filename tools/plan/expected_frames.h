// The requests of a pass, foretold from the polled list alone: without the driver, while it polls.
#ifndef TAVMIR_PLAN_EXPECTED_FRAMES_H
#define TAVMIR_PLAN_EXPECTED_FRAMES_H

#include "frame_plan.h"

namespace tavmir::host
{

// As the driver builds them in its first pass: from the list's head on, elements of one class in a
// row until a request is full; the last one may go on with the list's head, and says so. Later
// passes begin behind it.
std::vector<PlannedFrame> expectedFrames(const std::vector<PolledElement>& polled);

} // namespace tavmir::host

#endif
