// Moments as the page gets them: milliseconds since 1970 by the wall clock.
#ifndef TAVMIR_PAGE_MOMENTS_H
#define TAVMIR_PAGE_MOMENTS_H

#include "feed/exchange.h"

#include <cmath>
#include <ctime>
#include <functional>

namespace tavmir::host
{

// How times are told; a test has clocks of its own.
struct Clocks {
    std::function<Clock::time_point()> steady = [] { return Clock::now(); };
    std::function<WallClock::time_point()> wall = [] { return WallClock::now(); };
    // What the calling thread has had of a processor.
    std::function<std::chrono::nanoseconds()> processor = [] {
        timespec time = {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
};

// With a thousandth of a millisecond.
inline double msOf(WallClock::time_point moment)
{
    const auto us =
        std::chrono::duration_cast<std::chrono::microseconds>(moment.time_since_epoch());
    return static_cast<double>(us.count()) / 1000;
}

inline qint64 wholeMsOf(WallClock::time_point moment)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(moment.time_since_epoch()).count();
}

// Moments of the steady clock by the wall clock, as the two stood when they were looked at last.
class SteadyMoments
{
public:
    // A step of the wall clock is followed; less than that is the clocks' own uncertainty, and a
    // moment stays where it was.
    void look(const Clocks& clocks)
    {
        const auto offset = clocks.wall().time_since_epoch() - clocks.steady().time_since_epoch();
        if (std::chrono::abs(offset - offset_) > kStep) {
            offset_ = offset;
        }
    }
    WallClock::time_point wallAt(Clock::time_point moment) const
    {
        return WallClock::time_point(
            std::chrono::duration_cast<WallClock::duration>(moment.time_since_epoch() + offset_));
    }

private:
    static constexpr std::chrono::milliseconds kStep{5};

    std::chrono::nanoseconds offset_{0};
};

// Notices that the wall clock was set back, out of moments that were taken by both clocks at once.
class SetBacks
{
public:
    SetBacks(Clock::time_point steady, WallClock::time_point wall)
        : newest_(steady), offset_(between(steady, wall))
    {
    }

    // By how much it was since the call before; zero: it was not. Less than kLeast is a clock that
    // is kept right, and counts as none. What was taken before the newest says nothing new: what a
    // frame began with is told when its rest has come.
    std::chrono::nanoseconds at(Clock::time_point steady, WallClock::time_point wall)
    {
        if (steady < newest_) {
            return std::chrono::nanoseconds::zero();
        }
        newest_ = steady;
        const std::chrono::nanoseconds before = offset_;
        offset_ = between(steady, wall);
        return before - offset_ > kLeast ? before - offset_ : std::chrono::nanoseconds::zero();
    }

private:
    static constexpr std::chrono::milliseconds kLeast{200};

    static std::chrono::nanoseconds between(Clock::time_point steady, WallClock::time_point wall)
    {
        return wall.time_since_epoch() - steady.time_since_epoch();
    }

    Clock::time_point newest_;
    std::chrono::nanoseconds offset_;
};

} // namespace tavmir::host

#endif
