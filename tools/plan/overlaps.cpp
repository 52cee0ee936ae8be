// Ranges of bits, in order.
#include "overlaps.h"

#include <algorithm>
#include <tuple>

namespace tavmir::host
{

namespace
{

struct Range {
    ElementClass elements = ElementClass::bits;
    int station = 0;
    qint64 begin = 0; // in bits
    qint64 end = 0;
    size_t variable = 0;

    bool operator<(const Range& other) const
    {
        return std::tie(elements, station, begin, end, variable) <
               std::tie(other.elements, other.station, other.begin, other.end, other.variable);
    }
    bool reachesInto(const Range& next) const
    {
        return elements == next.elements && station == next.station && end > next.begin;
    }
};

Range rangeOf(const PolledElement& polled, size_t variable)
{
    const project::Element& element = polled.element;
    Range range;
    range.elements = elementClassOf(element);
    range.station = polled.station;
    range.begin = static_cast<qint64>(element.address) + element.bitNumber.value_or(0);
    range.end = range.begin +
                (element.bitNumber ? 1
                                   : static_cast<qint64>(project::wireElementBits(element)) *
                                         project::wireElementCount(element));
    range.variable = variable;
    return range;
}

} // namespace

std::vector<Overlap> overlapsOf(const std::vector<PolledElement>& polled)
{
    std::vector<Range> ranges;
    for (size_t i = 0; i < polled.size(); ++i) {
        ranges.push_back(rangeOf(polled[i], i));
    }
    std::sort(ranges.begin(), ranges.end());
    std::vector<Overlap> overlaps;
    size_t furthest = 0; // the one before that reaches furthest
    for (size_t i = 1; i < ranges.size(); ++i) {
        if (ranges[furthest].reachesInto(ranges[i])) {
            overlaps.push_back({ranges[furthest].variable, ranges[i].variable});
        }
        const bool isOther = ranges[furthest].elements != ranges[i].elements ||
                             ranges[furthest].station != ranges[i].station;
        if (isOther || ranges[i].end > ranges[furthest].end) {
            furthest = i;
        }
    }
    return overlaps;
}

} // namespace tavmir::host
