// What is seen of a host, and what was done to it, one thing after the other. Times are
// microseconds since some start, and never go back.
#ifndef TAVMIR_JUDGE_EVENT_H
#define TAVMIR_JUDGE_EVENT_H

#include "script.h"

#include <string>
#include <vector>

namespace tavmir::judge
{

using Bytes = std::vector<unsigned char>;

// What a reply is that was sent to the host.
enum class Reply { right, exception, late, duplicate, foreign, tooShort, tooLong, cut };

struct Event {
    enum class Kind {
        begins,       // `situation`
        ends,         // the situation is over: whatever comes is answered rightly again
        recovered,    // the host goes on as before
        notRecovered, // it does not, within its bound
        over,         // nothing more is played
        connected,
        received, // `bytes` as they came
        request,  // `bytes` are one frame
        unframed, // `bytes` are no frame: the rest of the connection cannot be read
        halfSent, // `bytes` have begun a frame that does not end
        sent,     // `bytes`, which are a `reply`
        closedByHost,
        closedByController,
        tick
    };

    Kind kind = Kind::tick;
    Us at = 0;
    Us busySince = 0; // of what came: it may have come as early as this, and had to wait
    int client = 0;   // a connection's number
    Bytes bytes;
    Reply reply = Reply::right;
    Situation situation;
};

} // namespace tavmir::judge

#endif
