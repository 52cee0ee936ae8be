// How long a pass over the polled list takes, measured by the requests that went by: a pass is over
// when as many elements were asked for as the list has, answered or not. One thread.
#ifndef TAVMIR_FEED_PASS_TIME_H
#define TAVMIR_FEED_PASS_TIME_H

#include "wire/deadline.h"

#include <cstddef>

namespace tavmir::host
{

using wire::Clock;

class PassTime
{
public:
    // Another list of so many elements; what is known of the passes before stands until the first
    // pass over this one is over.
    void restart(size_t elements, Clock::time_point now);

    // The pass under way begins anew: nothing was asked for since the connection went.
    void resume(Clock::time_point now);

    // A request of `count` elements is over.
    void asked(size_t count, Clock::time_point now)
    {
        asked_ += count;
        latest_ = now;
        if (asked_ >= elements_ && elements_ > 0) {
            endPass(now);
        }
    }

    // Of the last pass; of a first one that is under way, as it would be at the rate so far.
    Clock::duration length() const;

private:
    void endPass(Clock::time_point now);

    size_t elements_ = 0;
    size_t asked_ = 0; // of the pass under way
    Clock::time_point begin_;
    Clock::time_point latest_;
    Clock::duration last_ = Clock::duration::zero(); // zero: no pass is over yet
};

} // namespace tavmir::host

#endif
