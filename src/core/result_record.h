// Filling the record that `DataCom` returns. Private.
#ifndef TAVMIR_CORE_RESULT_RECORD_H
#define TAVMIR_CORE_RESULT_RECORD_H

#include "tavmir_kx_tcp/host_interface.h"

// Copies a record, but leaves `to.value` empty: the result record never carries values.
TAVMIR_KX_TCP_EXPORT void passRetValue(const RW_VAR& from, RW_VAR& to) TAVMIR_KX_TCP_NOTHROW;

#endif
