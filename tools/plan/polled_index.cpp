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
        formats_[{placeOf(entry.element), partOf(entry.element)}] = entry.format;
    }
}

int PolledIndex::stationOf(const Element& element) const
{
    if (!ownStations_) {
        return defaultStation_;
    }
    const auto found = stations_.find(placeOf(element));
    return found == stations_.end() ? defaultStation_ : found->second;
}

Format PolledIndex::formatOf(const Element& element) const
{
    const auto found = formats_.find({placeOf(element), partOf(element)});
    const Format wanted = found == formats_.end() ? Format::automatic : found->second;
    return project::effectiveFormat(element, wanted);
}

} // namespace tavmir::host
