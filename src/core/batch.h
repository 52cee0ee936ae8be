// Forming a batch: the head of a list and the entries behind it that share its request. Private.
#ifndef TAVMIR_CORE_BATCH_H
#define TAVMIR_CORE_BATCH_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{

// Fills `batchElements` and `batchCount` from the head of `list`, which is not empty: entries
// of the head's data type in a row, while the byte budget lasts. Stations and addresses are
// not compared. The batch points into the list.
// Communication thread; the caller holds the list's lock, if it has one.
void formBatch(QList<RW_VAR>& list);

} // namespace tavmir

#endif
