// Where a moving signal stands at a time that is given from outside.
//
//   constant    low
//   ramp        from low up to high (not reached) in each period, then from low again
//   sine        around the middle of low and high, one wave each period
//   square      low for the first half of each period, high for the second
//   counter     low, then `step` more after each period, low again instead of passing high
//   randomWalk  from the middle, after each period at most `step` up or down, within low and high
#ifndef TAVMIR_CONTROLLER_SIGNAL_GENERATOR_H
#define TAVMIR_CONTROLLER_SIGNAL_GENERATOR_H

#include "seeded_random.h"

#include "project/project_model.h"

#include <cstdint>

namespace tavmir::controller
{

class SignalGenerator
{
public:
    explicit SignalGenerator(const project::Signal& signal);

    // `ms`: milliseconds since the start, 0 or more. A walk goes forwards only: an earlier time
    // than before gives the same value as before. The result lies within low and high.
    double at(std::int64_t ms);

private:
    double ramp(std::int64_t ms) const;
    double sine(std::int64_t ms) const;
    double counter(std::int64_t steps) const;
    double walk(std::int64_t steps);

    project::SignalKind kind_;
    double low_;
    double high_;
    std::int64_t periodMs_;
    double step_;
    SeededRandom random_;
    double walked_;
    std::int64_t stepsWalked_ = 0;
};

} // namespace tavmir::controller

#endif
