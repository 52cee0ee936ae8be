// The requests that polling will send, and the same in words.
#ifndef TAVMIR_PLAN_FRAME_PLAN_H
#define TAVMIR_PLAN_FRAME_PLAN_H

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

    // One more element would pass the driver's limit of a request of this class.
    bool isFull() const;
};

// A read request of the driver, taken apart; `end` is left to who sees what follows.
PlannedFrame plannedFrame(const Protocol& request);

// The plan as lines of text: each request, the variables that share it and why it ends.
QStringList describePlan(const std::vector<PlannedFrame>& frames,
                         const std::vector<PolledElement>& polled);

} // namespace tavmir::host

#endif
