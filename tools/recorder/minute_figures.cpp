// Figures into rows.
#include "minute_figures.h"

namespace tavmir::recorder
{

namespace
{

double microsOf(uint64_t nanoseconds)
{
    return static_cast<double>(nanoseconds) / 1000;
}

} // namespace

MinuteRow MinuteFigures::row(Micros now)
{
    const host::LineFigures& line = *figures_;
    MinuteRow row;
    row.at = began_;
    row.until = now;
    row.requests = line.requests;
    row.replies = line.replies;
    row.retries = line.retries;
    row.giveUps = line.giveUps;
    row.timeouts = line.timeouts;
    row.exceptions = line.exceptions;
    row.lateFrames = line.discarded;
    row.connects = line.connects;
    row.connectFailures = line.connectFailures;
    row.lostConnections = line.lostConnections;
    row.bytesSent = line.bytesSent;
    row.bytesReceived = line.bytesReceived;
    row.missed = line.missed;
    if (line.roundTrip.count() > 0) {
        row.roundTripMin = microsOf(line.roundTrip.minimum());
        row.roundTripMedian = microsOf(line.roundTrip.percentile(0.5));
        row.roundTripP99 = microsOf(line.roundTrip.percentile(0.99));
        row.roundTripMax = microsOf(line.roundTrip.maximum());
    }
    if (now / kMinute != began_ / kMinute) {
        restart(now);
    }
    return row;
}

void MinuteFigures::restart(Micros now)
{
    began_ = now;
    *figures_ = host::LineFigures();
}

} // namespace tavmir::recorder
