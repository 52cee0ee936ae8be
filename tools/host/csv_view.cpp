// Rows.
#include "csv_view.h"

namespace tavmir::host
{

void CsvView::head()
{
    if (!headed_) {
        headed_ = true;
        console_.print(csvHeading());
    }
}

void CsvView::show(const std::vector<ValueRow>& rows, const LineState&)
{
    head();
    const QString time = utcText(WallClock::now());
    QStringList lines;
    for (const ValueRow& row : rows) {
        lines << csvLine(row, time);
    }
    if (!lines.isEmpty()) {
        console_.print(lines.join('\n'));
    }
}

void CsvView::change(const ValueRow& row, WallClock::time_point time)
{
    head();
    console_.print(csvLine(row, utcText(time)));
}

void CsvView::message(const QString& text)
{
    console_.say(text);
}

void CsvView::close(const QStringList& lines, const QJsonObject&)
{
    console_.say(lines.join('\n')); // standard output holds values only
}

} // namespace tavmir::host
