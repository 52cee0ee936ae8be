// Rows as the lines of each output format.
#ifndef TAVMIR_HOST_ROW_FORMATS_H
#define TAVMIR_HOST_ROW_FORMATS_H

#include "value_row.h"

#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

namespace tavmir::host
{

enum class OutputFormat { table, json, csv };

std::optional<OutputFormat> outputFormatFromName(const QString& name);

// "5 ms", "1.5 s", "2 min"; "never" of what was never read.
QString ageText(const std::optional<qint64>& ageMs);

// The value as the user reads it; "–" where nothing was ever read.
QString shownValue(const ValueRow& row);
// The same with the mark of its quality: "12 !".
QString markedValue(const ValueRow& row);
// "bad: the controller did not answer within 500 ms"; empty of what is good.
QString qualityInWords(const ValueRow& row);

// The text dimmed (never, stale), red (bad) or yellow (unconfirmed), as terminals take it.
QString coloured(const QString& text, Quality quality);

// A heading and a line per row, in columns; behind a value that is not good its mark, at the end of
// the line its quality with the reason.
QStringList tableLines(const std::vector<ValueRow>& rows, bool colours = false);

// "Main.Setpoint = 5"; of what is not good "Main.Setpoint = 5 ~ (stale: not read for 3.2 s)".
QString assignmentLine(const ValueRow& row, bool colours = false);

// {"name", "address", "value", "ageMs", "quality", "reason"}; numbers as numbers, hex and text as
// texts, null for what was never read and for a reason that is not needed.
QJsonObject jsonOf(const ValueRow& row);
QJsonValue textOrNull(const QString& text);

// "time,name,address,value,age_ms,quality,reason" and lines of it; `time` is put in front of each.
// What was never read has no value and no age.
QString csvHeading();
QString csvLine(const ValueRow& row, const QString& time);
QString quotedForCsv(const QString& text);

// One object as one line.
QByteArray jsonLine(const QJsonObject& object);

} // namespace tavmir::host

#endif
