// What became of the requests of one class of elements at one station. A request has no number of
// its own to count by: the driver begins each pass where the last one ended.
#ifndef TAVMIR_FEED_GROUP_FIGURES_H
#define TAVMIR_FEED_GROUP_FIGURES_H

#include "exchange.h"
#include "latency_histogram.h"
#include "wire/frame_layout.h"

#include <vector>

namespace tavmir::host
{

struct GroupFigures {
    wire::ElementClass elements = wire::ElementClass::bits;
    quint8 station = 0;
    quint64 sent = 0;           // attempts of which a byte left
    quint64 good = 0;           // good replies
    quint64 failed = 0;         // all other attempts, sent or not
    LatencyHistogram roundTrip; // of those that were answered
};

class GroupTable
{
public:
    void take(const Exchange& exchange);

    // By class, then station.
    const std::vector<GroupFigures>& groups() const { return groups_; }

private:
    GroupFigures& of(wire::ElementClass elements, quint8 station);

    std::vector<GroupFigures> groups_;
};

} // namespace tavmir::host

#endif
