// Which request meets which fault. Decided by rules and a seed alone: the same rules, the same
// seed and the same number of requests give the same faults in the same places.
#ifndef TAVMIR_CONTROLLER_FAULT_PLAN_H
#define TAVMIR_CONTROLLER_FAULT_PLAN_H

#include "fault_kinds.h"
#include "seeded_random.h"

#include <QtCore/QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace tavmir::controller
{

struct FaultRule {
    enum class When { Probability, Once, Every };
    FaultKind kind = FaultKind::None;
    When when = When::Probability;
    double probability = 0;
    std::uint64_t number = 1; // the request, counted from 1, or the distance of requests
};

// "KIND=P" with P from 0 to 1, "KIND@N" for the n-th request, "KIND%N" for every n-th. Nothing
// when the text is none of these; `problem` then says why.
std::optional<FaultRule> parseFaultRule(const QString& text, QString* problem);

// One thread only.
class FaultPlan
{
public:
    explicit FaultPlan(std::vector<FaultRule> rules = {}, std::uint64_t seed = 1);

    // The fault of the next request, whichever client sent it. When several rules apply, the
    // first of them counts. Every rule with a probability draws at every request, so that adding
    // a rule behind others does not move theirs.
    FaultKind next();

    // Where faults take what they need beside their kind.
    SeededRandom& detail() { return detail_; }

private:
    bool applies(std::size_t rule);

    std::vector<FaultRule> rules_;
    std::vector<SeededRandom> draws_; // one per rule
    SeededRandom detail_;
    std::uint64_t requests_ = 0;
};

} // namespace tavmir::controller

#endif
