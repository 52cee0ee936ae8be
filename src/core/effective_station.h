// Which station a variable is on. Private.
#ifndef TAVMIR_CORE_EFFECTIVE_STATION_H
#define TAVMIR_CORE_EFFECTIVE_STATION_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{

// `own` while the host's station mode is on, else the host's default station. Any thread.
inline int effectiveStation(int own)
{
    const ComInfo& host = *PLC_driver.comInfo;
    return host.stationMode != 0 ? own : host.defaultStation;
}

} // namespace tavmir

#endif
