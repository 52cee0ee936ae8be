// Storing written values in the caches. Private.
#ifndef TAVMIR_DATA_LOCAL_VALUES_H
#define TAVMIR_DATA_LOCAL_VALUES_H

#include "tavmir_kx_tcp/host_interface.h"

// Stores the record's value in the cache of its data type, `count` elements at consecutive
// keys; bytes past the end of `value` count as zero. Any thread; takes `cacheMutex`, which the
// caller must not hold.
TAVMIR_KX_TCP_EXPORT void WriteDataToLocal(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW;

#endif
