// The page, line by line; and the same as objects.
#include "diagnose_report.h"

#include "project/counted.h"
#include "statistics_report.h"
#include "value_row.h"
#include "wire/frame_words.h"

#include <QtCore/QJsonArray>

namespace tavmir::host
{

namespace
{

using diagnose::ConversationReport;
using diagnose::Counted;
using diagnose::Diagnosis;
using diagnose::Figure;
using diagnose::Finding;

QString shown(const std::string& text)
{
    return printable(QString::fromStdString(text));
}

QString utc(diagnose::Nanoseconds at)
{
    return QString::fromStdString(diagnose::utcOf(at));
}

QString seconds(diagnose::Nanoseconds duration)
{
    return QString("%1 s").arg(diagnose::secondsOf(duration), 0, 'f', 1);
}

QString numberInWords(double value)
{
    return value == static_cast<double>(static_cast<qint64>(value))
               ? QString::number(value, 'f', 0)
               : QString::number(value, 'f', 3);
}

QString withCode(const QString& label, const Finding& finding)
{
    return finding.code ? label + " " +
                              QString::fromStdString(wire::exceptionInWords(
                                  static_cast<std::uint8_t>(finding.code.value_or(0))))
                        : label;
}

void addList(QStringList& lines, const QString& heading, const std::vector<Counted>& list)
{
    if (list.empty()) {
        return;
    }
    lines << "      " + heading;
    for (const Counted& one : list) {
        lines << "        " + project::counted(one.times, "time", "times") + " " + shown(one.what);
    }
}

void addFinding(QStringList& lines, const Finding& finding, const Diagnosis& diagnosis)
{
    const QString rhythm =
        finding.rhythm.empty() ? QString() : ", " + QString::fromStdString(finding.rhythm);
    lines << QString("    %1: %2%3")
                 .arg(withCode(diagnose::rowOf(finding.trouble).label, finding))
                 .arg(finding.times)
                 .arg(rhythm);
    lines << QString("      %1").arg(diagnose::rowOf(finding.trouble).means);
    lines << QString("      since %1, %2 after the capture's beginning and %3; the last %4 "
                     "before its end")
                 .arg(utc(finding.since), seconds(finding.since - diagnosis.begin))
                 .arg(project::counted(finding.goodBefore, "good reply", "good replies"),
                      seconds(diagnosis.end - finding.until));
    if (!finding.advice.empty()) {
        lines << "      " + QString::fromStdString(finding.advice);
    }
    addList(lines, "variables:", finding.variables);
    addList(lines, "requests:", finding.requests);
    lines << (finding.times > finding.occurrences.size() ? "      the first:" : "      when:");
    for (const std::string& occurrence : finding.occurrences) {
        lines << "        " + shown(occurrence);
    }
}

int countOf(const ConversationReport& report, bool remarks)
{
    int count = 0;
    for (const Finding& finding : report.findings) {
        count += diagnose::rowOf(finding.trouble).isRemark == remarks ? 1 : 0;
    }
    return count;
}

QString verdictOf(const ConversationReport& report)
{
    if (!report.isWrong) {
        return countOf(report, true) == 0 ? QString("all is well")
                                          : QString("nothing is wrong, but see the remarks");
    }
    QStringList parts;
    for (const Finding& finding : report.findings) {
        const diagnose::TroubleRow& row = diagnose::rowOf(finding.trouble);
        if (!row.isRemark) {
            parts << withCode(project::counted(finding.times, row.one, row.label), finding);
        }
    }
    return parts.join(", ");
}

void addFindings(QStringList& lines, const ConversationReport& report, const Diagnosis& diagnosis,
                 bool remarks)
{
    if (countOf(report, remarks) == 0) {
        return;
    }
    lines << (remarks ? "  remarks" : "  wrong");
    for (const Finding& finding : report.findings) {
        if (diagnose::rowOf(finding.trouble).isRemark == remarks) {
            addFinding(lines, finding, diagnosis);
        }
    }
}

void addConversation(QStringList& lines, const ConversationReport& report,
                     const Diagnosis& diagnosis)
{
    lines << QString();
    lines << QString("%1 to controller %2: %3")
                 .arg(shown(report.host), shown(report.controller), verdictOf(report));
    for (const Figure& figure : report.figures) {
        lines << QString("  %1: %2")
                     .arg(figure.label,
                          figure.isKnown ? numberInWords(figure.value) : QString("–"));
    }
    lines << "  slowest request: " + (report.slowest.empty() ? "–" : shown(report.slowest));
    for (const std::string& note : report.notes) {
        lines << "  note: " + shown(note);
    }
    addFindings(lines, report, diagnosis, false);
    for (const int station : report.silentStations) {
        lines << QString("  station %1 never answered").arg(station);
    }
    if (!report.neverAnswered.empty()) {
        lines << "  never answered";
        for (const Counted& one : report.neverAnswered) {
            lines << QString("    %1, asked for %2")
                         .arg(shown(one.what), one.times == 1 ? QString("once")
                                                              : QString("%1 times").arg(one.times));
        }
    }
    addFindings(lines, report, diagnosis, true);
}

QJsonArray texts(const std::vector<std::string>& lines)
{
    QJsonArray array;
    for (const std::string& line : lines) {
        array << QString::fromStdString(line);
    }
    return array;
}

QJsonArray listed(const std::vector<Counted>& list)
{
    QJsonArray array;
    for (const Counted& one : list) {
        array << QJsonObject{{"what", QString::fromStdString(one.what)},
                             {"times", static_cast<double>(one.times)}};
    }
    return array;
}

QJsonValue textOrNull(const std::string& text)
{
    return text.empty() ? QJsonValue() : QJsonValue(QString::fromStdString(text));
}

QJsonObject findingJson(const Finding& finding)
{
    const diagnose::TroubleRow& row = diagnose::rowOf(finding.trouble);
    return {{"kind", statisticsKey(row.label)},
            {"remark", row.isRemark},
            {"code", finding.code ? QJsonValue(*finding.code) : QJsonValue()},
            {"times", static_cast<double>(finding.times)},
            {"means", row.means},
            {"since", utc(finding.since)},
            {"until", utc(finding.until)},
            {"goodRepliesBefore", static_cast<double>(finding.goodBefore)},
            {"rhythm", textOrNull(finding.rhythm)},
            {"advice", textOrNull(finding.advice)},
            {"variables", listed(finding.variables)},
            {"requests", listed(finding.requests)},
            {"occurrences", texts(finding.occurrences)}};
}

QJsonObject conversationJson(const ConversationReport& report)
{
    QJsonObject object{{"host", QString::fromStdString(report.host)},
                       {"controller", QString::fromStdString(report.controller)},
                       {"wrong", report.isWrong},
                       {"slowestRequest", textOrNull(report.slowest)},
                       {"notes", texts(report.notes)},
                       {"neverAnswered", listed(report.neverAnswered)}};
    for (const Figure& figure : report.figures) {
        object.insert(statisticsKey(figure.label),
                      figure.isKnown ? QJsonValue(figure.value) : QJsonValue());
    }
    QJsonArray stations;
    for (const int station : report.silentStations) {
        stations << station;
    }
    object.insert("silentStations", stations);
    QJsonArray findings;
    for (const Finding& finding : report.findings) {
        findings << findingJson(finding);
    }
    object.insert("findings", findings);
    return object;
}

// Those that were set up, as the conversations count them.
double connectionsTold(const Diagnosis& diagnosis)
{
    double count = 0;
    for (const ConversationReport& report : diagnosis.conversations) {
        for (const Figure& figure : report.figures) {
            count += QString("connections") == figure.label ? figure.value : 0;
        }
    }
    return count;
}

QString connectionsInWords(const Diagnosis& diagnosis)
{
    const bool isAsTold = static_cast<double>(diagnosis.connections) == connectionsTold(diagnosis);
    return isAsTold ? project::counted(diagnosis.connections, "connection", "connections")
                    : project::counted(diagnosis.connections, "TCP connection", "TCP connections") +
                          ", refused ones too";
}

} // namespace

QStringList diagnosisLines(const Diagnosis& diagnosis, const QString& file)
{
    QStringList lines;
    lines << QString("%1: %2, %3 of them TCP in %4")
                 .arg(printable(file), project::counted(diagnosis.packets, "packet", "packets"),
                      QString::number(diagnosis.tcpPackets), connectionsInWords(diagnosis));
    if (diagnosis.packets > 0) {
        lines << QString("from %1 to %2, %3")
                     .arg(utc(diagnosis.begin), utc(diagnosis.end),
                          seconds(diagnosis.end - diagnosis.begin));
    }
    for (const std::string& note : diagnosis.notes) {
        lines << "note: " + shown(note);
    }
    for (const ConversationReport& report : diagnosis.conversations) {
        addConversation(lines, report, diagnosis);
    }
    return lines;
}

QJsonObject diagnosisJson(const Diagnosis& diagnosis, const QString& file)
{
    QJsonArray conversations;
    for (const ConversationReport& report : diagnosis.conversations) {
        conversations << conversationJson(report);
    }
    const bool isEmpty = diagnosis.packets == 0;
    return {{"file", file},
            {"packets", static_cast<double>(diagnosis.packets)},
            {"tcpPackets", static_cast<double>(diagnosis.tcpPackets)},
            {"connections", static_cast<double>(diagnosis.connections)},
            {"begin", isEmpty ? QJsonValue() : QJsonValue(utc(diagnosis.begin))},
            {"end", isEmpty ? QJsonValue() : QJsonValue(utc(diagnosis.end))},
            {"wrong", diagnosis.isWrong()},
            {"notes", texts(diagnosis.notes)},
            {"conversations", conversations}};
}

} // namespace tavmir::host
