// Decoding of replies into the value caches. Private.
#ifndef TAVMIR_DATA_FUNC_DEALDATA_H
#define TAVMIR_DATA_FUNC_DEALDATA_H

#include "tavmir_kx_tcp/host_interface.h"

// What `CheckGetData` answers.
enum ReplyContent { kStoreValues = 1, kNothingToStore = 2 };

// Whether the reply to the request in flight carries values; a `ReplyContent`.
// Neither argument is looked at. Communication thread, no lock.
TAVMIR_KX_TCP_EXPORT int CheckGetData(const QByteArray* reply, int size) TAVMIR_KX_TCP_NOTHROW;

// Stores the reply's values under the addresses of the batch elements. Values that a short
// reply lacks are not stored; null stores nothing.
// Communication thread; the caller holds `cacheMutex`.
TAVMIR_KX_TCP_EXPORT void SaveToLocalDataErea(QByteArray* reply) TAVMIR_KX_TCP_NOTHROW;

#endif
