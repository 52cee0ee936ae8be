// How the line has been lately, folded out of the feed: the last pass, the latest round trips, the
// failures of the last minute. One thread.
#ifndef TAVMIR_FEED_RECENT_FIGURES_H
#define TAVMIR_FEED_RECENT_FIGURES_H

#include "feed_entry.h"

#include <array>
#include <optional>

namespace tavmir::host
{

// What failed within some time.
struct FailureCounts {
    quint64 timeouts = 0;
    quint64 retries = 0;
    quint64 giveUps = 0;
    quint64 exceptions = 0;
    quint64 lostConnections = 0;
    quint64 failedConnects = 0;
    quint64 late = 0; // late, duplicate or foreign frames; no failure by themselves

    FailureCounts& operator+=(const FailureCounts& other);
    bool none() const;
};

struct RecentLine {
    // The last whole pass over the polled list on this connection; none: not yet.
    std::optional<double> passMs;
    // The median of the latest on this connection; none: nothing was answered in the last minute.
    std::optional<double> roundTripMs;
    FailureCounts lastMinute;
    // As roundTripMs; 99 of 100 are no longer.
    std::optional<double> slowRoundTripMs = std::nullopt;
};

class RecentFigures
{
public:
    void take(const FeedEntry& entry);
    RecentLine at(Clock::time_point now) const;

private:
    static constexpr size_t kSeconds = 60;
    static constexpr size_t kRoundTrips = 256;

    // What happened within one second.
    struct Second {
        qint64 number = -1;
        FailureCounts counts;
    };

    FailureCounts& countsAt(Clock::time_point time);
    void takeExchange(const Exchange& exchange);
    void forgetConnection();
    void polled(size_t elements, Clock::time_point until);
    void beginList(const PolledGeneration& plan);

    std::array<Second, kSeconds> seconds_;
    std::array<qint64, kRoundTrips> roundTrips_ = {}; // nanoseconds; the oldest is overwritten
    size_t answered_ = 0;
    Clock::time_point lastAnswer_;

    size_t listed_ = 0;   // elements of the polled list on the wire
    size_t inPass_ = 0;   // of them asked for in this pass
    size_t inFlight_ = 0; // elements of the latest polling request
    bool isCut_ = false;  // the connection went in this pass: its time is not one of the line
    std::optional<Clock::time_point> passBegan_;
    std::optional<double> passMs_;
};

} // namespace tavmir::host

#endif
