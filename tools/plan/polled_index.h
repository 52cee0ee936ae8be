// Which station an element is reached at and how its value is meant, by what the polled entries
// say of the element on the wire.
#ifndef TAVMIR_PLAN_POLLED_INDEX_H
#define TAVMIR_PLAN_POLLED_INDEX_H

#include "polled_plan.h"

#include <map>
#include <tuple>

namespace tavmir::host
{

// Reading it is safe on any thread.
class PolledIndex
{
public:
    // project  checked. Its polled entries decide, whether they are polled now or not.
    explicit PolledIndex(const project::Project& project);

    // Further polled elements. Of several that name one element the last decides, as in the driver;
    // of its format the last that says one.
    void add(const std::vector<PolledElement>& polled);

    // The station that polls the element's first part; else, and for one without a variable, the
    // project's.
    int stationOf(const project::Element& element) const;

    // How the element's values are meant: as the entry says that polls it, itself or with others,
    // else as it is declared, else as its type suggests. A double word is a float where a real is
    // polled. Never `automatic`.
    project::Format formatOf(const project::Element& element) const;

private:
    // A place in one class of elements.
    using Place = std::pair<ElementClass, qint32>;

    // A value of one type there, or one bit of it.
    struct Value {
        Place place;
        int bitNumber; // -1: all of it
        project::DataType type;
        bool operator<(const Value& other) const
        {
            return std::tie(place, bitNumber, type) <
                   std::tie(other.place, other.bitNumber, other.type);
        }
    };
    struct PolledFormat {
        project::Format format = project::Format::automatic;
        bool isGiven = false;
    };

    static Place placeOf(const project::Element& element);
    static Value valueOf(const project::Element& element);
    const PolledFormat* find(const project::Element& element) const;

    int defaultStation_;
    bool ownStations_;
    std::map<Place, int> stations_;
    std::map<Value, PolledFormat> formats_;
};

} // namespace tavmir::host

#endif
