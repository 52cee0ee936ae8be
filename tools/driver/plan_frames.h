// Finds the requests that polling will send by letting the driver build them without a
// controller.
#ifndef TAVMIR_DRIVER_PLAN_FRAMES_H
#define TAVMIR_DRIVER_PLAN_FRAMES_H

#include "driver_loader.h"
#include "plan/frame_plan.h"

namespace tavmir::host
{

// api             of a driver that is set up and whose cycle does not run. Its caches hold
//                 zeros for the polled elements afterwards.
// elementsOnWire  entries of its polled list
// Frames until every element was in one; the last may go on with the list's head, and says so.
std::vector<PlannedFrame> planFrames(const DriverApi& api, size_t elementsOnWire);

} // namespace tavmir::host

#endif
