// The requests that polling will send, and the same in words.
#ifndef TAVMIR_PLAN_FRAME_PLAN_H
#define TAVMIR_PLAN_FRAME_PLAN_H

#include "polled_plan.h"

#include <map>

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
    size_t wrapped = 0; // of them, the last ones: from the list's head again
    BatchEnd end = BatchEnd::endOfList;

    // One more element would pass the driver's limit of a request of this class.
    bool isFull() const;
};

// A read request of the driver, taken apart; `end` is left to who sees what follows.
PlannedFrame plannedFrame(const Protocol& request);

// The plan of a pass as lines of text: each request, the variables that share it and why it ends;
// what texts are polled as; where requests end early because types alternate.
QStringList describePlan(const std::vector<PlannedFrame>& frames,
                         const std::vector<PolledElement>& polled);

// The parts of such a plan.
class FrameWords
{
public:
    // polled  outlives it
    explicit FrameWords(const std::vector<PolledElement>& polled);

    // Elements on the wire of all variables.
    size_t elements() const { return users_.size(); }
    // The variables in a request in the order in which it meets them, by their place in the list,
    // and how many of their elements it holds.
    std::vector<std::pair<size_t, int>> variablesOf(const PlannedFrame& frame) const;
    // "Main.Setpoint", of a text "Main.Title (3 of 8 words)".
    QString nameOf(const std::pair<size_t, int>& user) const;

private:
    const std::vector<PolledElement>& polled_;
    std::map<WireElement, std::vector<size_t>> users_;
};

// "ends because the next element has another data type"
QString endInWords(const PlannedFrame& frame);

// Where requests end early because types alternate, a line each.
QStringList planHints(const std::vector<PlannedFrame>& frames);

// How many requests a pass takes. One that goes on with the list's head leaves less for the next
// pass, which then begins further on: 1.3 say that ten passes take 13 requests.
double requestsPerPass(const std::vector<PlannedFrame>& frames);

} // namespace tavmir::host

#endif
