// Blocks of text.
#include "plain_view.h"

namespace tavmir::host
{

void PlainView::show(const std::vector<ValueRow>& rows, const LineState& state)
{
    const QStringList lines =
        QStringList(utcText(WallClock::now()) + "  " + state.words) + tableLines(rows, colours_);
    console_.print(lines.join('\n') + '\n');
}

void PlainView::change(const ValueRow& row, WallClock::time_point time)
{
    console_.print(QString("%1  %2").arg(utcText(time), assignmentLine(row, colours_)));
}

void PlainView::message(const QString& text)
{
    console_.say(text);
}

void PlainView::close(const QStringList& lines, const QJsonObject&)
{
    console_.print(lines.join('\n'));
}

} // namespace tavmir::host
