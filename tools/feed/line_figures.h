// What happened on the line, counted out of the feed. One thread.
#ifndef TAVMIR_FEED_LINE_FIGURES_H
#define TAVMIR_FEED_LINE_FIGURES_H

#include "feed_entry.h"
#include "group_figures.h"
#include "last_error.h"
#include "latency_histogram.h"

#include <map>

namespace tavmir::host
{

struct LineFigures {
    quint64 requests = 0;       // taken from the driver, repetitions not counted
    quint64 replies = 0;        // good ones
    quint64 retries = 0;        // attempts behind the first, sent or not
    quint64 giveUps = 0;        // requests given up by the driver
    quint64 timeouts = 0;       // sent, but no answer in time
    quint64 notConnected = 0;   // attempts that never left: there was no connection
    quint64 lost = 0;           // attempts sent, and lost with the connection
    quint64 suppressed = 0;     // not sent: the station is switched off
    quint64 exceptions = 0;     // refused by the controller
    quint64 discarded = 0;      // late, duplicate or foreign frames dropped
    quint64 refusedReplies = 0; // replies of the wrong length
    quint64 brokenStreams = 0;  // connections closed because the stream made no sense
    quint64 connects = 0;
    quint64 connectFailures = 0;
    quint64 lostConnections = 0;
    quint64 bytesSent = 0;
    quint64 bytesReceived = 0;
    quint64 polledElements = 0; // read by good replies to polling
    quint64 missed = 0; // entries of the feed that were missed: what they held is not in here
    LatencyHistogram roundTrip; // of all exchanges that were answered
    std::map<quint8, quint64> exceptionsByCode;
    GroupTable byElements;
    LastError lastError;
    quint64 outcomes[2][kOutcomeStates] = {}; // by OperationKind and OutcomeState

    void take(const FeedEntry& entry);
    void gap(quint64 count) { missed += count; }

    quint64 ended(OperationKind kind, OutcomeState state) const
    {
        return outcomes[static_cast<int>(kind)][static_cast<int>(state)];
    }
    quint64 ended(OperationKind kind) const;
    // First ones and repetitions, sent or not.
    quint64 attempts() const { return requests + retries; }

private:
    void takeExchange(const Exchange& exchange);
};

} // namespace tavmir::host

#endif
