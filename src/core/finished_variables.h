// The distinct variables of a finished batch, in the order in which they are reported. Private.
#ifndef TAVMIR_CORE_FINISHED_VARIABLES_H
#define TAVMIR_CORE_FINISHED_VARIABLES_H

#include "core/cycle_state.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <bitset>

namespace tavmir
{

// A variable is its pair (hostKey, varKey). Variables are recorded from the back of the batch.
class FinishedVariables
{
public:
    typedef std::bitset<kBatchSlots> Flags;

    // Records the variables of the first `entries` entries of `list`; what the list lacks, or a
    // batch cannot hold, is left out. The caller holds the list's lock.
    FinishedVariables(const QList<RW_VAR>& list, int entries);

    int count() const { return count_; }
    int hostKey(int i) const { return static_cast<int>(variables_[i] >> 32); }
    int varKey(int i) const { return static_cast<int>(variables_[i] & 0xFFFFFFFFu); }

    // Which of the variables occur in `list`. Looks at each entry once.
    Flags findIn(const QList<RW_VAR>& list) const;

    // Whether variable `i` occurs in `list`.
    bool occursIn(const QList<RW_VAR>& list, int i) const;

private:
    static quint64 keysOf(const RW_VAR& var);

    // `count_` when the variable is not recorded.
    int placeOf(quint64 keys) const;

    int count_;
    // Both keys in one number: thousands of entries may wait behind a batch, and one comparison
    // instead of two finds a variable in a third of the time.
    quint64 variables_[kBatchSlots];
};

} // namespace tavmir

#endif
