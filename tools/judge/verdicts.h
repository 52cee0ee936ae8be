// What was found of each rule.
#ifndef TAVMIR_JUDGE_VERDICTS_H
#define TAVMIR_JUDGE_VERDICTS_H

#include "event.h"
#include "rule_table.h"

#include <array>
#include <string>
#include <vector>

namespace tavmir::judge
{

// One time that a rule was broken.
struct Breach {
    Us at = 0;
    int client = 0;        // 0: it is none of one connection
    std::string situation; // empty: before the first
    std::string what;      // happened
    Bytes request;         // the one that it is about; empty: none
};

enum class Verdict { kept, broken, notJudged };

struct Finding {
    static constexpr std::size_t kMostShown = 3;

    std::size_t judged = 0; // times when it could be told
    std::size_t broken = 0;
    std::vector<Breach> breaches; // the first ones

    Verdict verdict() const
    {
        return broken > 0 ? Verdict::broken : judged > 0 ? Verdict::kept : Verdict::notJudged;
    }
};

class Verdicts
{
public:
    void kept(Rule rule) { ++at(rule).judged; }
    void broken(Rule rule, Breach breach);

    const Finding& of(Rule rule) const { return findings_[static_cast<std::size_t>(rule)]; }
    // True when a rule has this verdict.
    bool any(Verdict verdict) const;

private:
    Finding& at(Rule rule) { return findings_[static_cast<std::size_t>(rule)]; }

    std::array<Finding, kRuleCount> findings_;
};

} // namespace tavmir::judge

#endif
