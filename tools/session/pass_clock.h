// When the next pass over the polled list is due: a fixed time after the last one began, or at once
// when that took longer. A pass is over when as many elements have been asked for as the list has,
// whether they were answered or not; a request that goes on with the list's head counts for the
// next one. One thread.
#ifndef TAVMIR_SESSION_PASS_CLOCK_H
#define TAVMIR_SESSION_PASS_CLOCK_H

#include "wire/deadline.h"

#include <cstddef>
#include <cstdint>

namespace tavmir::host
{

using wire::Clock;
using wire::Deadline;

class PassClock
{
public:
    // passMs  from the beginning of one pass to the beginning of the next; 0: at once
    explicit PassClock(int passMs) : pass_(std::chrono::milliseconds(passMs)) {}

    // Another list, whose first pass is due at once; with no elements none ever is.
    void restart(size_t elements, Clock::time_point now);

    // A request of a pass that is due goes out. A pass that begins late, by more than one, sets the
    // beat anew: what was missed is not made up for.
    void begins(Clock::time_point now);

    // A request of `count` elements is over.
    void asked(size_t count, Clock::time_point now);

    bool isPolling() const { return elements_ > 0; }
    // True from the moment when a pass should begin until it is over.
    bool isDue(Clock::time_point now) const { return isPolling() && now >= begin_; }
    // True while no request of the next pass has gone out.
    bool isBetween() const { return !hasBegun_; }
    // When the next pass begins; meaningless without elements.
    Clock::time_point begin() const { return begin_; }
    uint64_t passes() const { return passes_; }
    // Of all passes.
    uint64_t elementsAsked() const { return total_; }

private:
    Clock::duration pass_;
    Clock::time_point begin_;
    bool hasBegun_ = false;
    size_t elements_ = 0;
    size_t asked_ = 0; // of the present pass
    uint64_t passes_ = 0;
    uint64_t total_ = 0;
};

} // namespace tavmir::host

#endif
