// A point in time until which something may take.
#ifndef TAVMIR_WIRE_DEADLINE_H
#define TAVMIR_WIRE_DEADLINE_H

#include <algorithm>
#include <chrono>

namespace tavmir::host
{

using Clock = std::chrono::steady_clock;

class Deadline
{
public:
    explicit Deadline(int ms) : Deadline(Clock::now(), ms) {}
    Deadline(Clock::time_point start, int ms) : end_(start + std::chrono::milliseconds(ms)) {}

    bool passed() const { return Clock::now() >= end_; }
    Clock::time_point end() const { return end_; }

    // Rounded up, so that a wait of this long does not end before the deadline; 0 when passed.
    int remainingMs() const
    {
        const auto left = end_ - Clock::now();
        const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
        return static_cast<int>(std::max<decltype(ms)>(0, ms));
    }

private:
    Clock::time_point end_;
};

} // namespace tavmir::host

#endif
