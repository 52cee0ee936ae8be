// One driver with one project on one connection: what a host runtime does with the driver.
//
//   construct ──▶ setUp ──▶ start ──▶ read / write / poll … ──▶ stop (or destroy)
//
// Each step once: the driver keeps its lists for as long as it is loaded, so a session takes a
// freshly loaded one and unloads it in the end.
//
// All calls but set-up, start and destruction may come from any thread. Reads wait for nobody but
// those before them; writes are queued one after the other, and the writing of a bit keeps other
// writes back until it has ended (bit_writer.h). Every wait ends with its deadline.
#ifndef TAVMIR_SESSION_HOST_SESSION_H
#define TAVMIR_SESSION_HOST_SESSION_H

#include "bit_writer.h"
#include "cycle_thread.h"
#include "operation_queue.h"
#include "plan/polled_index.h"
#include "searched_list.h"
#include "session_state.h"

#include <memory>

namespace tavmir::host
{

struct SessionOptions {
    bool polls = true; // false: the project's polled variables are left alone
    int passMs =
        0; // from the beginning of a pass over the polled variables to the next; 0: at once
    bool searches = true;              // for the variables that make the controller refuse requests
    int mostRetries = 1000;            // of a request, where the project allows more
    unsigned jitterSeed = 1;           // of the reconnect pauses
    int idleMs = CycleThread::kIdleMs; // how long the cycle sleeps when nothing is to be sent
};

class HostSession
{
public:
    // project  checked; outlives the session
    HostSession(std::unique_ptr<Driver> driver, const project::Project& project,
                const SessionOptions& options);
    // Stops, and unloads the driver.
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    // Hands everything over in the driver's order. Empty when done, else what is wrong; the
    // driver is not called at all when the polled list is one that it must not get.
    QString setUp();

    // Once; a session that was stopped does not start again.
    void start() { cycle_->start(); }
    bool isStopping() const { return cycle_->isStopping(); }
    // Every pending operation ends. May be called again, and while others wait for operations.
    void stop() { cycle_->stop(); }

    // Replaces the polled elements while the cycle may run; with none, polling stops. As setUp:
    // empty, or what is wrong.
    QString poll(const std::vector<PolledElement>& polled);
    std::vector<PolledElement> polled() const;
    size_t polledElementsOnWire() const;

    // What happens, for as many readers as want to see it; subscribe before start to miss nothing.
    Feed& feed() { return state_.feed; }
    const ConnectionState& connection() const { return state_.connection; }

    // What the driver's cache holds: last received or last written, whatever became of the write;
    // zero bytes when neither. For a screen that asks as panels do; what is known and how old it
    // is, the feed says.
    QByteArray cachedValue(const project::Element& element);

    // Where the element is asked for, by what polls it.
    int stationOf(const project::Element& element) const;

    // See operation_queue.h. One bit of a word is not queued: it takes a read and a write.
    OperationId queueRead(const project::Element& element, const Deadline& deadline);
    OperationId queueWrite(const project::Element& element, const QByteArray& bytes,
                           const Deadline& deadline);
    OperationId queueRecord(const RW_VAR& record, const Deadline& deadline);
    Outcome await(const OperationId& id) { return queue_.await(id); }

    // Asks and waits.
    //   bytes  as project::encodeValue gives them
    Outcome read(const project::Element& element, const Deadline& deadline);
    Outcome write(const project::Element& element, const QByteArray& bytes,
                  const Deadline& deadline);

    // False: no requests are sent to the station; those that the driver builds fail.
    void enableStation(int station, bool enabled);

    const DriverApi& api() const { return driver_->api(); }

private:
    std::shared_ptr<const PolledIndex> index() const;

    std::unique_ptr<Driver> driver_;
    const project::Project& project_;
    int mostRetries_;
    ComInfo comInfo_ = {};
    quint16 localBits_[64] = {};
    quint16 localWords_[64] = {};
    quint16 indexWords_[64] = {};
    SessionState state_;
    SearchedList list_;
    mutable std::mutex plannedMutex_; // around the two below
    std::vector<PolledElement> polled_;
    std::shared_ptr<const PolledIndex> index_;
    std::unique_ptr<CycleThread> cycle_;
    OperationQueue queue_;
    BitWriter bits_;
};

} // namespace tavmir::host

#endif
