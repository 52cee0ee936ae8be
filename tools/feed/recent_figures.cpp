// A ring of seconds, a ring of round trips, and the elements of a pass counted off.
#include "recent_figures.h"

#include "wire/frame_layout.h"

#include <algorithm>
#include <vector>

namespace tavmir::host
{

namespace
{

qint64 secondOf(Clock::time_point time)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

double msOf(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

// Of the trips, if they were sorted, the one at this place.
double msAt(std::vector<qint64>& trips, size_t place)
{
    const auto found = trips.begin() + static_cast<std::ptrdiff_t>(place);
    std::nth_element(trips.begin(), found, trips.end());
    return static_cast<double>(*found) / 1e6;
}

} // namespace

FailureCounts& FailureCounts::operator+=(const FailureCounts& other)
{
    timeouts += other.timeouts;
    retries += other.retries;
    giveUps += other.giveUps;
    exceptions += other.exceptions;
    lostConnections += other.lostConnections;
    failedConnects += other.failedConnects;
    late += other.late;
    return *this;
}

bool FailureCounts::none() const
{
    return timeouts + retries + giveUps + exceptions + lostConnections + failedConnects == 0;
}

void RecentFigures::take(const FeedEntry& entry)
{
    if (entry.kind == FeedKind::planChanged && entry.plan) {
        beginList(*entry.plan);
    }
    if (entry.standing) {
        return;
    }
    switch (entry.kind) {
    case FeedKind::exchange:
        takeExchange(entry.exchange);
        break;
    case FeedKind::gaveUp:
        ++countsAt(entry.at).giveUps;
        polled(inFlight_, entry.at); // the next request goes on behind it
        break;
    case FeedKind::connectionLost:
        ++countsAt(entry.at).lostConnections;
        forgetConnection();
        break;
    case FeedKind::connectFailed:
        ++countsAt(entry.at).failedConnects;
        break;
    case FeedKind::framesDropped:
        countsAt(entry.at).late += entry.frames;
        break;
    default:
        break;
    }
}

// What was measured on a connection says nothing of a line that is down, nor of the next one.
void RecentFigures::forgetConnection()
{
    answered_ = 0;
    passMs_.reset();
    isCut_ = true; // the list goes on where it stood
}

FailureCounts& RecentFigures::countsAt(Clock::time_point time)
{
    const qint64 number = secondOf(time);
    Second& second = seconds_[static_cast<size_t>(number) % kSeconds];
    if (second.number != number) {
        second = {number, FailureCounts()};
    }
    return second.counts;
}

void RecentFigures::takeExchange(const Exchange& exchange)
{
    FailureCounts& counts = countsAt(exchange.endedAt);
    counts.retries += exchange.attempt > 1 ? 1 : 0;
    counts.exceptions += exchange.end == ExchangeEnd::exception ? 1 : 0;
    const bool late = exchange.end == ExchangeEnd::timeout || exchange.end == ExchangeEnd::cut;
    counts.timeouts += late ? 1 : 0;
    counts.late += exchange.foreignFrames;
    if (exchange.answered()) {
        roundTrips_[answered_ % kRoundTrips] = (exchange.endedAt - exchange.sentAt).count();
        ++answered_;
        lastAnswer_ = exchange.endedAt;
    }
    inFlight_ = 0;
    if (exchange.kind != RequestKind::poll) {
        return;
    }
    passBegan_ = passBegan_.value_or(exchange.sentAt);
    isCut_ = isCut_ || exchange.end == ExchangeEnd::lost || exchange.end == ExchangeEnd::notSent;
    inFlight_ = exchange.request[wire::kCountOffset];
    if (exchange.isGood()) {
        polled(inFlight_, exchange.endedAt);
    }
}

void RecentFigures::polled(size_t elements, Clock::time_point until)
{
    inFlight_ = 0;
    inPass_ += elements;
    if (listed_ == 0 || inPass_ < listed_ || !passBegan_) {
        return;
    }
    if (!isCut_) {
        passMs_ = msOf(until - *passBegan_);
    }
    isCut_ = false;
    passBegan_.reset();
    inPass_ %= listed_; // the last request of a pass may reach into the next one
}

void RecentFigures::beginList(const PolledGeneration& plan)
{
    std::vector<PolledElement> asked;
    for (size_t i = 0; i < plan.polled.size(); ++i) {
        const auto isThis = [i](const SetAside& one) { return one.place == i; };
        if (std::none_of(plan.setAside.begin(), plan.setAside.end(), isThis)) {
            asked.push_back(plan.polled[i]);
        }
    }
    listed_ = wireOrder(asked).size();
    inPass_ = 0;
    isCut_ = false;
    passBegan_.reset();
    passMs_.reset();
}

RecentLine RecentFigures::at(Clock::time_point now) const
{
    RecentLine line;
    line.passMs = passMs_;
    const qint64 current = secondOf(now);
    for (const Second& second : seconds_) {
        if (second.number < 0 || current - second.number >= static_cast<qint64>(kSeconds)) {
            continue;
        }
        line.lastMinute += second.counts;
    }
    if (answered_ == 0 || current - secondOf(lastAnswer_) >= static_cast<qint64>(kSeconds)) {
        return line;
    }
    std::vector<qint64> trips(roundTrips_.begin(),
                              roundTrips_.begin() +
                                  static_cast<std::ptrdiff_t>(std::min(answered_, kRoundTrips)));
    line.roundTripMs = msAt(trips, trips.size() / 2);
    line.slowRoundTripMs = msAt(trips, (trips.size() * 99 + 99) / 100 - 1);
    return line;
}

} // namespace tavmir::host
