// Line by line.
#include "table_drawer.h"

#include "link_line.h"
#include "table_help.h"
#include "text_width.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

PictureLine lineOf(const QString& text, Style style, int width)
{
    return {{cutAtEnd(text, width), style}};
}

// Left and right of one line; the right one only where both fit.
PictureLine bothEnds(const QString& left, const QString& right, Style style, int width)
{
    const int gap = width - widthOf(left) - widthOf(right);
    return lineOf(gap < 2 ? left : left + QString(gap, ' ') + right, style, width);
}

// What the heading says of a sorted column.
QString sortMark(const RowOrder& order, SortBy by)
{
    if (order.by != by) {
        return QString();
    }
    return order.reversed ? "v" : "^";
}

bool namesTellNothing(const std::vector<TableRow>& rows)
{
    return std::all_of(rows.begin(), rows.end(),
                       [](const TableRow& row) { return row.name == row.address; });
}

// Nothing where the address says the same.
QString nameText(const TableRow& row)
{
    return row.name == row.address ? QString() : drawable(row.name);
}

QString valueText(const TableRow& row)
{
    return row.value.isNull() ? nothingRead() : drawable(row.value);
}

QString qualityText(const TableRow& row)
{
    if (row.quality == Quality::good) {
        return QString();
    }
    const QString word = qualityWord(row.quality);
    return row.reason.isEmpty() ? word : drawable(word + ": " + row.reason);
}

struct Headings {
    QString name;
    QString address;
    QString age;
    QString mark;
};

Headings headingsOf(const RowOrder& order, bool hasNames)
{
    const QString byName = sortMark(order, SortBy::name);
    return {"NAME" + byName, "ADDRESS" + (hasNames ? QString() : byName),
            "AGE" + sortMark(order, SortBy::age), sortMark(order, SortBy::quality)};
}

void grow(int& need, const QString& text)
{
    need = std::max(need, widthOf(text));
}

QString gap()
{
    return QString(kColumnGap, ' ');
}

PictureLine headingLine(const RowOrder& order, const ColumnWidths& widths)
{
    const Headings headings = headingsOf(order, widths.name > 0);
    QString text = fitted(headings.mark, kMarkWidth);
    if (widths.name > 0) {
        text += fitted(headings.name, widths.name) + gap();
    }
    if (widths.address > 0) {
        text += fitted(headings.address, widths.address) + gap();
    }
    text += fitted("VALUE", widths.value);
    if (widths.age > 0) {
        text += gap() + fittedRight(headings.age, widths.age);
    }
    if (widths.quality > 0) {
        text += gap() + fitted("QUALITY", widths.quality);
    }
    return {{text, Style::heading}};
}

// The end of a name or an address tells more than its beginning.
QString fittedName(const QString& shown, int width)
{
    return fitted(cutAtStart(shown, width), width);
}

PictureLine rowLine(const TableRow& row, const ColumnWidths& widths)
{
    const Style style = styleOf(row.quality);
    PictureLine line = {{QString(QChar(markOf(row.quality))) + ' ', style}};
    if (widths.name > 0) {
        line.push_back({fittedName(nameText(row), widths.name) + gap(), Style::plain});
    }
    if (widths.address > 0) {
        line.push_back({fittedName(drawable(row.address), widths.address) + gap(), Style::plain});
    }
    line.push_back({fitted(valueText(row), widths.value), style});
    if (widths.age > 0) {
        line.push_back({gap() + fittedRight(row.age, widths.age), Style::plain});
    }
    if (widths.quality > 0) {
        line.push_back({gap() + cutAtEnd(qualityText(row), widths.quality), style});
    }
    return line;
}

// Where on the screen what is; the values are the last to go.
struct Rooms {
    int state;
    int figures;
    int recording;
    int bottom;
    int messages;
    int table; // with its heading
};

Rooms shareLines(int lines, int messages, bool isRecorded)
{
    constexpr int kSmall = 12;
    constexpr int kUsual = 20;
    constexpr int kMostMessages = 5;
    Rooms rooms = {lines > 2 ? 1 : 0,
                   lines > 5 ? 1 : 0,
                   isRecorded && lines > 6 ? 1 : 0,
                   lines > 4 ? 1 : 0,
                   0,
                   0};
    const int most = lines < 7 ? 0 : lines < kSmall ? 1 : lines < kUsual ? 2 : kMostMessages;
    rooms.messages = std::min(messages, most);
    rooms.table =
        lines - rooms.state - rooms.figures - rooms.recording - rooms.bottom - rooms.messages;
    return rooms;
}

