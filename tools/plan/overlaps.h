// Values that share bits of the controller's memory: writing one changes the other.
#ifndef TAVMIR_PLAN_OVERLAPS_H
#define TAVMIR_PLAN_OVERLAPS_H

#include "polled_plan.h"

namespace tavmir::host
{

struct Overlap {
    project::Element first; // begins no later than the second
    project::Element second;
    quint32 from = 0; // bits that both hold
    quint32 to = 0;
};

// Ascending by address. Each element that shares bits with one before it is named once, with the
// one that reaches furthest.
std::vector<Overlap> findOverlaps(const std::vector<project::Element>& elements);

// The same of polled variables, each station by itself. Bits of a word are left out: they lie with
// their word.
std::vector<Overlap> findOverlaps(const std::vector<PolledElement>& polled);

// Those of `elements`, which are a project's, that share bits with `element`, other than itself.
std::vector<project::Element> sharingBits(const project::Element& element,
                                          const std::vector<project::Element>& elements);

} // namespace tavmir::host

#endif
