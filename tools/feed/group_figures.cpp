// Few groups, searched one after the other.
#include "group_figures.h"

#include <algorithm>
#include <tuple>

namespace tavmir::host
{

GroupFigures& GroupTable::of(wire::ElementClass elements, quint8 station)
{
    const auto place = std::find_if(groups_.begin(), groups_.end(), [&](const GroupFigures& one) {
        return std::tie(one.elements, one.station) >= std::tie(elements, station);
    });
    if (place != groups_.end() && place->elements == elements && place->station == station) {
        return *place;
    }
    GroupFigures fresh;
    fresh.elements = elements;
    fresh.station = station;
    return *groups_.insert(place, fresh);
}

void GroupTable::take(const Exchange& exchange)
{
    if (exchange.requestKept() < wire::kHeaderBytes || exchange.end == ExchangeEnd::stopped) {
        return;
    }
    const wire::FunctionCode* function =
        wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    if (function == nullptr) {
        return;
    }
    GroupFigures& group = of(function->elements, exchange.request[wire::kStationOffset]);
    group.sent += exchange.sentBytes > 0 ? 1 : 0;
    ++(exchange.isGood() ? group.good : group.failed);
    if (exchange.answered()) {
        group.roundTrip.add(static_cast<quint64>((exchange.endedAt - exchange.sentAt).count()));
    }
}

} // namespace tavmir::host
