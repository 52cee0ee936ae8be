#include "core/finished_variables.h"

#include <algorithm>

namespace tavmir
{

namespace
{

typedef std::pair<int, int> Pair;
typedef std::pair<Pair, int> PairAndPlace;

// Tells most pairs that are not in a set at first sight: thousands of writes may wait behind a
// finished batch, and nearly all of them are of other variables.
class PairFilter
{
public:
    void add(const Pair& pair) { bits_[bitOf(pair)] = true; }
    bool mayContain(const Pair& pair) const { return bits_[bitOf(pair)]; }

private:
    enum { kBitNumberBits = 11 };

    static std::size_t bitOf(const Pair& pair)
    {
        const quint32 mixed = static_cast<quint32>(pair.first) * 0x85EBCA6Bu +
                              static_cast<quint32>(pair.second) * 0x9E3779B1u;
        return mixed >> (32 - kBitNumberBits);
    }

    std::bitset<1u << kBitNumberBits> bits_;
};

} // namespace

FinishedVariables::FinishedVariables(const QList<RW_VAR>& list, int entries) : count_(0)
{
    const int most = std::min(list.size(), kBatchSlots);
    for (int i = qBound(0, entries, most) - 1; i >= 0; --i) {
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
    PairFilter filter;
    for (int i = 0; i < count_; ++i) {
        sorted[i] = PairAndPlace(pairs_[i], i);
        filter.add(pairs_[i]);
    }
    std::sort(sorted, sorted + count_);

    int missing = count_;
    for (QList<RW_VAR>::const_iterator entry = list.begin(); entry != list.end() && missing > 0;
         ++entry) {
        const Pair pair(entry->hostKey, entry->varKey);
        if (!filter.mayContain(pair))
            continue;
        const PairAndPlace* place =
            std::lower_bound(sorted, sorted + count_, PairAndPlace(pair, 0));
        if (place == sorted + count_ || place->first != pair)
            continue;
        const std::size_t at = static_cast<std::size_t>(place->second);
        if (!found[at])
            --missing;
        found[at] = true;
    }
    return found;
}

bool FinishedVariables::occursIn(const QList<RW_VAR>& list, int i) const
{
    for (QList<RW_VAR>::const_iterator entry = list.begin(); entry != list.end(); ++entry) {
        if (Pair(entry->hostKey, entry->varKey) == pairs_[i])
            return true;
    }
    return false;
}

} // namespace tavmir
