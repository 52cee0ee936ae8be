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

std::vector<NamedCount> countsOf(const LinkStatistics& statistics)
{
    return {
        {"requests", "requests", statistics.requests.value()},
        {"replies", "replies", statistics.replies.value()},
        {"retries", "retries", statistics.retries.value()},
        {"giveUps", "give-ups", statistics.giveUps.value()},
        {"timeouts", "time-outs", statistics.timeouts.value()},
        {"notConnected", "requests without a connection", statistics.notConnected.value()},
        {"suppressed", "requests to stations switched off", statistics.suppressed.value()},
        {"exceptions", "exception replies", statistics.exceptions.value()},
        {"discarded", "late or foreign frames dropped", statistics.discarded.value()},
        {"refusedReplies", "replies of wrong length", statistics.refusedReplies.value()},
        {"brokenStreams", "broken streams closed", statistics.brokenStreams.value()},
        {"connects", "connects", statistics.connects.value()},
        {"connectFailures", "failed connects", statistics.connectFailures.value()},
        {"lostConnections", "lost connections", statistics.lostConnections.value()},
        {"bytesSent", "bytes sent", statistics.bytesSent.value()},
        {"bytesReceived", "bytes received", statistics.bytesReceived.value()},
    };
}

double perSecond(double count, double seconds)
{
    return seconds > 0 ? count / seconds : 0;
}

double scansPerSecond(HostSession& session, double seconds)
{
    const size_t elements = session.polledElementsOnWire();
    const double read = static_cast<double>(session.statistics().polledElements.value());
    return elements == 0 ? 0 : perSecond(read / static_cast<double>(elements), seconds);
}

double micros(double nanoseconds)
{
    return nanoseconds / 1000;
}

QString operationsText(const OperationCounts& counts)
{
    return QString("%1 asked, %2 done, %3 failed, %4 dropped behind a failed one")
        .arg(counts.begun)
        .arg(counts.done)
        .arg(counts.reportedFailed)
        .arg(counts.dropped);
}

QJsonObject operationsJson(const OperationCounts& counts)
{
    return {{"begun", static_cast<double>(counts.begun)},
            {"done", static_cast<double>(counts.done)},
            {"failed", static_cast<double>(counts.reportedFailed)},
            {"dropped", static_cast<double>(counts.dropped)}};
}

} // namespace

QStringList statisticsLines(HostSession& session, double seconds)
{
    const LinkStatistics& statistics = session.statistics();
    const LatencyHistogram& trip = statistics.roundTrip;
    QStringList lines;
    lines << QString("statistics of %1 s").arg(seconds, 0, 'f', 1);
    for (const NamedCount& count : countsOf(statistics)) {
        lines << QString("  %1: %2").arg(count.shown).arg(count.value);
    }
    lines << QString("  round trip: minimum %1 us, mean %2 us, p99 %3 us")
                 .arg(micros(static_cast<double>(trip.minimum())), 0, 'f', 1)
                 .arg(micros(trip.mean()), 0, 'f', 1)
                 .arg(micros(static_cast<double>(trip.percentile(0.99))), 0, 'f', 1);
    lines << QString("  scans per second: %1").arg(scansPerSecond(session, seconds), 0, 'f', 1);
    lines << "  writes: " + operationsText(session.operationCounts(OperationKind::write));
    lines << "  one-shot reads: " + operationsText(session.operationCounts(OperationKind::read));
    return lines;
}

QJsonObject statisticsJson(HostSession& session, double seconds)
{
    const LinkStatistics& statistics = session.statistics();
    const LatencyHistogram& trip = statistics.roundTrip;
    QJsonObject object;
    object.insert("seconds", seconds);
    for (const NamedCount& count : countsOf(statistics)) {
        object.insert(count.name, static_cast<double>(count.value));
    }
    object.insert("roundTripMinUs", micros(static_cast<double>(trip.minimum())));
    object.insert("roundTripMeanUs", micros(trip.mean()));
    object.insert("roundTripP99Us", micros(static_cast<double>(trip.percentile(0.99))));
    object.insert("scansPerSecond", scansPerSecond(session, seconds));
    object.insert("writes", operationsJson(session.operationCounts(OperationKind::write)));
    object.insert("reads", operationsJson(session.operationCounts(OperationKind::read)));
    return object;
}

} // namespace tavmir::host
