#include "core/finished_variables.h"

#include <algorithm>

namespace tavmir {

namespace {

typedef std::pair<std::pair<int, int>, int> PairAndPlace;

} // namespace

FinishedVariables::FinishedVariables(const QList<RW_VAR>& list, int entries) : count_(0)
{
    for (int i = std::min(std::min(entries, list.size()), kBatchSlots) - 1; i >= 0; --i) {
        const Pair pair(list.at(i).hostKey, list.at(i).varKey);
        if (!contains(pair))
            pairs_[count_++] = pair;
    }
}

bool FinishedVariables::contains(const Pair& pair) const
{
    return std::find(pairs_, pairs_ + count_, pair) != pairs_ + count_;
}

FinishedVariables::Flags FinishedVariables::findIn(const QList<RW_VAR>& list) const
{
    Flags found;
    PairAndPlace sorted[kBatchSlots];
    for (int i = 0; i < count_; ++i)
        sorted[i] = PairAndPlace(pairs_[i], i);
    std::sort(sorted, sorted + count_);

    int missing = count_;
    for (QList<RW_VAR>::const_iterator entry = list.begin(); entry != list.end() && missing > 0; ++entry) {
        const Pair pair(entry->hostKey, entry->varKey);
        const PairAndPlace* place = std::lower_bound(sorted, sorted + count_, PairAndPlace(pair, 0));
        if (place == sorted + count_ || place->first != pair)
            continue;
        const std::size_t at = static_cast<std::size_t>(place->second);
        if (!found[at])
            --missing;
        found[at] = true;
    }
    return found;
}

} // namespace tavmir
