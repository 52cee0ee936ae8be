// Values as rows, and rows as a table, JSON or CSV.
#ifndef TAVMIR_HOST_VALUE_TABLE_H
#define TAVMIR_HOST_VALUE_TABLE_H

#include "project/project_model.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

#include <optional>
#include <vector>

namespace tavmir::host
{

enum class OutputFormat { table, json, csv };

std::optional<OutputFormat> outputFormatFromName(const QString& name);

struct ValueRow {
    QString name;
    QString address;
    QString value;
    project::Format format = project::Format::automatic;
    std::optional<qint64> ageMs; // none: never read
};

// A heading and a line per row, in columns. What cannot be printed is shown as \xNN.
QStringList tableLines(const std::vector<ValueRow>& rows);

// {"name", "address", "value", "ageMs"}; numbers as numbers, hex and text as texts.
QJsonObject jsonOf(const ValueRow& row);

// "time,name,address,value,age_ms" and lines of it; `time` is put in front of each.
QString csvHeading();
QString csvLine(const ValueRow& row, const QString& time);

// One object as one line.
QByteArray jsonLine(const QJsonObject& object);

QString printable(const QString& text);

} // namespace tavmir::host

#endif
