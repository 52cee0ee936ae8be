// Counters in words and as JSON.
#include "statistics_report.h"

namespace tavmir::host
{

namespace
{

struct NamedCount {
    const char* name; // as a JSON key; "giveUps" is shown as "give-ups"
    const char* shown;
    uint64_t value;
};

std::vector<NamedCount> countsOf(const LineFigures& figures)
{
    return {
        {"requests", "requests", figures.requests},
        {"replies", "replies", figures.replies},
        {"retries", "retries", figures.retries},
        {"giveUps", "give-ups", figures.giveUps},
        {"timeouts", "time-outs", figures.timeouts},
        {"notConnected", "requests without a connection", figures.notConnected},
        {"lost", "requests lost with a connection", figures.lost},
        {"suppressed", "requests to stations switched off", figures.suppressed},
        {"exceptions", "exception replies", figures.exceptions},
        {"discarded", "late or foreign frames dropped", figures.discarded},
        {"refusedReplies", "replies of wrong length", figures.refusedReplies},
        {"brokenStreams", "broken streams closed", figures.brokenStreams},
        {"connects", "connects", figures.connects},
        {"connectFailures", "failed connects", figures.connectFailures},
        {"lostConnections", "lost connections", figures.lostConnections},
        {"bytesSent", "bytes sent", figures.bytesSent},
        {"bytesReceived", "bytes received", figures.bytesReceived},
        {"missed", "events missed by these statistics", figures.missed},
    };
}

double perSecond(double count, double seconds)
{
    return seconds > 0 ? count / seconds : 0;
}

double scansPerSecond(const LineFigures& figures, double seconds, size_t elements)
{
    const auto read = static_cast<double>(figures.polledElements);
    return elements == 0 ? 0 : perSecond(read / static_cast<double>(elements), seconds);
}

double micros(double nanoseconds)
{
    return nanoseconds / 1000;
}

constexpr OutcomeState kStates[] = {OutcomeState::done, OutcomeState::refused,
                                    OutcomeState::notSent, OutcomeState::unknown,
                                    OutcomeState::partial};

QString operationsText(const LineFigures& figures, OperationKind kind)
{
    QStringList parts(QString("%1 asked").arg(figures.ended(kind)));
    for (const OutcomeState state : kStates) {
        parts << QString("%1 %2").arg(figures.ended(kind, state)).arg(outcomeWord(state));
    }
    return parts.join(", ");
}

QJsonObject operationsJson(const LineFigures& figures, OperationKind kind)
{
    const auto count = [&](OutcomeState state) {
        return static_cast<double>(figures.ended(kind, state));
    };
    return {{"asked", static_cast<double>(figures.ended(kind))},
            {"done", count(OutcomeState::done)},
            {"refused", count(OutcomeState::refused)},
            {"notSent", count(OutcomeState::notSent)},
            {"unknown", count(OutcomeState::unknown)},
            {"partial", count(OutcomeState::partial)}};
}

} // namespace

QStringList statisticsLines(const LineFigures& figures, double seconds, size_t elements)
{
    const LatencyHistogram& trip = figures.roundTrip;
    QStringList lines;
    lines << QString("statistics of %1 s").arg(seconds, 0, 'f', 1);
    for (const NamedCount& count : countsOf(figures)) {
        lines << QString("  %1: %2").arg(count.shown).arg(count.value);
    }
    lines << QString("  round trip: minimum %1 us, mean %2 us, p99 %3 us")
                 .arg(micros(static_cast<double>(trip.minimum())), 0, 'f', 1)
                 .arg(micros(trip.mean()), 0, 'f', 1)
                 .arg(micros(static_cast<double>(trip.percentile(0.99))), 0, 'f', 1);
    lines << QString("  scans per second: %1")
                 .arg(scansPerSecond(figures, seconds, elements), 0, 'f', 1);
    if (figures.missed > 0) {
        lines << "  events were missed: what they held is in none of these figures";
    }
    lines << "  writes: " + operationsText(figures, OperationKind::write);
    lines << "  one-shot reads: " + operationsText(figures, OperationKind::read);
    return lines;
}

QJsonObject statisticsJson(const LineFigures& figures, double seconds, size_t elements)
{
    const LatencyHistogram& trip = figures.roundTrip;
    QJsonObject object;
    object.insert("seconds", seconds);
    for (const NamedCount& count : countsOf(figures)) {
        object.insert(count.name, static_cast<double>(count.value));
    }
    object.insert("roundTripMinUs", micros(static_cast<double>(trip.minimum())));
    object.insert("roundTripMeanUs", micros(trip.mean()));
    object.insert("roundTripP99Us", micros(static_cast<double>(trip.percentile(0.99))));
    object.insert("scansPerSecond", scansPerSecond(figures, seconds, elements));
    object.insert("writes", operationsJson(figures, OperationKind::write));
    object.insert("reads", operationsJson(figures, OperationKind::read));
    return object;
}

} // namespace tavmir::host
