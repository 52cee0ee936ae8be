// The requests that polling will send, found by letting the driver build them without a
// controller.
#ifndef TAVMIR_HOST_FRAME_PLAN_H
#define TAVMIR_HOST_FRAME_PLAN_H

#include "driver_loader.h"
#include "polled_plan.h"

namespace tavmir::host
{

enum class BatchEnd {
    byteBudget, // one more element would pass the driver's limit of a request
    typeChange, // the next element has another data type
    endOfList   // all polled elements are in it
};

struct PlannedFrame {
    int station = 0;
    unsigned char function = 0;
    int requestBytes = 0;
    int replyBytes = 0;
    std::vector<WireElement> elements;
    BatchEnd end = BatchEnd::endOfList;
};

// api             of a driver that is set up and whose cycle does not run. Its caches hold
//                 zeros for the polled elements afterwards.
// elementsOnWire  entries of its polled list
// Frames until every element was in one; the last may go on with the list's head.
std::vector<PlannedFrame> planFrames(const DriverApi& api, size_t elementsOnWire);

// The plan as lines of text: each request, the variables that share it and why it ends.
QStringList describePlan(const std::vector<PlannedFrame>& frames,
                         const std::vector<PolledElement>& polled);

} // namespace tavmir::host

#endif
