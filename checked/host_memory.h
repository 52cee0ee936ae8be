// Whether the connection record can be read. Private.
#ifndef TAVMIR_CHECKED_HOST_MEMORY_H
#define TAVMIR_CHECKED_HOST_MEMORY_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{
namespace checked
{

bool isReadable(const ComInfo* record);

} // namespace checked
} // namespace tavmir

#endif
