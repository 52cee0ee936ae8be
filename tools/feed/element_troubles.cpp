// Requests taken apart, into elements by place.
#include "element_troubles.h"

#include "wire/frame_layout.h"

namespace tavmir::host
{

namespace
{

// Calls `one` with the class, station and address of each element that the request names.
template <typename One> void forEachElement(const Exchange& exchange, One one)
{
    const wire::FunctionCode* function =
        wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    if (function == nullptr || exchange.requestKept() < wire::kHeaderBytes) {
        return;
    }
    const quint8 station = exchange.request[wire::kStationOffset];
    const unsigned char* entry = exchange.request + wire::kHeaderBytes;
    const size_t bytes = exchange.requestKept() - wire::kHeaderBytes;
    for (size_t left = bytes / function->requestEntryBytes(); left > 0; --left) {
        one(function->elements, station, static_cast<qint32>(wire::bigEndian32(entry)));
        entry += function->requestEntryBytes();
    }
}

Clock::rep ticks(Clock::time_point time)
{
    return time.time_since_epoch().count();
}

ElementClass classOf(int bitsApart)
{
    if (bitsApart == 1) {
        return ElementClass::bits;
    }
    return bitsApart == 16 ? ElementClass::words : ElementClass::doubleWords;
}

} // namespace

quint64 ElementTroubles::keyOf(ElementClass elements, quint8 station, qint32 address)
{
    return static_cast<quint64>(elements) << 40 | static_cast<quint64>(station) << 32 |
           static_cast<quint32>(address);
}

void ElementTroubles::readGivenUp(const Exchange& exchange, const QString& why)
{
    const quint32 count = exchange.request[wire::kCountOffset];
    const bool refused = exchange.end == ExchangeEnd::exception;
    const bool ofLink = exchange.end == ExchangeEnd::lost || exchange.end == ExchangeEnd::notSent;
    forEachElement(exchange, [&](ElementClass elements, quint8 station, qint32 address) {
        ElementTrouble& trouble = troubles_[keyOf(elements, station, address)];
        trouble.failedAt = ticks(exchange.endedAt);
        trouble.failure = why;
        trouble.inRequestOf = count;
        trouble.refused = refused;
        trouble.ofLink = ofLink;
        if (refused && count == 1) {
            trouble.refusedAloneAt = trouble.failedAt;
            trouble.refusalAlone = why;
        }
    });
}

void ElementTroubles::writeTried(const Exchange& exchange, const QString& why)
{
    const bool good = exchange.isGood();
    if (good && troubles_.empty()) {
        return;
    }
    const QString problem = good ? QString() : "a write of it is not acknowledged: " + why;
    forEachElement(exchange, [&](ElementClass elements, quint8 station, qint32 address) {
        const quint64 key = keyOf(elements, station, address);
        if (good) {
            const auto found = troubles_.find(key);
            if (found != troubles_.end()) {
                found->second.writtenAt = 0;
            }
            return;
        }
        ElementTrouble& trouble = troubles_[key];
        trouble.writtenAt = ticks(exchange.endedAt);
        trouble.writeProblem = problem;
    });
}

void ElementTroubles::writeEnded(const FeedEntry& ended)
{
    const OperationEnd& operation = ended.operation;
    Outcome outcome;
    outcome.state = operation.state;
    outcome.reason = ended.text;
    const QString problem = "a write of it ended as " + outcomeInWords(outcome);
    const ElementClass elements = classOf(operation.bitsApart);
    auto address = static_cast<quint32>(operation.firstAddress);
    for (int i = 0; i < operation.elements; ++i) {
        ElementTrouble& trouble = troubles_[keyOf(elements, static_cast<quint8>(operation.station),
                                                  static_cast<qint32>(address))];
        trouble.writtenAt = ticks(ended.at);
        trouble.writeProblem = problem;
        address += static_cast<quint32>(operation.bitsApart);
    }
}

const ElementTrouble* ElementTroubles::find(const WireElement& element) const
{
    const auto found = troubles_.find(keyOf(element.elements, element.station, element.address));
    return found == troubles_.end() ? nullptr : &found->second;
}

} // namespace tavmir::host
