// The list cut into requests.
#include "expected_frames.h"

#include "wire/frame_layout.h"

namespace tavmir::host
{

namespace
{

unsigned char readFunctionOf(ElementClass elements)
{
    for (int code = 1; code < wire::kExceptionBit; ++code) {
        const auto* function = wire::findFunctionCode(static_cast<std::uint8_t>(code));
        if (function != nullptr && !function->write && function->elements == elements) {
            return function->code;
        }
    }
    return 0;
}

void setSizes(PlannedFrame& frame)
{
    const wire::FunctionCode* function = wire::findFunctionCode(frame.function);
    const size_t elements = frame.elements.size();
    frame.requestBytes =
        static_cast<int>(wire::kHeaderBytes + elements * function->requestEntryBytes());
    frame.replyBytes = static_cast<int>(wire::kHeaderBytes + elements * function->entryBytes());
}

// The request that begins at this place of the list.
PlannedFrame frameFrom(const std::vector<WireElement>& list, size_t begin)
{
    PlannedFrame frame;
    const ElementClass elements = list[begin].elements;
    frame.station = list[begin].station;
    frame.function = readFunctionOf(elements);
    for (size_t i = 0; i < list.size() && !frame.isFull(); ++i) {
        const WireElement& next = list[(begin + i) % list.size()];
        if (next.elements != elements) {
            break;
        }
        frame.elements.push_back(next);
    }
    setSizes(frame);
    return frame;
}

} // namespace

std::vector<PlannedFrame> expectedFrames(const std::vector<PolledElement>& polled)
{
    const std::vector<WireElement> list = wireOrder(polled);
    std::vector<PlannedFrame> frames;
    size_t covered = 0;
    while (covered < list.size()) {
        PlannedFrame frame = frameFrom(list, covered);
        covered += frame.elements.size();
        if (covered != list.size()) {
            frame.end = frame.isFull() ? BatchEnd::byteBudget : BatchEnd::typeChange;
        }
        frame.wrapped = covered > list.size() ? covered - list.size() : 0;
        frames.push_back(std::move(frame));
    }
    return frames;
}

} // namespace tavmir::host
