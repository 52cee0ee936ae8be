// Addresses compared: as texts, as variables, as elements on the wire.
#include "polled_place.h"

#include "project/raw_address.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

template <typename Is>
std::optional<size_t> firstThat(const std::vector<PolledElement>& polled, Is is)
{
    const auto found = std::find_if(polled.begin(), polled.end(), is);
    return found == polled.end()
               ? std::nullopt
               : std::optional<size_t>(static_cast<size_t>(found - polled.begin()));
}

// A label has one station.
bool isSameVariable(const project::Element& one, const project::Element& other)
{
    const auto labelOf = [](const project::Element& element) {
        return element.addressText.section('.', 0, 0);
    };
    return !one.isRaw && !other.isRaw && labelOf(one) == labelOf(other) && one.type == other.type &&
           one.address == other.address && one.bitNumber == other.bitNumber &&
           one.words == other.words;
}

} // namespace

std::optional<size_t> placeOf(const std::vector<PolledElement>& polled, const QString& address)
{
    return firstThat(polled, [&](const PolledElement& variable) {
        return project::shownAddress(variable.element) == address;
    });
}

std::optional<size_t> placeOfVariable(const std::vector<PolledElement>& polled,
                                      const project::Element& element)
{
    const std::optional<size_t> spelt = placeOf(polled, project::shownAddress(element));
    return spelt ? spelt : firstThat(polled, [&](const PolledElement& variable) {
        return isSameVariable(variable.element, element);
    });
}

std::optional<size_t> placeOfMemory(const std::vector<PolledElement>& polled,
                                    const project::Element& element, int station)
{
    const std::optional<size_t> own = placeOfVariable(polled, element);
    const std::vector<WireElement> parts = wireElements(element, station);
    return own ? own : firstThat(polled, [&](const PolledElement& variable) {
        return variable.element.bitNumber == element.bitNumber &&
               wireElements(variable.element, variable.station) == parts;
    });
}

} // namespace tavmir::host
