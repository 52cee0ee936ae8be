// The communication thread: asks the driver for a request when one is due, sends it, hands the
// reply back, and tells the tracker and the feed how it went.
//
//   not connected ─▶ connect, with growing pauses; the driver is not asked for anything new, so
//                    that what is queued waits for the connection as long as its time allows
//   connected     ─▶ queued work at once; polling while a pass is due; else sleep
//
// A request that is in flight when the connection goes is repeated and given up by the driver's
// own rules.
#ifndef TAVMIR_SESSION_CYCLE_THREAD_H
#define TAVMIR_SESSION_CYCLE_THREAD_H

#include "driver/driver_events.h"
#include "link/tcp_link.h"
#include "search_tries.h"
#include "searched_list.h"
#include "session_state.h"

#include <atomic>
#include <thread>

namespace tavmir::host
{

class CycleThread
{
public:
    static constexpr int kIdleMs = 1000;

    // idleMs   how long the thread sleeps when there is nothing to send; new work wakes it
    CycleThread(SessionState& state, SearchedList& polled, const LinkOptions& link,
                int idleMs = kIdleMs);
    ~CycleThread();
    CycleThread(const CycleThread&) = delete;
    CycleThread& operator=(const CycleThread&) = delete;

    // Once. A thread that was stopped does not start again.
    void start();
    // Ends the thread, also while it waits for a reply: every pending operation ends, that of the
    // request in flight by what became of its attempts. May be called again, on any thread.
    void stop();
    bool isStopping() const { return stopping_; }
    // New work was queued. Any thread.
    void wake() { link_.wake(); }

    // One pass of the loop, for programs that run the cycle on a thread of their own instead
    // of start(), and of stop() only on that thread. False when there was nothing to send, or when
    // it is being stopped.
    bool turn();

    // Under the gate: takes what is left of operations whose time is over out of the driver's
    // lists, so that it is never carried out later, but for what is in flight.
    static void withdrawExpired(SessionState& state);

private:
    bool connect();
    Protocol* nextRequest();
    Protocol* chooseRequest();
    ExchangeEnd perform(const Protocol& request);
    void suppress(const Protocol& request);
    void noteRefusal(const Protocol& request);
    void search(Clock::time_point now);
    void endPoll(bool good);
    void takeReply();
    void endRequest(bool good);
    void reportEnded(bool gaveUp);
    void linkChanged(const FeedEntry& entry);
    void loop();

    SessionState& state_;
    SearchedList& polled_;
    SearchTries tries_;
    TcpLink link_;
    DriverEvents events_;
    QByteArray reply_;
    Exchange exchange_;
    size_t elements_ = 0;              // of the request that it sent last
    std::vector<WireElement> refused_; // the same, of a polled one that was refused for an address
    QString problem_;                  // why the last exchange was bad
    Clock::time_point restUntil_;      // when there was nothing to send
    std::thread thread_;
    std::mutex stopMutex_;
    std::atomic<bool> stopping_{false};
    int idleMs_;
};

} // namespace tavmir::host

#endif
