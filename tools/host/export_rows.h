// What an export writes: CSV as RFC 4180 has it, in UTF-8, with a line feed behind each line.
//
// A text that begins as a formula does for a spreadsheet (= + - @, a tab, a carriage return) has an
// apostrophe in front, and so has one that begins with an apostrophe. Numbers stand as they are.
#ifndef TAVMIR_HOST_EXPORT_ROWS_H
#define TAVMIR_HOST_EXPORT_ROWS_H

#include "recorder/recording_export.h"

namespace tavmir::host
{

// The text as a cell that no spreadsheet takes for a formula.
QString textCell(const QString& text);

// "time,address,value,number,quality,reason"
QString longHeading();
QString longRow(recorder::Micros at, const recorder::RecordedVariable& variable,
                const recorder::ExportCell& cell);

// "time" and the addresses; where two have the same, with the name.
QString wideHeading(const std::vector<recorder::RecordedVariable>& columns);
// A value that is not good is an empty cell.
QString wideRow(recorder::Micros at, const std::vector<recorder::RecordedVariable>& columns,
                const std::vector<recorder::ExportCell>& cells);

} // namespace tavmir::host

#endif
