// What the driver reports through its two callbacks, collected for the thread that runs the
// cycle. The driver holds its list lock while it calls: nothing here calls back into it.
#ifndef TAVMIR_DRIVER_DRIVER_EVENTS_H
#define TAVMIR_DRIVER_DRIVER_EVENTS_H

#include "tavmir_kx_tcp/host_interface.h"

#include <vector>

namespace tavmir::host
{

struct FinishedVariable {
    int hostKey = 0;
    int varKey = 0;
};

struct DriverEvents {
    std::vector<FinishedVariable> finished;

    void clear() { finished.clear(); }

    // The driver has one context, so a process has one receiver of its events; null: events
    // are dropped. Call it while no cycle runs.
    static void receiveInto(DriverEvents* events);

    // The functions for RegistCallBackFuncIntf.
    static int onVariableDone(int station, int hostKey, int varKey, int result);
    static int onCommunicationFailed(QList<RW_VAR> vars, int hostKey, int flag);
};

} // namespace tavmir::host

#endif
