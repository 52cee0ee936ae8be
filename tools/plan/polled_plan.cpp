// Polled entries as elements and as driver records.
#include "polled_plan.h"

#include "label_tree.h"
#include "project/address_expansion.h"
#include "project/value_format.h"

#include <algorithm>

namespace tavmir::host
{

using project::DataType;
using project::Element;

ValueClass valueClassOf(const Element& element)
{
    if (element.type == DataType::bit) {
        return ValueClass::bits;
    }
    return element.type == DataType::dword || element.type == DataType::real
               ? ValueClass::doubleWords
               : ValueClass::words;
}

std::vector<WireElement> wireElements(const Element& element)
{
    std::vector<WireElement> list;
    quint32 address = element.address;
    for (int i = 0; i < project::wireElementCount(element); ++i) {
        list.push_back({valueClassOf(element), static_cast<qint32>(address)});
        address += static_cast<quint32>(project::wireElementBits(element));
    }
    return list;
}

std::vector<PolledElement> polledElements(const project::Project& project)
{
    std::vector<PolledElement> list;
    for (const project::Polled& polled : project.polled) {
        const project::Expansion expansion =
            project::expandAddress(project, polled.address, polled.count);
        const bool named = polled.name != polled.address;
        int number = 0;
        for (const Element& element : expansion.elements) {
            PolledElement entry;
            entry.element = element;
            entry.format = project::effectiveFormat(element, polled.format);
            entry.name = named ? polled.name : element.addressText;
            if (named && expansion.elements.size() > 1) {
                entry.name += QString(" (%1)").arg(++number);
            }
            entry.station = polled.station.value_or(project.connection.station);
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
        const std::vector<WireElement> elements = wireElements(entry.element);
        order.insert(order.end(), elements.begin(), elements.end());
    }
    std::sort(order.begin(), order.end());
    order.erase(std::unique(order.begin(), order.end()), order.end());
    return order;
}

} // namespace tavmir::host
