// One pass of polling, answered with zeros.
#include "plan_frames.h"

namespace tavmir::host
{

std::vector<PlannedFrame> planFrames(const DriverApi& api, size_t elementsOnWire)
{
    std::vector<PlannedFrame> frames;
    size_t covered = 0;
    while (covered < elementsOnWire) {
        const Protocol* request = api.nextRequest();
        if (request == nullptr) {
            break;
        }
        PlannedFrame frame = plannedFrame(*request);
        QByteArray zeros(request->replyLength, '\0');
        api.takeReply(&zeros, zeros.size());
        const size_t count = frame.elements.size();
        if (frame.isFull()) {
            frame.end = BatchEnd::byteBudget;
        } else {
            frame.end = count == elementsOnWire ? BatchEnd::endOfList : BatchEnd::typeChange;
        }
        covered += count;
        frames.push_back(std::move(frame));
    }
    return frames;
}

} // namespace tavmir::host
