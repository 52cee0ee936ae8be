// The set of disabled stations, for the host to keep and to ask; requests are not affected.
#include "tavmir_kx_tcp/host_interface.h"

#include <QtCore/QMutexLocker>

void EnCommStation(int station, int enable) TAVMIR_KX_TCP_NOTHROW
{
    QMutexLocker lock(&PLC_driver.stationMutex);
    if (station < 0) {
        PLC_driver.stationMap.clear();
    } else if (enable == 0) {
        PLC_driver.stationMap.insert(station, 0);
    } else if (enable == 1) {
        PLC_driver.stationMap.remove(station);
    }
}

void EnableEthernet(int station, int enable) TAVMIR_KX_TCP_NOTHROW
{
    EnCommStation(station, enable);
}

bool Ethernetcontains(int station) TAVMIR_KX_TCP_NOTHROW
{
    QMutexLocker lock(&PLC_driver.stationMutex);
    return PLC_driver.stationMap.contains(station);
}
