// Tables, JSON and CSV.
#include "row_formats.h"

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cmath>

namespace tavmir::host
{

namespace
{

constexpr int kColumnGap = 2;
constexpr char kNeverRead[] = "–";

QString quotedForCsv(const QString& text)
{
    if (!text.contains(',') && !text.contains('"') && !text.contains('\n') &&
        !text.contains('\r')) {
        return text;
    }
    return "\"" + QString(text).replace("\"", "\"\"") + "\"";
}

QJsonValue jsonValue(const ValueRow& row)
{
    if (row.value.isNull()) {
        return QJsonValue();
    }
    if (row.format == project::Format::hex || row.format == project::Format::text) {
        return row.value;
    }
    bool isNumber = false;
    const double number = row.value.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? QJsonValue(number) : QJsonValue(row.value);
}

} // namespace

QString ageText(const std::optional<qint64>& ageMs)
{
    if (!ageMs) {
        return "never";
    }
    if (*ageMs < 1000) {
        return QString("%1 ms").arg(*ageMs);
    }
    if (*ageMs < 60000) {
        return QString("%1 s").arg(static_cast<double>(*ageMs) / 1000, 0, 'f', 1);
    }
    return QString("%1 min").arg(*ageMs / 60000);
}

std::optional<OutputFormat> outputFormatFromName(const QString& name)
{
    if (name == "table") {
        return OutputFormat::table;
    }
    if (name == "json") {
        return OutputFormat::json;
    }
    return name == "csv" ? std::optional<OutputFormat>(OutputFormat::csv) : std::nullopt;
}

QStringList tableLines(const std::vector<ValueRow>& rows)
{
    std::vector<QStringList> cells;
    cells.push_back({"NAME", "ADDRESS", "VALUE", "AGE"});
    for (const ValueRow& row : rows) {
        cells.push_back({printable(row.name), row.address,
                         row.value.isNull() ? QString(kNeverRead) : printable(row.value),
                         ageText(row.ageMs)});
    }
    int widths[4] = {0, 0, 0, 0};
    for (const QStringList& line : cells) {
        for (int column = 0; column < 4; ++column) {
            widths[column] = std::max(widths[column], static_cast<int>(line.at(column).size()));
        }
    }
    QStringList lines;
    for (const QStringList& line : cells) {
        QString text;
        for (int column = 0; column < 3; ++column) {
            text += line.at(column).leftJustified(widths[column] + kColumnGap);
        }
        lines << text + line.at(3).rightJustified(widths[3]);
    }
    return lines;
}

QJsonObject jsonOf(const ValueRow& row)
{
    QJsonObject object;
    object.insert("name", row.name);
    object.insert("address", row.address);
    object.insert("value", jsonValue(row));
    object.insert("ageMs", row.ageMs ? QJsonValue(*row.ageMs) : QJsonValue());
    return object;
}

QString csvHeading()
{
    return "time,name,address,value,age_ms";
}

QString csvLine(const ValueRow& row, const QString& time)
{
    return QStringList{time, quotedForCsv(row.name), quotedForCsv(row.address),
                       quotedForCsv(row.value), row.ageMs ? QString::number(*row.ageMs) : QString()}
        .join(',');
}

QByteArray jsonLine(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace tavmir::host
