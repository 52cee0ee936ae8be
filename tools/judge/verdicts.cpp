// Counting, and keeping the first breaches.
#include "verdicts.h"

#include <algorithm>
#include <utility>

namespace tavmir::judge
{

void Verdicts::broken(Rule rule, Breach breach)
{
    Finding& finding = at(rule);
    ++finding.judged;
    ++finding.broken;
    if (finding.breaches.size() < Finding::kMostShown) {
        finding.breaches.push_back(std::move(breach));
    }
}

bool Verdicts::any(Verdict verdict) const
{
    return std::any_of(findings_.begin(), findings_.end(),
                       [verdict](const Finding& finding) { return finding.verdict() == verdict; });
}

} // namespace tavmir::judge
