// Polled entries as elements and as driver records.
#include "polled_plan.h"

#include "label_tree.h"
#include "project/address_expansion.h"
#include "project/value_format.h"

#include <algorithm>

namespace tavmir::host
{

using project::Element;

std::vector<PolledElement> polledElements(const project::Project& project)
{
    std::vector<PolledElement> list;
    for (const project::Polled& polled : project.polled) {
        const project::Expansion expansion =
            project::expandAddress(project, polled.address, polled.count);
        const int station = project.connection.ownStations
                                ? polled.station.value_or(project.connection.station)
                                : project.connection.station;
        const bool named = polled.name != polled.address;
        int number = 0;
        for (const Element& element : expansion.elements) {
            PolledElement entry;
            entry.element = element;
            entry.format = project::effectiveFormat(element, polled.format);
            entry.formatIsGiven = entry.format == polled.format;
            entry.name = named ? polled.name : element.addressText;
            if (named && expansion.elements.size() > 1) {
                entry.name += QString(" (%1)").arg(++number);
            }
            entry.station = station;
            list.push_back(entry);
        }
    }
    return list;
}

QList<HOSTVAR> hostRecords(const std::vector<PolledElement>& polled)
{
    QList<HOSTVAR> records;
    records.reserve(static_cast<int>(polled.size()));
    for (const PolledElement& entry : polled) {
        HOSTVAR record;
        record.station = static_cast<quint8>(entry.station);
        record.addressText = pollAddress(entry.element);
        record.auxText = entry.name;
        record.count = pollCount(entry.element);
        records << record;
    }
    return records;
}

std::vector<WireElement> wireOrder(const std::vector<PolledElement>& polled)
{
    std::vector<WireElement> order;
    for (const PolledElement& entry : polled) {
        const std::vector<WireElement> elements = wireElements(entry.element, entry.station);
        order.insert(order.end(), elements.begin(), elements.end());
    }
    const auto before = [](const WireElement& left, const WireElement& right) {
        return std::make_pair(left.elements, left.address) <
               std::make_pair(right.elements, right.address);
    };
    std::stable_sort(order.begin(), order.end(), before);
    std::vector<WireElement> unique;
    for (const WireElement& element : order) {
        if (!unique.empty() && unique.back().samePlace(element)) {
            unique.back() = element;
        } else {
            unique.push_back(element);
        }
    }
    return unique;
}

} // namespace tavmir::host
