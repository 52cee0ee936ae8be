// Read requests. Private.
#ifndef TAVMIR_FRAMES_READ_REQUEST_H
#define TAVMIR_FRAMES_READ_REQUEST_H

#include "tavmir_kx_tcp/host_interface.h"

// Both: communication thread, no lock. They turn the batch into a read request at the end of
// `protocolList`. An empty batch, or one whose frame would not fit, makes none.
TAVMIR_KX_TCP_EXPORT void ReadRegister() TAVMIR_KX_TCP_NOTHROW;
TAVMIR_KX_TCP_EXPORT void ReadAnalog() TAVMIR_KX_TCP_NOTHROW;

// Does nothing; exported.
TAVMIR_KX_TCP_EXPORT void Remote_ReadVar(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW;

#endif
