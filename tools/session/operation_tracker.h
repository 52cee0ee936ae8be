// The writes and one-shot reads that hosts have asked for: each ends exactly once, with an outcome.
//
//   admit ──▶ waits in line ──▶ admitted ──▶ given ──▶ ended ──▶ claimed
//                 │                 │           │
//                 └── time over, ───┴───────────┘
//                     host stops
//
// A request carries one station, so an operation is admitted when everything of its kind that is
// pending is for its station. The line is served in order: who comes later waits longer, and
// nobody starves. Keys are never used twice in a process, so that a late report of the driver
// cannot be taken for one of another operation.
//
// All calls on any thread. "Gate" below is the session's lock around the driver.
#ifndef TAVMIR_SESSION_OPERATION_TRACKER_H
#define TAVMIR_SESSION_OPERATION_TRACKER_H

#include "feed/feed.h"
#include "operation_progress.h"
#include "wire/deadline.h"

#include <atomic>
#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <unordered_map>

namespace tavmir::host
{

struct OperationId {
    OperationKind kind = OperationKind::write;
    quint64 key = 0; // from 1 on

    bool operator==(const OperationId& other) const
    {
        return kind == other.kind && key == other.key;
    }
};

// The two numbers by which the driver knows an operation.
struct DriverKeys {
    int hostKey = 0; // above the 0..11 that colour the driver's result codes
    int varKey = 0;
};
DriverKeys driverKeys(const OperationId& id);
// None for keys that driverKeys does not make.
std::optional<OperationId> operationOf(int hostKey, int varKey);

// What is asked for, on the wire.
struct OperationShape {
    int elements = 1;
    int station = 0;
    qint32 firstAddress = 0; // in bits
    int bitsApart = 16;      // from one element to the next
    int valueBytes = 2;      // of one element; of a write 0: it brings no values
    bool isAsked = true;     // false: the session's own, nobody is told of its end
};

class OperationTracker
{
public:
    // Ended operations that nobody has claimed are kept up to this many, the oldest go first.
    static constexpr size_t kMostUnclaimed = 65536;

    explicit OperationTracker(Feed& feed) : feed_(feed) {}

    // Waits in line until the operation may be given to the driver. When that does not happen
    // before the deadline, or the host stops, it has ended at once.
    //   most  elements of the kind that may be pending with it
    OperationId admit(OperationKind kind, const OperationShape& shape, const Deadline& deadline,
                      int most);

    // One of the session's own that shares its requests with nobody: none while others are pending
    // or wait in line, and while it is pending others wait. It brings no values, and is not
    // claimed.
    std::optional<OperationId> admitAlone(OperationKind kind);

    // One that never gets as far: it has ended, for this reason.
    OperationId refuse(OperationKind kind, const OperationShape& shape, const QString& reason);

    bool isPending(const OperationId& id) const;

    // The driver has it. Under the gate.
    void given(const OperationId& id);

    // True while the driver may have something of the kind to send.
    bool hasWork(OperationKind kind) const
    {
        return given_[static_cast<int>(kind)].load(std::memory_order_relaxed) > 0;
    }

    // A request that carried `count` of its elements is over. Under the gate.
    void requestEnded(const OperationId& id, int count, const RequestAttempts& attempts);

    // A read's element came. Under the gate.
    void valueCame(const OperationId& id, qint32 address, quint32 number);

    // All of it was done at once, without a request.
    //   how  in words
    void done(const OperationId& id, const QString& how);

    // The driver is through with it. Ignored for what is not pending.
    void ended(const OperationId& id, const QString& whyLeft);

    // All of a kind that were given end. Under the gate.
    void dropGiven(OperationKind kind, const QString& whyLeft);

    // The host stops: all end, and all that are asked for from now on.
    void close(const QString& reason);

    // Given operations whose time is over; each is told once. Under the gate.
    std::vector<OperationId> takeExpired(Clock::time_point now);

    // Waits until it has ended or its time is over, and takes its outcome. None: it is still
    // pending.
    std::optional<Outcome> awaitUntilDeadline(const OperationId& id);

    // Takes the outcome of one that has ended. Of one that is pending, which nobody will ask for
    // again: what became of it so far, the rest being under way. Of one that is not known any more,
    // because it was claimed before or too many were kept: `unknown`.
    Outcome claimOrAbandon(const OperationId& id);

    // Waits until nothing of the kind is pending.
    bool awaitIdle(OperationKind kind, const Deadline& deadline);

    // Elements of the kind that are pending.
    int pending(OperationKind kind) const;

private:
    enum class Stage { admitted, given };
    using Deadlines = std::multimap<Clock::time_point, OperationId>;

    struct Operation {
        OperationKind kind = OperationKind::write;
        OperationShape shape;
        Clock::time_point deadline;
        Deadlines::iterator due; // of a given one
        Stage stage = Stage::admitted;
        bool abandoned = false;
        OperationProgress progress;
        QByteArray bytes;
    };
    using Pending = std::unordered_map<quint64, Operation>;

    struct Unclaimed {
        Outcome outcome;
        std::list<quint64>::iterator place;
    };

    struct Kind {
        std::list<quint64> line; // who waits to be admitted, in order
        std::map<int, int> operationsByStation;
        int operations = 0;
        int elements = 0;
    };

    Kind& of(OperationKind kind) { return kinds_[static_cast<int>(kind)]; }
    static quint64 nextKey();
    static bool fits(const Kind& kind, const OperationShape& shape, int most);
    void add(const OperationId& id, const OperationShape& shape, const Deadline& deadline);
    void forgetDeadline(Operation& operation);
    void end(Pending::iterator found, const QString& whyLeft);
    void end(Pending::iterator found, Outcome outcome);
    void tell(const OperationId& id, const OperationShape& shape, const Outcome& outcome);
    void keep(quint64 key, const Outcome& outcome);
    std::optional<Outcome> claim(quint64 key);

    Feed& feed_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Kind kinds_[2];
    Pending pending_;
    Deadlines deadlines_; // of given operations, until their expiry has been told
    std::unordered_map<quint64, Unclaimed> unclaimed_;
    std::list<quint64> unclaimedOrder_; // oldest first
    std::atomic<int> given_[2] = {};
    bool closed_ = false;
    QString closedReason_;
};

} // namespace tavmir::host

#endif
