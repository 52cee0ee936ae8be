// Hands writes and one-shot reads to the driver, and waits for their ends. Any thread.
#ifndef TAVMIR_SESSION_OPERATION_QUEUE_H
#define TAVMIR_SESSION_OPERATION_QUEUE_H

#include "plan/polled_index.h"
#include "session_state.h"

#include <functional>

namespace tavmir::host
{

class OperationQueue
{
public:
    // wake  told after each operation that the driver was given
    // State, project and index outlive the queue.
    OperationQueue(SessionState& state, const project::Project& project,
                   std::function<void()> wake);

    // Each gives an id at once, or when those before it leave room; one that cannot be given to
    // the driver has ended, with its reason. What has not been sent when the deadline is over is
    // taken back: it is never carried out later.
    //   element  one of the project's
    OperationId read(const project::Element& element, int station, const Deadline& deadline);
    OperationId write(const project::Element& element, int station, QByteArray bytes,
                      const Deadline& deadline);
    // A record as it stands, but for its keys.
    OperationId writeRecord(RW_VAR record, const Deadline& deadline);

    // A write that never gets as far as the driver: it has ended, for this reason.
    OperationId refuseWrite(const project::Element& element, int station, const QString& reason);

    // Waits until it has ended or its time is over. Once for each operation.
    Outcome await(const OperationId& id);

    // Waits until no write is pending.
    bool awaitNoWrites(const Deadline& deadline);

    // True while writes go to the controller rather than into the caches.
    bool writesToController() const { return project_.connection.writesToController; }

private:
    // Calls the driver, whose answer of 0 means that it did not take the operation.
    using Give = std::function<int(const DriverKeys& keys)>;
    OperationId give(OperationKind kind, const OperationShape& shape, const Deadline& deadline,
                     int most, const Give& call);

    SessionState& state_;
    const project::Project& project_;
    std::function<void()> wake_;
};

} // namespace tavmir::host

#endif
