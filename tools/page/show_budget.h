// How often the page puts what it knows into words. With each look, as long as that costs little;
// where much changes it does so less often, so that words take no more than a hundredth of one
// processor, but once a second in any case. What happened is taken in with each look all the same.
#ifndef TAVMIR_PAGE_SHOW_BUDGET_H
#define TAVMIR_PAGE_SHOW_BUDGET_H

#include "moments.h"

#include <algorithm>

namespace tavmir::host
{

class ShowBudget
{
public:
    static constexpr int kShare = 100;
    // With looks ten times a second: once a second.
    static constexpr std::chrono::milliseconds kLongest{850};

    bool isDue(Clock::time_point now) const
    {
        return now - began_ >= std::min<Clock::duration>(kLongest, kShare * spent_);
    }
    void begin(Clock::time_point now)
    {
        began_ = now;
        spent_ = std::chrono::nanoseconds(0);
    }
    // Words were made since then, for so much of the processor's time.
    void spend(std::chrono::nanoseconds time) { spent_ += time; }

private:
    Clock::time_point began_;
    std::chrono::nanoseconds spent_{0};
};

// Charges the budget for as long as it lives.
class Spending
{
public:
    Spending(ShowBudget& budget, const Clocks& clocks)
        : budget_(budget), clocks_(clocks), from_(clocks.processor())
    {
    }
    ~Spending() { budget_.spend(clocks_.processor() - from_); }
    Spending(const Spending&) = delete;
    Spending& operator=(const Spending&) = delete;

private:
    ShowBudget& budget_;
    const Clocks& clocks_;
    const std::chrono::nanoseconds from_;
};

} // namespace tavmir::host

#endif
