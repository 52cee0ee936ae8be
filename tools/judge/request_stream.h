// Cuts what one connection brings into requests, and says what is none.
#ifndef TAVMIR_JUDGE_REQUEST_STREAM_H
#define TAVMIR_JUDGE_REQUEST_STREAM_H

#include "event.h"

#include <vector>

namespace tavmir::judge
{

constexpr std::size_t kMostFrameBytes = 260; // of a request, and of its reply
constexpr Us kWholeWithin = milliseconds(1000);

class RequestStream
{
public:
    // Events of what is whole now: requests, or the end of all sense.
    std::vector<Event> take(const Event& received);
    // The beginning of a frame that has been waiting for its rest for too long; once each.
    std::vector<Event> tick(Us now, int client);
    // The connection is closed: what has begun ends nowhere.
    std::vector<Event> close(Us now, int client);

private:
    Event halfSent(Us now, int client);

    Bytes waiting_;
    Us since_ = 0; // the first of them
    bool told_ = false;
    bool broken_ = false;
};

} // namespace tavmir::judge

#endif
