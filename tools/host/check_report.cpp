// Columns, cells and keys.
#include "check_report.h"

#include "project/counted.h"
#include "project/value_format.h"

#include <QtCore/QJsonArray>

#include <algorithm>

namespace tavmir::host
{

namespace
{

const char* wordOf(CheckEnd end)
{
    switch (end) {
    case CheckEnd::answered:
        return "answered";
    case CheckEnd::refused:
        return "refused";
    case CheckEnd::noAnswer:
        return "no answer";
    case CheckEnd::notAsked:
        break;
    }
    return "not asked";
}

QString inWords(const CheckAnswer& answer)
{
    if (answer.end == CheckEnd::answered) {
        return QString("answered in %1 ms").arg(answer.ms, 0, 'f', 2);
    }
    return answer.why.isEmpty() ? QString(wordOf(answer.end)) : answer.why;
}

QString valueOf(const PolledElement& polled, const CheckedVariable& variable)
{
    return variable.alone.end == CheckEnd::answered
               ? project::decodeValue(polled.element, polled.format, variable.bytes)
               : QString();
}

QString requestOf(const PassCheck::Variable& together)
{
    return together.request == 0 ? QString()
                                 : QString("request %1 (%2): ")
                                       .arg(together.request)
                                       .arg(project::counted(static_cast<quint64>(together.sharing),
                                                             "element", "elements"));
}

QString padded(const QString& text, int width)
{
    return printable(text).leftJustified(width);
}

QString togetherOf(const CheckedVariable& variable)
{
    return requestOf(variable.together) + inWords(variable.together.answer);
}

QStringList tableOf(const CheckReport& report)
{
    int nameWidth = 4;
    int aloneWidth = 5;
    int togetherWidth = 14;
    for (size_t i = 0; i < report.polled.size(); ++i) {
        const CheckedVariable& variable = report.result.variables[i];
        nameWidth = std::max<int>(nameWidth, printable(report.polled[i].name).size());
        aloneWidth = std::max<int>(aloneWidth, inWords(variable.alone).size());
        togetherWidth = std::max<int>(togetherWidth, togetherOf(variable).size());
    }
    QStringList lines;
    lines << padded("NAME", nameWidth) + "  STATION  " + padded("ALONE", aloneWidth) + "  " +
                 padded("IN ITS REQUEST", togetherWidth) + "  VALUE";
    for (size_t i = 0; i < report.polled.size(); ++i) {
        const PolledElement& polled = report.polled[i];
        const CheckedVariable& variable = report.result.variables[i];
        const QString value = valueOf(polled, variable);
        lines << padded(polled.name, nameWidth) + "  " +
                     QString::number(polled.station).leftJustified(7) + "  " +
                     padded(inWords(variable.alone), aloneWidth) + "  " +
                     padded(togetherOf(variable), togetherWidth) + "  " +
                     (value.isNull() ? QString("–") : printable(value));
    }
    return lines;
}

QJsonObject jsonOf(const CheckAnswer& answer)
{
    QJsonObject object{{"end", wordOf(answer.end)}};
    if (answer.end != CheckEnd::notAsked) {
        object.insert("ms", answer.ms);
    }
    if (answer.end == CheckEnd::refused) {
        object.insert("code", answer.code);
    }
    if (answer.end != CheckEnd::answered) {
        object.insert("reason", inWords(answer));
    }
    return object;
}

QString jsonOf(const PolledElement& polled, const CheckedVariable& variable)
{
    QJsonObject together = jsonOf(variable.together.answer);
    together.insert("request", variable.together.request);
    together.insert("elements", variable.together.sharing);
    const QString value = valueOf(polled, variable);
    return QString::fromUtf8(
        jsonLine({{"name", polled.name},
                  {"address", polled.element.addressText},
                  {"station", polled.station},
                  {"alone", jsonOf(variable.alone)},
                  {"together", together},
                  {"value", value.isNull() ? QJsonValue() : QJsonValue(value)}}));
}

QString csvCell(const QString& text)
{
    const bool isPlain = !text.contains(',') && !text.contains('"') && !text.contains('\n');
    QString doubled = text;
    return isPlain ? text : '"' + doubled.replace('"', "\"\"") + '"';
}

QString csvOf(const CheckAnswer& answer)
{
    return QString("%1,%2,%3")
        .arg(wordOf(answer.end),
             answer.end == CheckEnd::refused ? QString::number(answer.code) : QString(),
             answer.end == CheckEnd::notAsked ? QString() : QString::number(answer.ms, 'f', 3));
}

QString csvOf(const PolledElement& polled, const CheckedVariable& variable)
{
    return QStringList{csvCell(polled.name),
                       csvCell(polled.element.addressText),
                       QString::number(polled.station),
                       csvOf(variable.alone),
                       QString::number(variable.together.request),
                       QString::number(variable.together.sharing),
                       csvOf(variable.together.answer),
                       csvCell(valueOf(polled, variable))}
        .join(',');
}

struct Count {
    CheckEnd end;
    const char* key;
};
constexpr Count kCounts[] = {{CheckEnd::answered, "answered"},
                             {CheckEnd::refused, "refused"},
                             {CheckEnd::noAnswer, "noAnswer"},
                             {CheckEnd::notAsked, "notAsked"}};

int countOf(const CheckReport& report, CheckEnd end, bool alone)
{
    return static_cast<int>(
        std::count_if(report.result.variables.begin(), report.result.variables.end(),
                      [&](const CheckedVariable& one) {
                          return (alone ? one.alone.end : one.together.answer.end) == end;
                      }));
}

QString countsInWords(const CheckReport& report, bool alone)
{
    QStringList parts;
    for (const Count& count : kCounts) {
        parts << QString("%1 %2").arg(countOf(report, count.end, alone)).arg(wordOf(count.end));
    }
    return parts.join(", ");
}

QJsonObject countsAsJson(const CheckReport& report, bool alone)
{
    QJsonObject object;
    for (const Count& count : kCounts) {
        object.insert(count.key, countOf(report, count.end, alone));
    }
    return object;
}

QString summaryAsJson(const CheckReport& report)
{
    QJsonArray silent;
    for (const int station : report.result.silentStations) {
        silent.append(station);
    }
    QJsonArray overlaps;
    for (const Overlap& one : report.overlaps) {
        overlaps.append(QJsonArray{one.first.addressText, one.second.addressText});
    }
    const QJsonObject check{{"variables", static_cast<int>(report.polled.size())},
                            {"requests", report.result.requests},
                            {"alone", countsAsJson(report, true)},
                            {"together", countsAsJson(report, false)},
                            {"silentStations", silent},
                            {"overlaps", overlaps},
                            {"good", isAllGood(report)}};
    return QString::fromUtf8(jsonLine({{"check", check}}));
}

} // namespace

bool isAllGood(const CheckReport& report)
{
    return std::all_of(report.result.variables.begin(), report.result.variables.end(),
                       [](const CheckedVariable& one) { return one.isGood(); });
}

QStringList checkLines(const CheckReport& report, OutputFormat format)
{
    if (format == OutputFormat::table) {
        return tableOf(report);
    }
    QStringList lines;
    if (format == OutputFormat::csv) {
        lines << "name,address,station,alone,alone_code,alone_ms,request,elements,together,"
                 "together_code,together_ms,value";
    }
    for (size_t i = 0; i < report.polled.size(); ++i) {
        const CheckedVariable& variable = report.result.variables[i];
        lines << (format == OutputFormat::csv ? csvOf(report.polled[i], variable)
                                              : jsonOf(report.polled[i], variable));
    }
    return lines;
}

QStringList checkSummary(const CheckReport& report, OutputFormat format)
{
    if (format == OutputFormat::json) {
        return {summaryAsJson(report)};
    }
    QStringList lines;
    lines << QString("%1 in %2")
                 .arg(project::counted(report.polled.size(), "variable", "variables"),
                      project::counted(static_cast<quint64>(report.result.requests), "request",
                                       "requests"));
    lines << "alone: " + countsInWords(report, true);
    lines << "in their requests: " + countsInWords(report, false);
    for (const int station : report.result.silentStations) {
        lines << QString("station %1 never answered").arg(station);
    }
    for (const Overlap& one : report.overlaps) {
        lines << QString("%1 and %2 share the bits %3 to %4")
                     .arg(one.first.addressText, one.second.addressText)
                     .arg(one.from)
                     .arg(one.to);
    }
    return lines;
}

} // namespace tavmir::host
