// Write requests. Private.
#ifndef TAVMIR_FRAMES_FUNC_WRITE_H
#define TAVMIR_FRAMES_FUNC_WRITE_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{

// Turns the batch into a write request and, while the link is good, stores the written values
// in the caches. False when the batch makes no request (see `WriteAnalog`).
// Communication thread; takes `cacheMutex` for the caches.
bool requestWrites();

} // namespace tavmir

// The same without the result.
TAVMIR_KX_TCP_EXPORT void WriteRegister() TAVMIR_KX_TCP_NOTHROW;

// Turns the batch into a write request at the end of `protocolList`. A batch whose type has no
// write encoding makes none and leaves one diagnostic line; an empty batch makes none.
// Communication thread, no lock.
TAVMIR_KX_TCP_EXPORT void WriteAnalog() TAVMIR_KX_TCP_NOTHROW;

// Does nothing; exported.
TAVMIR_KX_TCP_EXPORT void Remote_WriteVar(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW;

#endif
