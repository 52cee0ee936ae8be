// One driver with one project on one connection: what a host runtime does with the driver.
//
//   construct ──▶ setUp ──▶ start ──▶ read / write / readOnce … ──▶ stop (or destroy)
//
// Locks: the gate (cycle_thread.h) keeps the driver calls that the driver itself leaves
// unguarded apart; `writeOrder_` keeps the read-modify-write of a bit apart from other writes.
// Neither is held while a host callback's report is waited for, except that a bit write holds
// `writeOrder_` until it has ended: a second bit of the same word must see the first.
#ifndef TAVMIR_SESSION_HOST_SESSION_H
#define TAVMIR_SESSION_HOST_SESSION_H

#include "cycle_thread.h"
#include "plan/polled_plan.h"
#include "project/project_model.h"

#include <memory>

namespace tavmir::host
{

struct SessionOptions {
    bool polls = true;                 // false: the project's polled variables are left alone
    int pauseMs = 0;                   // after each full pass over the polled variables
    unsigned jitterSeed = 1;           // of the reconnect pauses
    int idleMs = CycleThread::kIdleMs; // how long the cycle sleeps when nothing is to be sent
};

class HostSession
{
public:
    // api      of a loaded driver that no other session uses; outlives the session
    // project  checked; outlives the session
    // observer told on the communication thread when the connection comes and goes
    HostSession(const DriverApi& api, const project::Project& project,
                const SessionOptions& options, TcpLink::Observer observer);
    // Stops. The driver keeps pointers into this object: unload it, or make another session
    // of it, before it is used again.
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    // Hands everything over in the driver's order. Empty when done, else what is wrong; the
    // driver is not called at all when the polled list is one that it must not get.
    QString setUp();

    void start() { cycle_->start(); }
    void stop() { cycle_->stop(); }

    // Replaces the polled elements while the cycle may run. As setUp: empty, or what is wrong.
    // Call it on the thread that looks at polled().
    QString poll(const std::vector<PolledElement>& polled);
    const std::vector<PolledElement>& polled() const { return polled_; }

    // The value as the driver has it, last received or last written; zero bytes when never.
    QByteArray cachedValue(const project::Element& element);
    // When the element was last polled; none: never.
    std::optional<Clock::time_point> lastPolled(const project::Element& element);

    // Queues a read from the controller; none when the element is not one of the project's, or
    // there was no room in time.
    std::optional<OperationId> readOnce(const project::Element& element, const Deadline& deadline);

    // Writes and waits for the driver's report. A bit is written by reading its word first and
    // writing the word back: another host's change of the word in between is lost.
    //   bytes  as project::encodeValue gives them
    OperationOutcome write(const project::Element& element, const QByteArray& bytes,
                           const Deadline& deadline);

    // Queues a write that is no bit of a word; await it with the id. None when the element is
    // a bit or not one of the project's, or an earlier write to another station did not end in
    // time.
    std::optional<OperationId> queueWrite(const project::Element& element, const QByteArray& bytes,
                                          const Deadline& deadline);

    // Queues a record as it stands, for hosts that make their own; it is given keys of this
    // session. Empty, with the id, or what is wrong with it. For one station only.
    QString queueRecord(RW_VAR record, std::optional<OperationId>& id);

    OperationOutcome await(const OperationId& id, const Deadline& deadline)
    {
        return shared_.operations.await(id, deadline);
    }

    // False: no requests are sent to the station; those that the driver builds fail.
    void enableStation(int station, bool enabled);

    // True while a project's writes go to the controller rather than into the caches.
    bool writesToController() const { return project_.connection.writesToController; }

    const LinkStatistics& statistics() const { return shared_.statistics; }
    OperationCounts operationCounts(OperationKind kind) const
    {
        return shared_.operations.counts(kind);
    }
    size_t polledElementsOnWire();

    // The cycle, for programs that run it on a thread of their own.
    CycleThread& cycle() { return *cycle_; }

private:
    int stationOf(const project::Element& element) const;
    OperationOutcome writeBit(const project::Element& element, const QByteArray& bytes,
                              const Deadline& deadline);
    std::optional<OperationId> giveWrite(const project::Element& element, QByteArray bytes,
                                         const Deadline& deadline);

    const DriverApi& api_;
    const project::Project& project_;
    ComInfo comInfo_ = {};
    quint16 localBits_[64] = {};
    quint16 localWords_[64] = {};
    quint16 indexWords_[64] = {};
    CycleShared shared_;
    std::mutex writeOrder_;
    std::vector<PolledElement> polled_;
    QHash<QString, int> stations_; // of polled addresses that have their own
    std::unique_ptr<CycleThread> cycle_;
};

} // namespace tavmir::host

#endif
