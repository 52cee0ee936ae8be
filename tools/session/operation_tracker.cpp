// Pending operations by key, and waiting for their ends.
#include "operation_tracker.h"

#include <limits>

namespace tavmir::host
{

OperationId OperationTracker::begin(OperationKind kind, int elements, int station)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Kind& list = of(kind);
    while (list.operations.count(list.nextKey) != 0) {
        list.nextKey = list.nextKey == std::numeric_limits<int>::max() ? 1 : list.nextKey + 1;
    }
    Operation operation;
    operation.elements = elements;
    operation.station = station;
    const OperationId id{kind, list.nextKey};
    list.operations[id.key] = operation;
    list.pendingElements += elements;
    ++list.counts.begun;
    list.nextKey = list.nextKey == std::numeric_limits<int>::max() ? 1 : list.nextKey + 1;
    if (closed_) {
        drop(list, closedReason_);
    }
    return id;
}

void OperationTracker::end(Kind& kind, std::map<int, Operation>::iterator operation,
                           OperationState state, const QString& reason)
{
    kind.pendingElements -= operation->second.elements;
    if (operation->second.abandoned) {
        kind.operations.erase(operation);
        return;
    }
    operation->second.ended = true;
    operation->second.outcome = {state, reason};
}

void OperationTracker::finished(int hostKeyOfDriver, int varKey, bool ok, const QString& reason)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const OperationKind kind : {OperationKind::write, OperationKind::read}) {
        Kind& list = of(kind);
        const auto operation = list.operations.find(varKey);
        if (hostKeyOfDriver != hostKey(kind) || operation == list.operations.end() ||
            operation->second.ended) {
            continue;
        }
        ++(ok ? list.counts.done : list.counts.reportedFailed);
        end(list, operation, ok ? OperationState::done : OperationState::failed, reason);
    }
    changed_.notify_all();
}

void OperationTracker::drop(Kind& kind, const QString& reason)
{
    for (auto operation = kind.operations.begin(); operation != kind.operations.end();) {
        const auto current = operation++;
        if (!current->second.ended) {
            ++kind.counts.dropped;
            end(kind, current, OperationState::failed, reason);
        }
    }
}

void OperationTracker::dropAll(OperationKind kind, const QString& reason)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    drop(of(kind), reason);
    changed_.notify_all();
}

void OperationTracker::close(const QString& reason)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
    closedReason_ = reason;
    for (Kind& kind : kinds_) {
        drop(kind, reason);
    }
    changed_.notify_all();
}

void OperationTracker::cancel(const OperationId& id)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Kind& list = of(id.kind);
    const auto operation = list.operations.find(id.key);
    if (operation == list.operations.end()) {
        return;
    }
    list.pendingElements -= operation->second.elements;
    --list.counts.begun;
    list.operations.erase(operation);
    changed_.notify_all();
}

OperationOutcome OperationTracker::await(const OperationId& id, const Deadline& deadline)
{
    std::unique_lock<std::mutex> lock(mutex_);
    Kind& list = of(id.kind);
    const auto operation = list.operations.find(id.key);
    if (operation == list.operations.end()) {
        return {OperationState::failed, "the driver did not take it"};
    }
    const bool ended =
        changed_.wait_until(lock, deadline.end(), [&] { return operation->second.ended; });
    if (!ended) {
        operation->second.abandoned = true;
        return {OperationState::unknown, "no result in time"};
    }
    const OperationOutcome outcome = operation->second.outcome;
    list.operations.erase(operation);
    return outcome;
}

bool OperationTracker::idleFor(const Kind& kind, int station)
{
    for (const auto& operation : kind.operations) {
        if (!operation.second.ended && operation.second.station != station) {
            return false;
        }
    }
    return true;
}

bool OperationTracker::awaitIdle(OperationKind kind, int station, const Deadline& deadline)
{
    std::unique_lock<std::mutex> lock(mutex_);
    const Kind& list = of(kind);
    return changed_.wait_until(lock, deadline.end(), [&] { return idleFor(list, station); });
}

bool OperationTracker::awaitRoom(OperationKind kind, int elements, const Deadline& deadline)
{
    std::unique_lock<std::mutex> lock(mutex_);
    const Kind& list = of(kind);
    return changed_.wait_until(lock, deadline.end(),
                               [&] { return list.pendingElements <= elements; });
}

OperationCounts OperationTracker::counts(OperationKind kind) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return kinds_[kind == OperationKind::write ? 0 : 1].counts;
}

} // namespace tavmir::host
