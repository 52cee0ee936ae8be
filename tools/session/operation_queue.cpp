// From elements to the driver's calls.
#include "operation_queue.h"

#include "cycle_thread.h"
#include "plan/host_checks.h"

#include <limits>

namespace tavmir::host
{

using project::Element;

namespace
{

constexpr int kOnceReadRoom = 1024; // what is beyond, the driver drops in silence
constexpr int kAnyNumber = std::numeric_limits<int>::max();

OperationShape shapeOf(const Element& element, int station)
{
    OperationShape shape;
    shape.elements = project::wireElementCount(element);
    shape.station = station;
    shape.firstAddress = static_cast<qint32>(element.address);
    shape.bitsApart = project::wireElementBits(element);
    shape.valueBytes = valueBytesOf(elementClassOf(element));
    return shape;
}

} // namespace

OperationQueue::OperationQueue(SessionState& state, const project::Project& project,
                               std::function<void()> wake)
    : state_(state), project_(project), wake_(std::move(wake))
{
}

OperationId OperationQueue::give(OperationKind kind, const OperationShape& shape,
                                 const Deadline& deadline, int most, const Give& call)
{
    OperationTracker& operations = state_.operations;
    const OperationId id = operations.admit(kind, shape, deadline, most);
    {
        const std::lock_guard<std::mutex> gate(state_.gate);
        if (!operations.isPending(id)) {
            return id;
        }
        operations.given(id);
        if (call(driverKeys(id)) == 0) {
            operations.ended(id, "the driver did not take it");
            return id;
        }
        if (kind == OperationKind::write && !writesToController()) {
            operations.done(id, "stored in the caches only, as the project says");
        }
    }
    wake_();
    return id;
}

OperationId OperationQueue::read(const Element& element, int station, const Deadline& deadline)
{
    const OperationShape shape = shapeOf(element, station);
    const QString refusal = refusalOfExchange(project_, element);
    if (!refusal.isEmpty()) {
        return state_.operations.refuse(OperationKind::read, shape, refusal);
    }
    return give(OperationKind::read, shape, deadline, kOnceReadRoom, [&](const DriverKeys& keys) {
        RW_VAR variable;
        variable.hostKey = keys.hostKey;
        variable.varKey = keys.varKey;
        variable.addressText = element.addressText;
        variable.station = station;
        variable.count = project::driverCount(element);
        return state_.api.addOnceRead(&variable);
    });
}

OperationId OperationQueue::write(const Element& element, int station, QByteArray bytes,
                                  const Deadline& deadline)
{
    const QString refusal = refusalOfExchange(project_, element);
    if (!refusal.isEmpty()) {
        return refuseWrite(element, station, refusal);
    }
    OperationShape shape = shapeOf(element, station);
    shape.valueBytes = 0;
    const auto call = [&](const DriverKeys& keys) {
        const int queued =
            state_.api.writeValue(element.addressText, 0, QString(), station, &bytes,
                                  project::driverCount(element), keys.hostKey, keys.varKey);
        return writesToController() ? queued : 1;
    };
    return give(OperationKind::write, shape, deadline, kAnyNumber, call);
}

OperationId OperationQueue::refuseWrite(const Element& element, int station, const QString& reason)
{
    OperationShape shape = shapeOf(element, station);
    shape.valueBytes = 0;
    return state_.operations.refuse(OperationKind::write, shape, reason);
}

OperationId OperationQueue::writeRecord(RW_VAR record, const Deadline& deadline)
{
    OperationShape shape;
    shape.station = record.station;
    shape.firstAddress = record.elementAddress;
    shape.valueBytes = 0;
    const QString refusal = refusalOfWriteRecord(&record);
    if (!refusal.isEmpty()) {
        return state_.operations.refuse(OperationKind::write, shape, refusal);
    }
    return give(OperationKind::write, shape, deadline, kAnyNumber, [&](const DriverKeys& keys) {
        record.hostKey = keys.hostKey;
        record.varKey = keys.varKey;
        return state_.api.addWrite(&record);
    });
}

Outcome OperationQueue::await(const OperationId& id)
{
    OperationTracker& operations = state_.operations;
    if (const std::optional<Outcome> outcome = operations.awaitUntilDeadline(id)) {
        return *outcome;
    }
    {
        const std::lock_guard<std::mutex> gate(state_.gate);
        CycleThread::withdrawExpired(state_);
    }
    return operations.claimOrAbandon(id);
}

bool OperationQueue::awaitNoWrites(const Deadline& deadline)
{
    return state_.operations.awaitIdle(OperationKind::write, deadline);
}

} // namespace tavmir::host
