// When each polled element was last read from the controller. Not locked: its users hold the
// driver gate.
#ifndef TAVMIR_FEED_AGE_TABLE_H
#define TAVMIR_FEED_AGE_TABLE_H

#include "plan/polled_plan.h"
#include "wire/deadline.h"

#include <optional>

namespace tavmir::host
{

using wire::Clock;

class AgeTable
{
public:
    AgeTable() = default;
    // order  ascending, without duplicates
    explicit AgeTable(std::vector<WireElement> order);

    size_t size() const { return order_.size(); }

    // A good reply brought the `count` elements whose big-endian 32-bit addresses stand one
    // behind the other. They are neighbours in the order, so only the first is searched.
    void readNow(ValueClass valueClass, const unsigned char* addresses, size_t count,
                 Clock::time_point now);

    // The oldest read of the element's parts; none when one was never read.
    std::optional<Clock::time_point> lastRead(const project::Element& element) const;

private:
    size_t find(const WireElement& element) const; // size() when missing

    std::vector<WireElement> order_;
    std::vector<Clock::time_point> read_; // the epoch: never
};

} // namespace tavmir::host

#endif
