// The callbacks.
#include "driver_events.h"

#include <atomic>

namespace tavmir::host
{

namespace
{

std::atomic<DriverEvents*> receiver{nullptr};

constexpr int kCompleted = 1;

} // namespace

void DriverEvents::receiveInto(DriverEvents* events)
{
    receiver = events;
}

int DriverEvents::onVariableDone(int, int hostKey, int varKey, int result)
{
    if (DriverEvents* events = receiver.load()) {
        events->finished.push_back({hostKey, varKey, result == kCompleted});
    }
    return 0;
}

int DriverEvents::onCommunicationFailed(QList<RW_VAR>, int, int)
{
    if (DriverEvents* events = receiver.load()) {
        events->gaveUp = true;
    }
    return 0;
}

} // namespace tavmir::host
