// Stations and formats by place.
#include "polled_index.h"

#include "project/value_format.h"

namespace tavmir::host
{

using project::Element;
using project::Format;

namespace
{

constexpr int kWholeElement = -1;

int partOf(const Element& element)
{
    return element.bitNumber.value_or(kWholeElement);
}

} // namespace

PolledIndex::PolledIndex(const project::Project& project)
    : defaultStation_(project.connection.station), ownStations_(project.connection.ownStations)
{
    add(polledElements(project));
}

PolledIndex::Place PolledIndex::placeOf(const Element& element)
{
    return {elementClassOf(element), static_cast<qint32>(element.address)};
}

void PolledIndex::add(const std::vector<PolledElement>& polled)
{
    for (const PolledElement& entry : polled) {
        for (const WireElement& part : wireElements(entry.element, entry.station)) {
            stations_[{part.elements, part.address}] = entry.station;
        }
        const bool isGiven =
            entry.formatIsGiven ||
            entry.format != project::effectiveFormat(entry.element, Format::automatic);
        PolledFormat& polledFormat = formats_[valueOf(entry.element)];
        if (isGiven || !polledFormat.isGiven) {
            polledFormat = {entry.format, isGiven};
        }
    }
}

int PolledIndex::stationOf(const Element& element) const
{
    if (!ownStations_ || element.isRaw) {
        return defaultStation_;
    }
    const auto found = stations_.find(placeOf(element));
    return found == stations_.end() ? defaultStation_ : found->second;
}

PolledIndex::Value PolledIndex::valueOf(const Element& element)
{
    return {placeOf(element), partOf(element), element.type};
}

const PolledIndex::PolledFormat* PolledIndex::find(const Element& element) const
{
    Value value = valueOf(element);
    auto found = formats_.find(value);
    if (found == formats_.end() && element.type == project::DataType::dword) {
        value.type = project::DataType::real;
        found = formats_.find(value);
    }
    return found == formats_.end() ? nullptr : &found->second;
}

Format PolledIndex::formatOf(const Element& element) const
{
    const PolledFormat* polled = find(element);
    const bool isDeclared = element.format != Format::automatic;
    if (polled == nullptr || (isDeclared && !polled->isGiven)) {
        return project::effectiveFormat(element, Format::automatic);
    }
    return project::effectiveFormat(element, polled->format);
}

} // namespace tavmir::host
