// The writes and one-shot reads that the driver has been given and has not finished: each ends
// exactly once, as done or failed.
//
// The driver reports a variable by its keys when its turn ends. Writes (or one-shot reads)
// queued behind a batch that is given up are dropped by the driver without a report; whoever
// sees the give-up calls dropAll for them.
#ifndef TAVMIR_SESSION_OPERATION_TRACKER_H
#define TAVMIR_SESSION_OPERATION_TRACKER_H

#include "wire/deadline.h"

#include <QtCore/QString>

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>

namespace tavmir::host
{

using wire::Clock;
using wire::Deadline;

enum class OperationKind { write, read };

struct OperationId {
    OperationKind kind = OperationKind::write;
    int key = 0; // from 1 on
};

enum class OperationState {
    done,
    failed,
    unknown // no result within the time that was waited
};

struct OperationOutcome {
    OperationState state = OperationState::unknown;
    QString reason; // why not done

    bool ok() const { return state == OperationState::done; }
};

// Ended operations of one kind.
struct OperationCounts {
    uint64_t begun = 0;
    uint64_t done = 0;
    uint64_t reportedFailed = 0; // by the driver
    uint64_t dropped = 0;        // by the driver, without a report
};

class OperationTracker
{
public:
    // The keys by which the driver knows them; above the 0..11 that colour its result codes.
    static int hostKey(OperationKind kind) { return kind == OperationKind::write ? 1000 : 1001; }

    // elements  that it takes in the driver's list
    // Call it before the driver gets the operation. Any thread, like all calls.
    OperationId begin(OperationKind kind, int elements, int station);

    // The driver's report. Keys that are not pending are ignored.
    void finished(int hostKey, int varKey, bool ok, const QString& reason);

    // All pending operations of the kind end as failed.
    void dropAll(OperationKind kind, const QString& reason);

    // The cycle has ended: all pending operations fail, and all that begin from now on.
    void close(const QString& reason);

    // The driver did not take the operation after all.
    void cancel(const OperationId& id);

    // Waits for the end and forgets the operation. When the time is over the operation counts
    // as abandoned: its end is still counted, but nobody is told.
    OperationOutcome await(const OperationId& id, const Deadline& deadline);

    // Waits until nothing of the kind is pending, or what is pending is for `station`. False
    // when the time is over. A negative station matches nothing.
    bool awaitIdle(OperationKind kind, int station, const Deadline& deadline);

    // Waits until at most `elements` are pending.
    bool awaitRoom(OperationKind kind, int elements, const Deadline& deadline);

    OperationCounts counts(OperationKind kind) const;

private:
    struct Operation {
        int elements = 0;
        int station = 0;
        bool ended = false;
        bool abandoned = false;
        OperationOutcome outcome;
    };
    struct Kind {
        std::map<int, Operation> operations;
        int nextKey = 1;
        int pendingElements = 0;
        OperationCounts counts;
    };

    Kind& of(OperationKind kind) { return kinds_[kind == OperationKind::write ? 0 : 1]; }
    void end(Kind& kind, std::map<int, Operation>::iterator operation, OperationState state,
             const QString& reason);
    static bool idleFor(const Kind& kind, int station);

    void drop(Kind& kind, const QString& reason);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Kind kinds_[2];
    bool closed_ = false;
    QString closedReason_;
};

} // namespace tavmir::host

#endif
