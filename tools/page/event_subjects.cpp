// Names looked up.
#include "event_subjects.h"

#include "project/raw_address.h"
#include "wire/frame_layout.h"

namespace tavmir::host
{

namespace
{

bool isSameList(const std::vector<PolledElement>& left, const std::vector<PolledElement>& right)
{
    if (left.size() != right.size()) {
        return false;
    }
    for (size_t i = 0; i < left.size(); ++i) {
        if (left[i].name != right[i].name ||
            left[i].element.addressText != right[i].element.addressText) {
            return false;
        }
    }
    return true;
}

} // namespace

bool EventSubjects::setPolled(const std::vector<PolledElement>& polled)
{
    if (isSameList(polled, polled_)) {
        return false;
    }
    polled_ = polled;
    polledAt_.clear();
    for (const PolledElement& variable : polled_) {
        if (!variable.element.bitNumber) {
            polledAt_[wireElements(variable.element, variable.station).front()] = {
                variable.name, project::shownAddress(variable.element)};
        }
    }
    return true;
}

QString EventSubjects::inWords(const Exchange& exchange) const
{
    const auto* function = wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    if (function == nullptr || exchange.requestKept() < wire::kHeaderBytes + wire::kAddressBytes) {
        return "a request";
    }
    const int count = exchange.request[wire::kCountOffset];
    const QString first = names_.nameOf(wire::bigEndian32(exchange.request + wire::kHeaderBytes),
                                        function->valueBits);
    return count == 1
               ? QString("%1, station %2").arg(first).arg(exchange.request[wire::kStationOffset])
               : QString("%1 %2 of station %3 from %4 on")
                     .arg(count)
                     .arg(wire::elementsName(function->elements))
                     .arg(exchange.request[wire::kStationOffset])
                     .arg(first);
}

EventSubject EventSubjects::onlyOne(const Exchange& exchange) const
{
    const auto* function = wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    const bool isOne = function != nullptr && exchange.request[wire::kCountOffset] == 1 &&
                       exchange.requestKept() >= wire::kHeaderBytes + wire::kAddressBytes;
    if (!isOne) {
        return EventSubject();
    }
    const auto address =
        static_cast<qint32>(wire::bigEndian32(exchange.request + wire::kHeaderBytes));
    return at({function->elements, address, exchange.request[wire::kStationOffset]},
              function->valueBits);
}

EventSubject EventSubjects::at(const WireElement& element, int bits) const
{
    const auto found = polledAt_.find(element);
    if (found != polledAt_.end()) {
        return found->second;
    }
    const QString name = names_.nameOf(static_cast<quint32>(element.address), bits);
    return {name, name};
}

EventSubject EventSubjects::named(const QString& name) const
{
    for (const PolledElement& variable : polled_) {
        if (variable.name == name) {
            return {name, project::shownAddress(variable.element)};
        }
    }
    return {name, QString()};
}

} // namespace tavmir::host
