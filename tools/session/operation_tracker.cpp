// Pending operations by key, the line before them, and their ends.
#include "operation_tracker.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr int kFirstHostKey = 1000;
constexpr int kVarKeyBits = 31;
constexpr int kNobodysStation = -1;

} // namespace

DriverKeys driverKeys(const OperationId& id)
{
    const auto high = static_cast<int>(id.key >> kVarKeyBits);
    const int kind = id.kind == OperationKind::write ? 0 : 1;
    return {kFirstHostKey + 2 * high + kind, static_cast<int>(id.key & 0x7FFFFFFF)};
}

std::optional<OperationId> operationOf(int hostKey, int varKey)
{
    if (hostKey < kFirstHostKey || varKey < 0) {
        return std::nullopt;
    }
    const auto high = static_cast<quint64>((hostKey - kFirstHostKey) / 2);
    const OperationKind kind =
        (hostKey - kFirstHostKey) % 2 == 0 ? OperationKind::write : OperationKind::read;
    return OperationId{kind, high << kVarKeyBits | static_cast<quint64>(varKey)};
}

quint64 OperationTracker::nextKey()
{
    static std::atomic<quint64> last{0};
    return ++last;
}

bool OperationTracker::fits(const Kind& kind, const OperationShape& shape, int most)
{
    const auto own = kind.operationsByStation.find(shape.station);
    const int sameStation = own == kind.operationsByStation.end() ? 0 : own->second;
    return sameStation == kind.operations && kind.elements + shape.elements <= most;
}

OperationId OperationTracker::admit(OperationKind kind, const OperationShape& shape,
                                    const Deadline& deadline, int most)
{
    const OperationId id{kind, nextKey()};
    std::unique_lock<std::mutex> lock(mutex_);
    Kind& list = of(kind);
    const auto place = list.line.insert(list.line.end(), id.key);
    const bool mayGo = changed_.wait_until(lock, deadline.end(), [&] {
        return closed_ || (list.line.front() == id.key && fits(list, shape, most));
    });
    list.line.erase(place);
    changed_.notify_all(); // the next in line may go too
    add(id, shape, deadline);
    if (closed_ || !mayGo) {
        end(pending_.find(id.key),
            closed_ ? closedReason_ : QString("earlier ones did not end in time"));
    }
    return id;
}

std::optional<OperationId> OperationTracker::admitAlone(OperationKind kind)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const Kind& list = of(kind);
    if (closed_ || list.operations > 0 || !list.line.empty()) {
        return std::nullopt;
    }
    OperationShape shape;
    shape.station = kNobodysStation; // so that no other fits beside it
    shape.valueBytes = 0;
    shape.isAsked = false;
    const OperationId id{kind, nextKey()};
    add(id, shape, Deadline(Clock::time_point::max(), 0));
    return id;
}

OperationId OperationTracker::refuse(OperationKind kind, const OperationShape& shape,
                                     const QString& reason)
{
    const OperationId id{kind, nextKey()};
    const std::lock_guard<std::mutex> lock(mutex_);
    add(id, shape, Deadline(0));
    end(pending_.find(id.key), reason);
    return id;
}

void OperationTracker::add(const OperationId& id, const OperationShape& shape,
                           const Deadline& deadline)
{
    Operation operation;
    operation.kind = id.kind;
    operation.shape = shape;
    operation.deadline = deadline.end();
    operation.due = deadlines_.end();
    operation.progress.elements = shape.elements;
    if (shape.valueBytes > 0) {
        operation.bytes = QByteArray(shape.elements * shape.valueBytes, '\0');
    }
    pending_.emplace(id.key, std::move(operation));
    Kind& list = of(id.kind);
    ++list.operations;
    ++list.operationsByStation[shape.station];
    list.elements += shape.elements;
}

bool OperationTracker::isPending(const OperationId& id) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return pending_.count(id.key) != 0;
}

void OperationTracker::given(const OperationId& id)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = pending_.find(id.key);
    if (found == pending_.end() || found->second.stage == Stage::given) {
        return;
    }
    Operation& operation = found->second;
    operation.stage = Stage::given;
    operation.due = deadlines_.emplace(operation.deadline, id);
    ++given_[static_cast<int>(id.kind)];
}

void OperationTracker::requestEnded(const OperationId& id, int count,
                                    const RequestAttempts& attempts)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = pending_.find(id.key);
    if (found != pending_.end()) {
        found->second.progress.requestEnded(count, attempts);
    }
}

void OperationTracker::valueCame(const OperationId& id, qint32 address, quint32 number)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = pending_.find(id.key);
    if (found == pending_.end()) {
        return;
    }
    const OperationShape& shape = found->second.shape;
    const auto distance = static_cast<quint32>(address) - static_cast<quint32>(shape.firstAddress);
    const int place = static_cast<int>(distance / static_cast<quint32>(shape.bitsApart));
    if (place < 0 || place >= shape.elements) {
        return;
    }
    for (int i = 0; i < shape.valueBytes; ++i) {
        found->second.bytes[place * shape.valueBytes + i] =
            static_cast<char>(number >> (8 * i) & 0xFF);
    }
}

