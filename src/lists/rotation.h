// Turning the polled list round. Private.
#ifndef TAVMIR_LISTS_ROTATION_H
#define TAVMIR_LISTS_ROTATION_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{

// Moves the first `elements` entries, one after the other, to the list's end. Costs the number
// moved, not the list's length, and makes no copies of entries. Communication thread.
void rotate(QList<RW_VAR>& list, int elements);

} // namespace tavmir

#endif
