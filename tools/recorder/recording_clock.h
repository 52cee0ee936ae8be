// The time that a file of the recording counts by: the wall clock as it stood when the file began,
// going on with the steady clock, so that nothing in a file lies before what was written before it.
#ifndef TAVMIR_RECORDER_RECORDING_CLOCK_H
#define TAVMIR_RECORDER_RECORDING_CLOCK_H

#include "feed/feed_entry.h"
#include "recorded_value.h"

#include <chrono>
#include <functional>

namespace tavmir::recorder
{

// How the time is told; a test has a clock of its own.
using WallNow = std::function<host::WallClock::time_point()>;

class RecordingClock
{
public:
    RecordingClock(host::Clock::time_point steady, host::WallClock::time_point wall)
        : steady_(steady), wall_(microsOf(wall.time_since_epoch()))
    {
    }

    Micros began() const { return wall_; }
    Micros at(host::Clock::time_point moment) const { return wall_ + microsOf(moment - steady_); }

    // By how much the wall clock has been set ahead (or, negative, back) since, as far as it is
    // now.
    Micros drift(host::Clock::time_point steady, host::WallClock::time_point wall) const
    {
        return microsOf(wall.time_since_epoch()) - at(steady);
    }

private:
    template <typename Duration> static Micros microsOf(Duration duration)
    {
        return std::chrono::duration_cast<std::chrono::microseconds>(duration).count();
    }

    host::Clock::time_point steady_;
    Micros wall_;
};

} // namespace tavmir::recorder

#endif