void OperationTracker::forgetDeadline(Operation& operation)
{
    if (operation.due != deadlines_.end()) {
        deadlines_.erase(operation.due);
        operation.due = deadlines_.end();
    }
}

void OperationTracker::end(Pending::iterator found, const QString& whyLeft)
{
    end(found, found->second.progress.outcome(whyLeft));
}

void OperationTracker::end(Pending::iterator found, Outcome outcome)
{
    const OperationId id{found->second.kind, found->first};
    Operation operation = std::move(found->second);
    pending_.erase(found);
    forgetDeadline(operation);
    if (operation.stage == Stage::given) {
        --given_[static_cast<int>(id.kind)];
    }
    Kind& list = of(operation.kind);
    --list.operations;
    list.elements -= operation.shape.elements;
    const auto station = list.operationsByStation.find(operation.shape.station);
    if (--station->second == 0) {
        list.operationsByStation.erase(station);
    }
    outcome.bytes = operation.bytes;
    if (operation.shape.isAsked) {
        tell(id, operation.shape, outcome);
    }
    if (operation.shape.isAsked && !operation.abandoned) {
        keep(id.key, outcome);
    }
    changed_.notify_all();
}

void OperationTracker::tell(const OperationId& id, const OperationShape& shape,
                            const Outcome& outcome)
{
    FeedEntry entry = entryNow(FeedKind::operationEnded, outcome.reason);
    entry.operation = {
        id.kind,       outcome.state,      id.key,         outcome.elements, outcome.acknowledged,
        shape.station, shape.firstAddress, shape.bitsApart};
    feed_.publish(entry);
}

void OperationTracker::keep(quint64 key, const Outcome& outcome)
{
    const auto place = unclaimedOrder_.insert(unclaimedOrder_.end(), key);
    unclaimed_.emplace(key, Unclaimed{outcome, place});
    if (unclaimed_.size() > kMostUnclaimed) {
        unclaimed_.erase(unclaimedOrder_.front());
        unclaimedOrder_.pop_front();
    }
}

void OperationTracker::ended(const OperationId& id, const QString& whyLeft)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = pending_.find(id.key);
    if (found != pending_.end()) {
        end(found, whyLeft);
    }
}

void OperationTracker::done(const OperationId& id, const QString& how)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = pending_.find(id.key);
    if (found == pending_.end()) {
        return;
    }
    found->second.progress.acknowledged = found->second.shape.elements;
    Outcome outcome = found->second.progress.outcome(QString());
    outcome.reason = how;
    end(found, outcome);
}

void OperationTracker::dropGiven(OperationKind kind, const QString& whyLeft)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    for (auto operation = pending_.begin(); operation != pending_.end();) {
        const auto current = operation++;
        if (current->second.kind == kind && current->second.stage == Stage::given) {
            end(current, whyLeft);
        }
    }
}

void OperationTracker::close(const QString& reason)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
    closedReason_ = reason;
    while (!pending_.empty()) {
        end(pending_.begin(), reason);
    }
    changed_.notify_all();
}

std::vector<OperationId> OperationTracker::takeExpired(Clock::time_point now)
{
    std::vector<OperationId> expired;
    const std::lock_guard<std::mutex> lock(mutex_);
    while (!deadlines_.empty() && deadlines_.begin()->first <= now) {
        const OperationId id = deadlines_.begin()->second;
        forgetDeadline(pending_.find(id.key)->second);
        expired.push_back(id);
    }
    return expired;
}

std::optional<Outcome> OperationTracker::awaitUntilDeadline(const OperationId& id)
{
    std::unique_lock<std::mutex> lock(mutex_);
    const auto found = pending_.find(id.key);
    if (found != pending_.end()) {
        const Clock::time_point deadline = found->second.deadline;
        changed_.wait_until(lock, deadline, [&] { return pending_.count(id.key) == 0; });
    }
    return claim(id.key);
}

Outcome OperationTracker::claimOrAbandon(const OperationId& id)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = pending_.find(id.key);
    if (found != pending_.end()) {
        found->second.abandoned = true;
        return found->second.progress.outcomeSoFar();
    }
    if (const std::optional<Outcome> outcome = claim(id.key)) {
        return *outcome;
    }
    Outcome outcome;
    outcome.state = OutcomeState::unknown;
    outcome.reason = "what became of it is not known any more";
    return outcome;
}

std::optional<Outcome> OperationTracker::claim(quint64 key)
{
    const auto found = unclaimed_.find(key);
    if (found == unclaimed_.end()) {
        return std::nullopt;
    }
    Outcome outcome = std::move(found->second.outcome);
    unclaimedOrder_.erase(found->second.place);
    unclaimed_.erase(found);
    return outcome;
}

bool OperationTracker::awaitIdle(OperationKind kind, const Deadline& deadline)
{
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_until(lock, deadline.end(),
                               [&] { return closed_ || of(kind).operations == 0; });
}

int OperationTracker::pending(OperationKind kind) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return kinds_[static_cast<int>(kind)].elements;
}

} // namespace tavmir::host
