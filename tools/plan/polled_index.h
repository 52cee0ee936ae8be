// Which station an element is reached at and how its value is meant, by what the polled entries
// say of the element on the wire.
#ifndef TAVMIR_PLAN_POLLED_INDEX_H
#define TAVMIR_PLAN_POLLED_INDEX_H

#include "polled_plan.h"

#include <map>

namespace tavmir::host
{

// Reading it is safe on any thread.
class PolledIndex
{
public:
    // project  checked. Its polled entries decide, whether they are polled now or not.
    explicit PolledIndex(const project::Project& project);

    // Further polled elements. Of several that name one element the last decides, as in the driver.
    void add(const std::vector<PolledElement>& polled);

    // The station that polls the element's first part; else the project's.
    int stationOf(const project::Element& element) const;

    // The format in which the element is polled, when one of its kind is and it fits; else what
    // the element's type suggests. Never `automatic`.
    project::Format formatOf(const project::Element& element) const;

private:
    // A place in one class of elements.
    using Place = std::pair<ElementClass, qint32>;

    static Place placeOf(const project::Element& element);

    int defaultStation_;
    bool ownStations_;
    std::map<Place, int> stations_;
    std::map<std::pair<Place, int>, project::Format> formats_; // bit number, or -1
};

} // namespace tavmir::host

#endif
