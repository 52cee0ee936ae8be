// Taking the entries of a finished batch off a list. Private.
#ifndef TAVMIR_LISTS_REMOVE_FRONT_H
#define TAVMIR_LISTS_REMOVE_FRONT_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{

// Removes the first `count` entries, or as many as there are; none for a count below 1.
// The caller holds the list's lock.
inline void removeFront(QList<RW_VAR>& list, int count)
{
    list.erase(list.begin(), list.begin() + qBound(0, count, list.size()));
}

} // namespace tavmir

#endif
