// Counting elements.
#include "pass_clock.h"

#include <algorithm>

namespace tavmir::host
{

void PassClock::restart(size_t elements, Clock::time_point now)
{
    elements_ = elements;
    asked_ = 0;
    begin_ = now;
    hasBegun_ = false;
}

void PassClock::begins(Clock::time_point now)
{
    if (!hasBegun_ && now > begin_ + pass_) {
        begin_ = now;
    }
    hasBegun_ = true;
}

void PassClock::asked(size_t count, Clock::time_point now)
{
    if (elements_ == 0) {
        return;
    }
    total_ += count;
    asked_ += count;
    if (asked_ < elements_) {
        return;
    }
    passes_ += asked_ / elements_;
    asked_ %= elements_;
    begin_ = std::max(begin_ + pass_, now);
    hasBegun_ = false;
}

} // namespace tavmir::host
