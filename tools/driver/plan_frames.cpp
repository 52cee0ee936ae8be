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
        covered += frame.elements.size();
        if (covered == elementsOnWire) {
            frame.end = BatchEnd::endOfList;
        } else {
            frame.end = frame.isFull() ? BatchEnd::byteBudget : BatchEnd::typeChange;
        }
        frame.wrapped = covered > elementsOnWire ? covered - elementsOnWire : 0;
        frames.push_back(std::move(frame));
    }
    return frames;
}

} // namespace tavmir::host
