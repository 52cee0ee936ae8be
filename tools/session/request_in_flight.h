// The request that the driver has built and that is not over: what it is for, which operations it
// carries, and what became of its attempts. Not locked: its users hold the gate.
#ifndef TAVMIR_SESSION_REQUEST_IN_FLIGHT_H
#define TAVMIR_SESSION_REQUEST_IN_FLIGHT_H

#include "operation_tracker.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <vector>

namespace tavmir::host
{

class RequestInFlight
{
public:
    // A new request; not for the repetition of one.
    //   driver      has just built it
    //   generation  of the polled list that it has
    void begin(const Communication_Protocol& driver, const Protocol& request, quint32 generation);

    // An attempt is over.
    //   problem  why it was bad, in words
    void attempted(const Exchange& exchange, const QString& problem);

    // The request is over: tells the operations that it carried.
    //   reply  the good one, or empty
    void end(OperationTracker& operations, const QByteArray& reply);

    bool isActive() const { return active_; }
    RequestKind kind() const { return kind_; }
    quint32 attempt() const { return attempt_; } // the one to make now, from 1
    quint32 generation() const { return generation_; }
    const RequestAttempts& attempts() const { return attempts_; }

    // Entries of the driver's list that it points at.
    int entriesOf(OperationKind kind) const;
    bool carries(const OperationId& id) const;

private:
    static RequestKind kindOf(const Protocol& request);
    void tellValues(OperationTracker& operations, const QByteArray& reply) const;

    bool active_ = false;
    RequestKind kind_ = RequestKind::poll;
    quint32 attempt_ = 1;
    quint32 generation_ = 0;
    RequestAttempts attempts_;
    std::vector<OperationId> carried_; // of each entry, in the frame's order; none for polling
};

} // namespace tavmir::host

#endif
