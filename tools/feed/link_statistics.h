// What the link and the cycle count. The communication thread counts, any thread reads.
#ifndef TAVMIR_FEED_LINK_STATISTICS_H
#define TAVMIR_FEED_LINK_STATISTICS_H

#include "latency_histogram.h"

namespace tavmir::host
{

// A number that one thread counts up and all may read.
class Counter
{
public:
    void add(uint64_t by = 1)
    {
        value_.store(value_.load(std::memory_order_relaxed) + by, std::memory_order_relaxed);
    }
    uint64_t value() const { return value_.load(std::memory_order_relaxed); }

private:
    std::atomic<uint64_t> value_{0};
};

struct LinkStatistics {
    Counter requests;       // taken from the driver, repeats not counted
    Counter replies;        // that the driver accepted
    Counter retries;        // requests sent again
    Counter giveUps;        // requests given up by the driver
    Counter timeouts;       // sent, but no answer in time
    Counter notConnected;   // not sent: no connection
    Counter suppressed;     // not sent: the station is switched off
    Counter exceptions;     // refused by the controller
    Counter discarded;      // late, duplicate or foreign frames dropped
    Counter refusedReplies; // handed over, but of the wrong length
    Counter brokenStreams;  // connections closed because the stream made no sense
    Counter connects;
    Counter connectFailures;
    Counter lostConnections;
    Counter bytesSent;
    Counter bytesReceived;
    Counter polledElements;     // read by good replies to polling
    LatencyHistogram roundTrip; // of all frames that answered a request
};

} // namespace tavmir::host

#endif
