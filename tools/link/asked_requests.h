// The latest requests on a connection, so that a frame that comes unasked can be told what it is:
// late, a duplicate, or nobody's. One slot for each attempt: two attempts with one frame may both
// be answered in the end.
#ifndef TAVMIR_LINK_ASKED_REQUESTS_H
#define TAVMIR_LINK_ASKED_REQUESTS_H

#include "feed/feed_entry.h"
#include "wire/frame_decoder.h"

#include <array>

namespace tavmir::host
{

using wire::FrameView;

class AskedRequests
{
public:
    // Attempts: what answers an older one counts as foreign. Between a request that was given up
    // and its late reply, seconds of polling may lie.
    static constexpr size_t kKept = 1024;

    void begin(const FrameView& request, Clock::time_point sentAt);
    // The request that was begun last.
    void end(bool answered);
    void clear();

    struct Verdict {
        Stray stray;               // late, duplicate or foreign
        Clock::time_point askedAt; // of the first two
    };
    // Of a frame that is no answer to the request in flight. A second frame that answers the same
    // late request is a duplicate.
    Verdict judge(const FrameView& frame);

private:
    enum class State : quint8 { inFlight, unanswered, answered };

    struct Asked {
        Clock::time_point sentAt;
        quint16 transactionId = 0;
        quint8 station = 0;
        quint8 function = 0;
        State state = State::inFlight;
    };

    static bool answers(const FrameView& frame, const Asked& asked);

    std::array<Asked, kKept> asked_;
    size_t count_ = 0; // ever begun on this connection
};

} // namespace tavmir::host

#endif
