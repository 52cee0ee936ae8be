// The pauses between attempts to connect: each about twice the one before, up to a bound, and
// jittered so that many panels do not come back to one controller at the same moment.
#ifndef TAVMIR_LINK_RECONNECT_PAUSE_H
#define TAVMIR_LINK_RECONNECT_PAUSE_H

#include <random>

namespace tavmir::host
{

class ReconnectPause
{
public:
    // minMs  1 or more; maxMs  minMs or more
    ReconnectPause(int minMs, int maxMs, unsigned seed);

    // The next pause in ms: three to five quarters of a base that doubles from call to call;
    // at least 1, at most maxMs.
    int next();

    // The connection has proved itself: the next pause is short again.
    void reset() { base_ = min_; }

private:
    int min_;
    int max_;
    int base_;
    std::minstd_rand random_;
};

} // namespace tavmir::host

#endif
