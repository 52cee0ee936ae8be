// The communication thread: asks the driver for a request, sends it, hands the reply back, and
// tells the tracker how writes and one-shot reads ended.
#ifndef TAVMIR_SESSION_CYCLE_THREAD_H
#define TAVMIR_SESSION_CYCLE_THREAD_H

#include "driver/driver_events.h"
#include "driver/driver_loader.h"
#include "feed/age_table.h"
#include "link/tcp_link.h"
#include "operation_tracker.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace tavmir::host
{

// What the cycle shares with the other threads of the host.
struct CycleShared {
    // The driver gate: held around every call of the driver that touches the read list, the
    // write list's size or a cached word without the driver's own locks. Never held while
    // waiting for the network.
    std::mutex gate;
    AgeTable ages; // under the gate
    OperationTracker operations;
    LinkStatistics statistics;
    std::atomic<bool> stationsSwitched{false}; // a station may be switched off
};

class CycleThread
{
public:
    static constexpr int kIdleMs = 1000;

    // pauseMs  after each full pass over the polled variables; 0: none
    // idleMs   how long the thread sleeps when there is nothing to send; new work wakes it
    CycleThread(const DriverApi& api, CycleShared& shared, const LinkOptions& link, int pauseMs,
                TcpLink::Observer observer, int idleMs = kIdleMs);
    ~CycleThread();
    CycleThread(const CycleThread&) = delete;
    CycleThread& operator=(const CycleThread&) = delete;

    void start();
    // Ends the thread, also while it waits for a reply; the request in flight stays with the
    // driver. May be called again.
    void stop();
    // New work was queued. Any thread.
    void wake() { link_.wake(); }

    // One pass of the loop, for programs that run the cycle on a thread of their own instead
    // of start(). False when the driver returned no request, which it may do once while work
    // waits, or when the thread is being stopped.
    bool turn();

private:
    enum class Turn { poll, write, read };

    static Turn kindOf(const Protocol& request);
    ExchangeResult perform(const Protocol& request);
    void endTurn(const Protocol& request, Turn kind, ExchangeResult result);
    void reportOperations(Turn kind, const QString& reason);
    void countResult(int status, bool received);
    void pauseAfterPass();
    void loop();

    const DriverApi& api_;
    CycleShared& shared_;
    TcpLink link_;
    DriverEvents events_;
    QByteArray reply_;
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    bool repeat_ = false; // the next request is the last one again
    int pauseMs_;
    int idleMs_;
    uint64_t passStart_ = 0; // polled elements at the start of the pass
};

} // namespace tavmir::host

#endif
