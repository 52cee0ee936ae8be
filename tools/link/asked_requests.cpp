// A ring, searched from its oldest slot.
#include "asked_requests.h"

#include "wire/frame_layout.h"

#include <algorithm>

namespace tavmir::host
{

void AskedRequests::begin(const FrameView& request, Clock::time_point sentAt)
{
    Asked& asked = asked_[count_ % kKept];
    asked.sentAt = sentAt;
    asked.transactionId = request.transactionId;
    asked.station = request.station;
    asked.function = request.function;
    asked.state = State::inFlight;
    ++count_;
}

void AskedRequests::end(bool answered)
{
    if (count_ > 0) {
        asked_[(count_ - 1) % kKept].state = answered ? State::answered : State::unanswered;
    }
}

void AskedRequests::clear()
{
    count_ = 0;
}

bool AskedRequests::answers(const FrameView& frame, const Asked& asked)
{
    return frame.transactionId == asked.transactionId && frame.station == asked.station &&
           (frame.function & ~wire::kExceptionBit) == asked.function;
}

AskedRequests::Verdict AskedRequests::judge(const FrameView& frame)
{
    const size_t kept = std::min(count_, kKept);
    const Asked* last = nullptr;
    for (size_t i = count_ - kept; i < count_; ++i) {
        Asked& asked = asked_[i % kKept];
        if (!answers(frame, asked)) {
            continue;
        }
        if (asked.state == State::unanswered) {
            asked.state = State::answered;
            return {Stray::late, asked.sentAt};
        }
        last = &asked;
    }
    // What bears the number of the request in flight and was no answer to it is nobody's.
    if (last == nullptr || last->state == State::inFlight) {
        return {Stray::foreign, Clock::time_point()};
    }
    return {Stray::duplicate, last->sentAt};
}

} // namespace tavmir::host
