// Polled variables that lie on each other: writing one changes another.
#ifndef TAVMIR_PLAN_OVERLAPS_H
#define TAVMIR_PLAN_OVERLAPS_H

#include "polled_plan.h"

namespace tavmir::host
{

// Places in the list, the one with the lower address first.
struct Overlap {
    size_t first = 0;
    size_t second = 0;
};

// Each variable and the one before it in its station and class that reaches into it. Different bits
// of one word do not overlap, nor do elements of different classes.
std::vector<Overlap> overlapsOf(const std::vector<PolledElement>& polled);

} // namespace tavmir::host

#endif