QString placeInWords(const TableControl& control, int first, int shown, int count, int all)
{
    QString text = count == 0 ? QString("0") : QString("%1-%2").arg(first + 1).arg(first + shown);
    text += QString(" of %1").arg(count);
    if (!control.filter().isEmpty()) {
        text += QString(" with \"%1\", %2 in all").arg(drawable(control.filter())).arg(all);
    }
    const QString order = orderInWords(control.order());
    return order.isEmpty() ? text : text + ", " + order;
}

PictureLine bottomLine(const TableControl& control, const QString& place, int width,
                       std::optional<int>& cursor)
{
    const bool isFilter = control.mode() == TableMode::filter;
    if (!isFilter && control.mode() != TableMode::command) {
        return bothEnds(place, control.takesCommands() ? ": command  ? keys" : "? keys",
                        Style::hint, width);
    }
    const QString typed = drawable(isFilter ? control.filter() : control.command());
    const QString text = (isFilter ? '/' : ':') + cutAtStart(typed, width - 2);
    cursor = std::min(widthOf(text), width - 1);
    return isFilter ? bothEnds(text, " " + place, Style::strong, width)
                    : lineOf(text, Style::strong, width);
}

} // namespace

void TableDrawer::measure(const TableContent& content, const std::vector<size_t>& shown,
                          const TableControl& control, int width)
{
    if (width != width_ || control.filter() != filter_) {
        needs_ = ColumnWidths();
        width_ = width;
        filter_ = control.filter();
    }
    const bool hasNames = !namesTellNothing(content.rows);
    const Headings headings = headingsOf(control.order(), hasNames);
    if (hasNames) {
        grow(needs_.name, headings.name);
    } else {
        needs_.name = 0;
    }
    grow(needs_.address, headings.address);
    grow(needs_.value, "VALUE");
    grow(needs_.age, headings.age);
    for (const size_t place : shown) {
        const TableRow& row = content.rows[place];
        if (hasNames) {
            grow(needs_.name, nameText(row));
        }
        grow(needs_.address, drawable(row.address));
        grow(needs_.value, valueText(row));
        grow(needs_.age, row.age);
        grow(needs_.quality, qualityText(row));
    }
}

void TableDrawer::drawTable(const TableContent& content, TableControl& control, int width, int room,
                            Picture& picture)
{
    const std::vector<size_t> shown = shownRows(content.rows, control.filter(), control.order());
    measure(content, shown, control, width);
    const ColumnWidths widths = shareWidth(needs_, width);
    const int heading = room > 1 ? 1 : 0;
    const int rows = std::max(0, room - heading);
    count_ = static_cast<int>(shown.size());
    first_ = control.firstOf(count_, rows);
    drawn_.assign(shown.begin() + first_, shown.begin() + std::min(count_, first_ + rows));
    if (heading > 0) {
        picture.lines.push_back(headingLine(control.order(), widths));
    }
    for (const size_t place : drawn_) {
        picture.lines.push_back(rowLine(content.rows[place], widths));
    }
}

Picture TableDrawer::draw(const TableContent& content, TableControl& control, ScreenSize size)
{
    const int width = size.columns;
    const Rooms rooms =
        shareLines(size.lines, content.messages.size(), !content.recording.isEmpty());
    Picture picture;
    if (rooms.state > 0) {
        picture.lines.push_back(bothEnds(drawable(content.state), content.time,
                                         content.connected ? Style::strong : Style::bad, width));
    }
    if (rooms.figures > 0) {
        picture.lines.push_back(lineOf(linkLine(content.figures, width), Style::plain, width));
    }
    if (rooms.recording > 0) {
        picture.lines.push_back(lineOf(drawable(content.recording),
                                       content.recordingFails ? Style::bad : Style::plain, width));
    }
    const size_t below = picture.lines.size() + static_cast<size_t>(rooms.table);
    QString place;
    if (control.mode() == TableMode::help) {
        const QStringList help = helpLines(control.takesCommands(), width);
        const int first = control.firstOf(help.size(), rooms.table);
        for (const QString& line : help.mid(first, rooms.table)) {
            picture.lines.push_back(lineOf(line, Style::plain, width));
        }
        place = QString("%1-%2 of %3 lines")
                    .arg(first + 1)
                    .arg(std::min(help.size(), first + rooms.table))
                    .arg(help.size());
    } else {
        drawTable(content, control, width, rooms.table, picture);
        place = placeInWords(control, first_, static_cast<int>(drawn_.size()), count_,
                             static_cast<int>(content.rows.size()));
    }
    picture.lines.resize(below);
    for (const QString& message : content.messages.mid(content.messages.size() - rooms.messages)) {
        picture.lines.push_back(lineOf(drawable(message), Style::plain, width));
    }
    if (rooms.bottom > 0) {
        picture.lines.push_back(bottomLine(control, place, width, picture.cursor));
    }
    return picture;
}

} // namespace tavmir::host
