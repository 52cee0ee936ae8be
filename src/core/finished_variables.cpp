#include "core/finished_variables.h"

#include <algorithm>

namespace tavmir
{

FinishedVariables::FinishedVariables(const QList<RW_VAR>& list, int entries) : count_(0)
{
    const int most = std::min(list.size(), kBatchSlots);
    for (int i = qBound(0, entries, most) - 1; i >= 0; --i) {
        const quint64 keys = keysOf(list.at(i));
        if (placeOf(keys) == count_) {
            variables_[count_++] = keys;
        }
    }
}

FinishedVariables::Flags FinishedVariables::findIn(const QList<RW_VAR>& list) const
{
    Flags found;
    for (QList<RW_VAR>::const_iterator entry = list.begin(); entry != list.end(); ++entry) {
        const int place = placeOf(keysOf(*entry));
        if (place != count_) {
            found[static_cast<std::size_t>(place)] = true;
        }
    }
    return found;
}

bool FinishedVariables::occursIn(const QList<RW_VAR>& list, int i) const
{
    for (QList<RW_VAR>::const_iterator entry = list.begin(); entry != list.end(); ++entry) {
        if (keysOf(*entry) == variables_[i]) {
            return true;
        }
    }
    return false;
}

quint64 FinishedVariables::keysOf(const RW_VAR& var)
{
    return static_cast<quint64>(static_cast<quint32>(var.hostKey)) << 32 |
           static_cast<quint32>(var.varKey);
}

int FinishedVariables::placeOf(quint64 keys) const
{
    return static_cast<int>(std::find(variables_, variables_ + count_, keys) - variables_);
}

} // namespace tavmir
