#include "signal_generator.h"

#include <algorithm>
#include <cmath>

namespace tavmir::controller
{

namespace
{

constexpr double kFullCircle = 6.283185307179586;

// After a long pause (a suspended machine) a walk skips ahead instead of catching up for long.
constexpr std::int64_t kMostStepsAtOnce = 10000;

} // namespace

SignalGenerator::SignalGenerator(const project::Signal& signal)
    : kind_(signal.kind), low_(std::min(signal.low, signal.high)),
      high_(std::max(signal.low, signal.high)), periodMs_(std::max(signal.periodMs, 1)),
      step_(signal.step), random_(signal.seed), walked_(low_ + (high_ - low_) / 2)
{
}

double SignalGenerator::at(std::int64_t ms)
{
    const std::int64_t now = std::max<std::int64_t>(ms, 0);
    double value = low_;
    switch (kind_) {
    case project::SignalKind::constant:
        value = low_;
        break;
    case project::SignalKind::ramp:
        value = ramp(now);
        break;
    case project::SignalKind::sine:
        value = sine(now);
        break;
    case project::SignalKind::square:
        value = now % periodMs_ * 2 < periodMs_ ? low_ : high_;
        break;
    case project::SignalKind::counter:
        value = counter(now / periodMs_);
        break;
    case project::SignalKind::randomWalk:
        value = walk(now / periodMs_);
        break;
    }
    return std::clamp(value, low_, high_);
}

double SignalGenerator::ramp(std::int64_t ms) const
{
    const double part = static_cast<double>(ms % periodMs_) / static_cast<double>(periodMs_);
    return low_ + (high_ - low_) * part;
}

double SignalGenerator::sine(std::int64_t ms) const
{
    const double part = static_cast<double>(ms % periodMs_) / static_cast<double>(periodMs_);
    return low_ + (high_ - low_) * (1 + std::sin(kFullCircle * part)) / 2;
}

double SignalGenerator::counter(std::int64_t steps) const
{
    if (!(step_ > 0)) {
        return low_;
    }
    const double values = std::floor((high_ - low_) / step_) + 1;
    return low_ + step_ * std::fmod(static_cast<double>(steps), values);
}

double SignalGenerator::walk(std::int64_t steps)
{
    stepsWalked_ = std::max(stepsWalked_, steps - kMostStepsAtOnce);
    for (; stepsWalked_ < steps; ++stepsWalked_) {
        const double change = (2 * random_.fraction() - 1) * step_;
        walked_ = std::clamp(walked_ + change, low_, high_);
    }
    return walked_;
}

} // namespace tavmir::controller
