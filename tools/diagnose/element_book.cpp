// Counting by element: requests begin at another element with each pass, elements recur.
#include "element_book.h"

#include <algorithm>

namespace tavmir::diagnose
{

namespace
{

constexpr std::uint64_t kAgainAndAgain = 3;

} // namespace

void ElementBook::add(const Exchange& exchange, Outcome outcome, std::uint8_t code)
{
    const std::vector<PlaceAndValue> all = elementsOfRequest(exchange.request);
    if (all.empty()) {
        return;
    }
    const Nanoseconds at = exchange.attempts.front().at;
    const bool reads = !wire::findFunctionCode(exchange.view().function)->write;
    for (const PlaceAndValue& one : all) {
        ElementEntry& entry = elements_[one.place];
        entry.bits = one.bits;
        ++entry.asked;
        entry.answered += outcome == Outcome::answered ? 1 : 0;
        if (outcome == Outcome::refused) {
            ++entry.refused;
            entry.refusedAlone += all.size() == 1 ? 1 : 0;
            entry.code = code;
        }
        if (!reads) {
            continue;
        }
        if (entry.read++ == 0) {
            entry.firstRead = at;
        } else {
            entry.longestPause = std::max(entry.longestPause, at - entry.lastRead);
        }
        entry.lastRead = at;
    }
}

ElementBook::Pass ElementBook::pass() const
{
    Pass pass;
    std::vector<Nanoseconds> usual;
    for (const auto& element : elements_) {
        const ElementEntry& entry = element.second;
        if (entry.read >= kAgainAndAgain) {
            usual.push_back((entry.lastRead - entry.firstRead) /
                            static_cast<Nanoseconds>(entry.read - 1));
            pass.longest = std::max(pass.longest, entry.longestPause);
        }
    }
    if (usual.empty()) {
        return pass;
    }
    const auto middle = usual.begin() + static_cast<std::ptrdiff_t>(usual.size() / 2);
    std::nth_element(usual.begin(), middle, usual.end());
    pass.elements = usual.size();
    pass.usual = *middle;
    return pass;
}

} // namespace tavmir::diagnose
