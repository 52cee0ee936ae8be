// What a session's threads share: the lock around the driver, the pending operations, the feed, and
// how the connection stands.
#ifndef TAVMIR_SESSION_SESSION_STATE_H
#define TAVMIR_SESSION_SESSION_STATE_H

#include "connection_state.h"
#include "driver/driver_loader.h"
#include "feed/feed.h"
#include "operation_tracker.h"
#include "pass_clock.h"
#include "request_in_flight.h"

#include <atomic>
#include <mutex>

namespace tavmir::host
{

struct SessionState {
    SessionState(const DriverApi& driver, int passMs)
        : api(driver), operations(feed), passes(passMs)
    {
    }

    const DriverApi& api;
    Feed feed;
    ConnectionState connection;
    OperationTracker operations;
    std::atomic<bool> stationsSwitched{false}; // a station may be switched off

    // The gate: held around every call of the driver that touches the read list, the write
    // list's size or a cached word without the driver's own locks. Never held while waiting for
    // the network. Taken before any lock of the driver's, the tracker's or the feed's.
    std::mutex gate;
    // Under the gate:
    PassClock passes;
    RequestInFlight inFlight;
    quint32 generation = 0; // of the polled list that the driver was given last
};

} // namespace tavmir::host

#endif
