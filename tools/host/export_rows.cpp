// Cells and lines.
#include "export_rows.h"

#include "recorder/state_words.h"
#include "row_formats.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

using recorder::ExportCell;
using recorder::RecordedValue;
using recorder::RecordedVariable;

QString valueCell(const ExportCell& cell)
{
    return cell.value.kind == RecordedValue::Kind::text ? textCell(cell.text) : cell.text;
}

// Hexadecimal numbers are decimal here.
QString numberCell(const ExportCell& cell)
{
    switch (cell.value.kind) {
    case RecordedValue::Kind::integer:
        return QString::number(cell.value.integer);
    case RecordedValue::Kind::real:
        return cell.text.startsWith("0x") ? QString::number(cell.value.real) : cell.text;
    case RecordedValue::Kind::none:
    case RecordedValue::Kind::text:
        break;
    }
    return QString();
}

} // namespace

QString textCell(const QString& text)
{
    const bool isFormula = !text.isEmpty() && QString("=+-@\t\r'").contains(text.at(0));
    return quotedForCsv(isFormula ? "'" + text : text);
}

QString longHeading()
{
    return "time,address,value,number,quality,reason";
}

QString longRow(recorder::Micros at, const RecordedVariable& variable, const ExportCell& cell)
{
    return QStringList{
        recorder::momentText(at), textCell(variable.address),        valueCell(cell),
        numberCell(cell),         qualityWord(cell.quality.quality), textCell(cell.quality.reason)}
        .join(',');
}

QString wideHeading(const std::vector<RecordedVariable>& columns)
{
    QStringList cells("time");
    for (const RecordedVariable& column : columns) {
        const auto same =
            std::count_if(columns.begin(), columns.end(), [&](const RecordedVariable& other) {
                return other.address == column.address;
            });
        cells << textCell(
            same > 1 ? QString("%1 (%2, %3)").arg(column.address, column.name, column.format)
                     : column.address);
    }
    return cells.join(',');
}

QString wideRow(recorder::Micros at, const std::vector<RecordedVariable>& columns,
                const std::vector<ExportCell>& cells)
{
    QStringList row(recorder::momentText(at));
    for (size_t i = 0; i < columns.size(); ++i) {
        row << (cells[i].quality.quality == Quality::good ? valueCell(cells[i]) : QString());
    }
    return row.join(',');
}

} // namespace tavmir::host
