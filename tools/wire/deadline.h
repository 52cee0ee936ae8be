// A point in time until which something may take.
#ifndef TAVMIR_WIRE_DEADLINE_H
#define TAVMIR_WIRE_DEADLINE_H

#include <algorithm>
#include <chrono>

namespace tavmir
{
namespace wire
{

typedef std::chrono::steady_clock Clock;

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
        const Clock::duration left = end_ - Clock::now();
        const auto whole = std::chrono::duration_cast<std::chrono::milliseconds>(left);
        const auto ms = whole.count() + (whole < left ? 1 : 0);
        return static_cast<int>(std::max<std::chrono::milliseconds::rep>(0, ms));
    }

private:
    Clock::time_point end_;
};

} // namespace wire
} // namespace tavmir

#endif
