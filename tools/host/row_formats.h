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

// A heading and a line per row, in columns; "–" for what was never read.
QStringList tableLines(const std::vector<ValueRow>& rows);

// {"name", "address", "value", "ageMs"}; numbers as numbers, hex and text as texts, null for what
// was never read.
QJsonObject jsonOf(const ValueRow& row);

// "time,name,address,value,age_ms" and lines of it; `time` is put in front of each. What was never
// read has no value and no age.
QString csvHeading();
QString csvLine(const ValueRow& row, const QString& time);

// One object as one line.
QByteArray jsonLine(const QJsonObject& object);

} // namespace tavmir::host

#endif
