// Words, objects, cells.
#include "write_report.h"

namespace tavmir::host
{

Outcome settled(const Outcome& written, const ReadBack& readBack)
{
    const bool inDoubt =
        written.state == OutcomeState::unknown || written.state == OutcomeState::partial;
    if (!inDoubt || !readBack.asAsked) {
        return written;
    }
    Outcome outcome = written;
    outcome.state = OutcomeState::done;
    outcome.reason = "written, as reading it back shows: " + written.reason;
    return outcome;
}

bool isDone(const WriteReport& report)
{
    const bool wasRead = !report.readBack || !report.readBack->row.value.isNull();
    return report.outcome.ok() && wasRead;
}

QString writeLine(const Assignment& assignment, const WriteReport& report)
{
    const QString line = writeResult(assignment, report.outcome);
    if (!report.readBack) {
        return line;
    }
    const ValueRow& row = report.readBack->row;
    return row.value.isNull() ? QString("%1; not read back: %2").arg(line, row.reason)
                              : QString("%1; %2 stands there").arg(line, printable(row.value));
}

QJsonObject writeJson(const Assignment& assignment, const WriteReport& report)
{
    const Outcome& outcome = report.outcome;
    QJsonObject object;
    object.insert("address", assignment.address);
    object.insert("asked", assignment.value);
    object.insert("outcome", outcomeWord(outcome.state));
    object.insert("reason", textOrNull(outcome.reason));
    object.insert("elements", outcome.elements);
    object.insert("acknowledged", outcome.acknowledged);
    if (report.readBack) {
        object.insert("readBack", jsonOf(report.readBack->row));
    }
    return object;
}

QString writeCsvHeading()
{
    return "time,address,asked,outcome,reason,elements,acknowledged,stands_there,quality,"
           "read_reason";
}

QString writeCsv(const Assignment& assignment, const WriteReport& report, const QString& time)
{
    const Outcome& outcome = report.outcome;
    QStringList cells = {time,
                         quotedForCsv(assignment.address),
                         quotedForCsv(assignment.value),
                         outcomeWord(outcome.state),
                         quotedForCsv(outcome.reason),
                         QString::number(outcome.elements),
                         QString::number(outcome.acknowledged)};
    if (report.readBack) {
        const ValueRow& row = report.readBack->row;
        cells << quotedForCsv(row.value) << qualityWord(row.quality) << quotedForCsv(row.reason);
    } else {
        cells << ""
              << ""
              << "";
    }
    return cells.join(',');
}

} // namespace tavmir::host
