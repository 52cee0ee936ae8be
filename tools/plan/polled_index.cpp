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
    add(polledElements(project), false);
}

PolledIndex::Place PolledIndex::placeOf(const Element& element)
{
    return {elementClassOf(element), static_cast<qint32>(element.address)};
}

void PolledIndex::add(const std::vector<PolledElement>& polled)
{
    add(polled, true);
}

void PolledIndex::add(const std::vector<PolledElement>& polled, bool decides)
{
    for (const PolledElement& entry : polled) {
        for (const WireElement& part : wireElements(entry.element, entry.station)) {
            const Place place(part.elements, part.address);
            if (decides) {
                stations_[place] = entry.station;
            } else {
                stations_.emplace(place, entry.station);
            }
        }
        const auto key = std::make_pair(placeOf(entry.element), partOf(entry.element));
        if (decides) {
            formats_[key] = entry.format;
        } else {
            formats_.emplace(key, entry.format);
        }
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
