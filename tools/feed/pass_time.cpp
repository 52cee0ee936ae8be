// Counting elements.
#include "pass_time.h"

namespace tavmir::host
{

void PassTime::restart(size_t elements, Clock::time_point now)
{
    elements_ = elements;
    resume(now);
}

void PassTime::resume(Clock::time_point now)
{
    asked_ = 0;
    begin_ = now;
    latest_ = now;
}

void PassTime::endPass(Clock::time_point now)
{
    last_ = now - begin_;
    // A request that went on with the list's head counts for the next pass.
    asked_ -= elements_;
    begin_ = now;
}

Clock::duration PassTime::length() const
{
    if (last_ > Clock::duration::zero() || asked_ == 0 || elements_ == 0) {
        return last_;
    }
    const double share = static_cast<double>(asked_) / static_cast<double>(elements_);
    const auto soFar = static_cast<double>((latest_ - begin_).count());
    return Clock::duration(static_cast<Clock::rep>(soFar / share));
}

} // namespace tavmir::host
