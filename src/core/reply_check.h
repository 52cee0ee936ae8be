// Judging the answer to the request in flight. Private.
#ifndef TAVMIR_CORE_REPLY_CHECK_H
#define TAVMIR_CORE_REPLY_CHECK_H

#include "tavmir_kx_tcp/host_interface.h"

// Compares `received` with the expected length and stores a good reply under `cacheMutex`.
//   reply   may be null when `received` is 0
//   result  a code of return_codes.h; 1 is good
// Communication thread; a request must be in flight. Takes `cacheMutex`.
TAVMIR_KX_TCP_EXPORT int DealDataOfLocalArea(QByteArray* reply, int received) TAVMIR_KX_TCP_NOTHROW;

// The same for a remote area: other codes, stores without `cacheMutex`, and only while
// `hostData12` of the request's first element is -1. Exported; the cycle never calls it.
TAVMIR_KX_TCP_EXPORT int DealDataOfRemoteArea(QByteArray* reply,
                                              int received) TAVMIR_KX_TCP_NOTHROW;

#endif
