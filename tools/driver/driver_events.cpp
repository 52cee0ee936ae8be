// The callbacks.
#include "driver_events.h"

#include <atomic>

namespace tavmir::host
{

namespace
{

std::atomic<DriverEvents*> receiver{nullptr};

} // namespace

void DriverEvents::receiveInto(DriverEvents* events)
{
    receiver = events;
}

int DriverEvents::onVariableDone(int, int hostKey, int varKey, int)
{
    if (DriverEvents* events = receiver.load()) {
        events->finished.push_back({hostKey, varKey});
    }
    return 0;
}

int DriverEvents::onCommunicationFailed(QList<RW_VAR>, int, int)
{
    return 0; // what DataCom returns says it too
}

} // namespace tavmir::host
