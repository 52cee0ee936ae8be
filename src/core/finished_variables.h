// The distinct variables of a finished batch, in the order in which they are reported. Private.
#ifndef TAVMIR_CORE_FINISHED_VARIABLES_H
#define TAVMIR_CORE_FINISHED_VARIABLES_H

#include "core/cycle_state.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <bitset>
#include <utility>

namespace tavmir
{

// A variable is its pair (hostKey, varKey). Pairs are recorded from the back of the batch.
class FinishedVariables
{
public:
    typedef std::bitset<kBatchSlots> Flags;

    // Records the pairs of the first `entries` entries of `list`; what the list lacks, or a
    // batch cannot hold, is left out. The caller holds the list's lock.
    FinishedVariables(const QList<RW_VAR>& list, int entries);

    int count() const { return count_; }
    int hostKey(int i) const { return pairs_[i].first; }
    int varKey(int i) const { return pairs_[i].second; }

    // Which of the pairs occur in `list`. Looks at each entry once.
    Flags findIn(const QList<RW_VAR>& list) const;

    // Whether pair `i` occurs in `list`.
    bool occursIn(const QList<RW_VAR>& list, int i) const;

private:
    typedef std::pair<int, int> Pair;

    bool contains(const Pair& pair) const;

    int count_;
    Pair pairs_[kBatchSlots];
};

} // namespace tavmir

#endif
