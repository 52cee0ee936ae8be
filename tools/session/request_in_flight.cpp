// One request's life.
#include "request_in_flight.h"

#include "driver/request_lists.h"
#include "wire/frame_layout.h"

#include <algorithm>
#include <limits>
#include <map>

namespace tavmir::host
{

RequestKind RequestInFlight::kindOf(const Protocol& request)
{
    const auto code =
        static_cast<quint8>(request.frame.at(static_cast<int>(wire::kFunctionOffset)));
    const wire::FunctionCode* function = wire::findFunctionCode(code);
    if (function != nullptr && function->write) {
        return RequestKind::write;
    }
    return operationOf(request.var.hostKey, request.var.varKey) ? RequestKind::read
                                                                : RequestKind::poll;
}

void RequestInFlight::begin(const Communication_Protocol& driver, const Protocol& request,
                            quint32 generation)
{
    active_ = true;
    kind_ = kindOf(request);
    attempt_ = 1;
    generation_ = generation;
    attempts_ = RequestAttempts();
    carried_.clear();
    if (kind_ == RequestKind::poll) {
        return;
    }
    for (const BatchEntry& entry : currentBatch(driver)) {
        carried_.push_back(operationOf(entry.hostKey, entry.varKey).value_or(OperationId()));
    }
}

void RequestInFlight::attempted(const Exchange& exchange, const QString& problem)
{
    attempts_.add(exchange, problem);
    if (attempt_ < std::numeric_limits<quint32>::max()) {
        ++attempt_;
    }
}

void RequestInFlight::end(OperationTracker& operations, const QByteArray& reply)
{
    active_ = false;
    tellValues(operations, reply);
    std::map<quint64, int> counts;
    for (const OperationId& id : carried_) {
        ++counts[id.key];
    }
    const OperationKind kind =
        kind_ == RequestKind::write ? OperationKind::write : OperationKind::read;
    for (const auto& [key, count] : counts) {
        operations.requestEnded({kind, key}, count, attempts_);
    }
}

void RequestInFlight::tellValues(OperationTracker& operations, const QByteArray& reply) const
{
    if (kind_ != RequestKind::read || reply.isEmpty()) {
        return;
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(reply.constData());
    const wire::FunctionCode* function = wire::findFunctionCode(bytes[wire::kFunctionOffset]);
    if (function == nullptr) {
        return;
    }
    const size_t size = static_cast<size_t>(reply.size()) - wire::kHeaderBytes;
    const size_t count = std::min(carried_.size(), size / function->entryBytes());
    for (size_t i = 0; i < count; ++i) {
        const unsigned char* entry = bytes + wire::kHeaderBytes + i * function->entryBytes();
        operations.valueCame(
            carried_[i], static_cast<qint32>(wire::bigEndian32(entry)),
            wire::bigEndianNumber(entry + wire::kAddressBytes, function->valueBytes));
    }
}

int RequestInFlight::entriesOf(OperationKind kind) const
{
    const RequestKind own = kind == OperationKind::write ? RequestKind::write : RequestKind::read;
    return active_ && kind_ == own ? static_cast<int>(carried_.size()) : 0;
}

bool RequestInFlight::carries(const OperationId& id) const
{
    return active_ && std::find(carried_.begin(), carried_.end(), id) != carried_.end();
}

} // namespace tavmir::host
