// Which request meets which fault. Decided by rules and a seed alone: the same rules, the same
// seed and the same number of requests give the same faults in the same places.
//
// A fault is one of the reply: the request it answers has been carried out before.
#ifndef TAVMIR_CONTROLLER_FAULT_PLAN_H
#define TAVMIR_CONTROLLER_FAULT_PLAN_H

#include "seeded_random.h"

#include <QtCore/QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace tavmir::controller
{

enum class FaultKind {
    None,
    Drop,       // no reply
    Delay,      // the reply waits, and later replies of this client wait behind it
    Late,       // the reply waits, later ones pass it
    Truncate,   // a whole frame with bytes missing at its end, its length field made true
    Oversize,   // a whole frame with bytes added at its end, its length field made true
    Cut,        // the frame ends in its middle: the length field promises more than comes
    Corrupt,    // the top bit of one of the 9 header bytes is flipped
    Duplicate,  // the reply comes twice
    Disconnect, // the connection is closed instead of a reply
    Refuse      // all connections are closed, new ones are refused for a while
};
constexpr int kFaultKinds = 11; // None included

// "drop", "delay", …; what rules are written with and statistics are shown with.
const char* faultName(FaultKind kind);

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

    // For what a fault needs beside its kind: how many bytes, which byte.
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
