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
constexpr char kNothingRead[] = "–";
constexpr char kDim[] = "\x1b[2m";
constexpr char kRed[] = "\x1b[31m";
constexpr char kYellow[] = "\x1b[33m";
constexpr char kNormal[] = "\x1b[0m";

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
    return durationText(std::chrono::milliseconds(*ageMs));
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

QString shownValue(const ValueRow& row)
{
    return row.value.isNull() ? QString(kNothingRead) : printable(row.value);
}

QString markedValue(const ValueRow& row)
{
    const QString mark = qualityMark(row.quality);
    return mark.isEmpty() ? shownValue(row) : shownValue(row) + " " + mark;
}

QString qualityInWords(const ValueRow& row)
{
    if (row.quality == Quality::good) {
        return QString();
    }
    return row.reason.isEmpty()
               ? QString(qualityWord(row.quality))
               : QString("%1: %2").arg(qualityWord(row.quality), printable(row.reason));
}

QString coloured(const QString& text, Quality quality)
{
    switch (quality) {
    case Quality::good:
        break;
    case Quality::never:
    case Quality::stale:
        return kDim + text + kNormal;
    case Quality::bad:
        return kRed + text + kNormal;
    case Quality::unconfirmed:
        return kYellow + text + kNormal;
    }
    return text;
}

QStringList tableLines(const std::vector<ValueRow>& rows, bool colours)
{
    std::vector<QStringList> cells;
    cells.push_back({"NAME", "ADDRESS", "VALUE", "AGE", "QUALITY"});
    for (const ValueRow& row : rows) {
        cells.push_back({printable(row.name), row.address, markedValue(row), ageText(row.ageMs),
                         qualityInWords(row)});
    }
    int widths[4] = {0, 0, 0, 0};
    for (const QStringList& line : cells) {
        for (int column = 0; column < 4; ++column) {
            widths[column] = std::max(widths[column], static_cast<int>(line.at(column).size()));
        }
    }
    const QString gap(kColumnGap, ' ');
    QStringList lines;
    for (size_t i = 0; i < cells.size(); ++i) {
        const QStringList& line = cells[i];
        const QString value = line.at(2).leftJustified(widths[2]);
        QString text = line.at(0).leftJustified(widths[0]) + gap +
                       line.at(1).leftJustified(widths[1]) + gap +
                       (colours && i > 0 ? coloured(value, rows[i - 1].quality) : value) + gap +
                       line.at(3).rightJustified(widths[3]);
        if (!line.at(4).isEmpty()) {
            text += gap + line.at(4);
        }
        lines << text;
    }
    return lines;
}

QString assignmentLine(const ValueRow& row, bool colours)
{
    const QString value = colours ? coloured(markedValue(row), row.quality) : markedValue(row);
    const QString quality = qualityInWords(row);
    const QString text = row.address + " = " + value;
    return quality.isEmpty() ? text : QString("%1 (%2)").arg(text, quality);
}

QJsonObject jsonOf(const ValueRow& row)
{
    QJsonObject object;
    object.insert("name", row.name);
    object.insert("address", row.address);
    object.insert("value", jsonValue(row));
    object.insert("ageMs", row.ageMs ? QJsonValue(*row.ageMs) : QJsonValue());
    object.insert("quality", qualityWord(row.quality));
    object.insert("reason", textOrNull(row.reason));
    return object;
}

QJsonValue textOrNull(const QString& text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QString quotedForCsv(const QString& text)
{
    if (!text.contains(',') && !text.contains('"') && !text.contains('\n') &&
        !text.contains('\r')) {
        return text;
    }
    return "\"" + QString(text).replace("\"", "\"\"") + "\"";
}

QString csvHeading()
{
    return "time,name,address,value,age_ms,quality,reason";
}

QString csvLine(const ValueRow& row, const QString& time)
{
    return QStringList{time,
                       quotedForCsv(row.name),
                       quotedForCsv(row.address),
                       quotedForCsv(row.value),
                       row.ageMs ? QString::number(*row.ageMs) : QString(),
                       qualityWord(row.quality),
                       quotedForCsv(row.reason)}
        .join(',');
}

QByteArray jsonLine(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace tavmir::host
