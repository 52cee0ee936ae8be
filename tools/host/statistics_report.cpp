// Counters in words and as JSON.
#include "statistics_report.h"

#include "project/counted.h"
#include "value_row.h"

#include <QtCore/QJsonArray>

#include <optional>

namespace tavmir::host
{

namespace
{

struct LabelledCount {
    const char* label;
    uint64_t value;
};

std::vector<LabelledCount> countsOf(const LineFigures& figures)
{
    return {
        {"requests", figures.requests},
        {"attempts", figures.attempts()},
        {"replies", figures.replies},
        {"retries", figures.retries},
        {"give-ups", figures.giveUps},
        {"time-outs", figures.timeouts},
        {"requests that never left", figures.notConnected},
        {"requests lost with a connection", figures.lost},
        {"requests to stations switched off", figures.suppressed},
        {"exception replies", figures.exceptions},
        {"late or foreign frames dropped", figures.discarded},
        {"replies of wrong length", figures.refusedReplies},
        {"broken streams closed", figures.brokenStreams},
        {"connects", figures.connects},
        {"failed connects", figures.connectFailures},
        {"lost connections", figures.lostConnections},
        {"bytes sent", figures.bytesSent},
        {"bytes received", figures.bytesReceived},
        {"events missed by these statistics", figures.missed},
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

QString decimal(double number)
{
    return QString::number(number, 'f', 1);
}

double micros(double nanoseconds)
{
    return nanoseconds / 1000;
}

double microsAt(const LatencyHistogram& times, double share)
{
    return micros(static_cast<double>(times.percentile(share)));
}

constexpr OutcomeState kStates[] = {OutcomeState::done, OutcomeState::refused,
                                    OutcomeState::notSent, OutcomeState::unknown,
                                    OutcomeState::partial};

struct LabelledNumber {
    QString label;
    double value;
};
using Numbers = std::vector<LabelledNumber>;

// The parts of one line, each "VALUE LABEL", and of one object.
QString asText(const Numbers& numbers)
{
    QStringList parts;
    for (const LabelledNumber& number : numbers) {
        parts << QString("%1 %2").arg(number.value).arg(number.label);
    }
    return parts.join(", ");
}

QJsonObject asJson(const Numbers& numbers)
{
    QJsonObject object;
    for (const LabelledNumber& number : numbers) {
        object.insert(statisticsKey(number.label), number.value);
    }
    return object;
}

Numbers operations(const LineFigures& figures, OperationKind kind)
{
    Numbers numbers = {{"asked", static_cast<double>(figures.ended(kind))}};
    for (const OutcomeState state : kStates) {
        numbers.push_back({outcomeWord(state), static_cast<double>(figures.ended(kind, state))});
    }
    return numbers;
}

// Times as "LABEL VALUE us", and as "labelUs" in an object; none when nothing was answered.
struct LabelledTime {
    QString label;
    std::optional<double> us;
};
using Times = std::vector<LabelledTime>;

std::optional<double> knownOf(const LatencyHistogram& times, double us)
{
    return times.count() > 0 ? std::optional<double>(us) : std::nullopt;
}

Times meanAndP99(const LatencyHistogram& times)
{
    return {{"mean", knownOf(times, micros(times.mean()))},
            {"p99", knownOf(times, microsAt(times, 0.99))}};
}

Times roundTripTimes(const LatencyHistogram& times)
{
    Times all = meanAndP99(times);
    all.insert(all.begin(),
               {"minimum", knownOf(times, micros(static_cast<double>(times.minimum())))});
    return all;
}

Numbers groupCounts(const GroupFigures& group)
{
    return {{"sent", static_cast<double>(group.sent)},
            {"good", static_cast<double>(group.good)},
            {"failed", static_cast<double>(group.failed)}};
}

QString timesText(const Times& times)
{
    QStringList parts;
    for (const LabelledTime& time : times) {
        parts << time.label + (time.us ? QString(" %1 us").arg(decimal(*time.us)) : QString(" –"));
    }
    return parts.join(", ");
}

void insertTimes(QJsonObject& object, const Times& times)
{
    for (const LabelledTime& time : times) {
        object.insert(statisticsKey(time.label + " us"),
                      time.us ? QJsonValue(*time.us) : QJsonValue());
    }
}

QStringList errorLines(const LineFigures& figures)
{
    QStringList lines;
    QStringList codes;
    for (const auto& [code, count] : figures.exceptionsByCode) {
        codes << project::counted(count, "time", "times") + " " + exceptionInWords(code);
    }
    lines << "  exceptions by code: " + (codes.isEmpty() ? QString("none") : codes.join(", "));
    const LastError& error = figures.lastError;
    lines << "  last error: " + (error.happened()
                                     ? utcText(error.time()) + " " + printable(error.words())
                                     : QString("none"));
    return lines;
}

QString groupName(const GroupFigures& group)
{
    return QString("%1 of station %2").arg(wire::elementsName(group.elements)).arg(group.station);
}

QJsonArray groupsJson(const LineFigures& figures)
{
    QJsonArray groups;
    for (const GroupFigures& group : figures.byElements.groups()) {
        QJsonObject object = asJson(groupCounts(group));
        insertTimes(object, meanAndP99(group.roundTrip));
        object.insert("elements", wire::elementsName(group.elements));
        object.insert("station", group.station);
        groups << object;
    }
    return groups;
}

QJsonObject exceptionsJson(const LineFigures& figures)
{
    QJsonObject codes;
    for (const auto& [code, count] : figures.exceptionsByCode) {
        codes.insert(QString::number(code), static_cast<double>(count));
    }
    return codes;
}

QJsonValue lastErrorJson(const LastError& error)
{
    if (!error.happened()) {
        return QJsonValue();
    }
    return QJsonObject{{"time", utcText(error.time())}, {"reason", error.words()}};
}

} // namespace

QString statisticsKey(const QString& label)
{
    QString key;
    bool begins = false; // a word does
    for (const QChar character : label) {
        if (!character.isLetterOrNumber()) {
            begins = true;
            continue;
        }
        key += begins && !key.isEmpty() ? character.toUpper() : character;
        begins = false;
    }
    return key;
}

QStringList statisticsLines(const LineFigures& figures, double seconds, size_t elements)
{
    QStringList lines;
    lines << QString("statistics of %1 s").arg(decimal(seconds));
    for (const LabelledCount& count : countsOf(figures)) {
        lines << QString("  %1: %2").arg(count.label).arg(count.value);
    }
    if (figures.missed > 0) {
        lines << "  events were missed: what they held is in none of these figures";
    }
    lines << errorLines(figures);
    lines << "  round trip: " + timesText(roundTripTimes(figures.roundTrip));
    lines << "  scans per second: " + decimal(scansPerSecond(figures, seconds, elements));
    lines << "  writes: " + asText(operations(figures, OperationKind::write));
    lines << "  one-shot reads: " + asText(operations(figures, OperationKind::read));
    const bool asked = !figures.byElements.groups().empty();
    lines << QString("  by element group:") + (asked ? "" : " nothing was asked for");
    for (const GroupFigures& group : figures.byElements.groups()) {
        lines << QString("    %1: %2, %3")
                     .arg(groupName(group), asText(groupCounts(group)),
                          timesText(meanAndP99(group.roundTrip)));
    }
    return lines;
}

QJsonObject statisticsJson(const LineFigures& figures, double seconds, size_t elements)
{
    QJsonObject object;
    object.insert("seconds", seconds);
    for (const LabelledCount& count : countsOf(figures)) {
        object.insert(statisticsKey(count.label), static_cast<double>(count.value));
    }
    QJsonObject roundTrip;
    insertTimes(roundTrip, roundTripTimes(figures.roundTrip));
    object.insert("exceptionsByCode", exceptionsJson(figures));
    object.insert("lastError", lastErrorJson(figures.lastError));
    object.insert("roundTrip", roundTrip);
    object.insert("scansPerSecond", scansPerSecond(figures, seconds, elements));
    object.insert("writes", asJson(operations(figures, OperationKind::write)));
    object.insert("oneShotReads", asJson(operations(figures, OperationKind::read)));
    object.insert("byElementGroup", groupsJson(figures));
    return object;
}

} // namespace tavmir::host
