// Rows into the table, keys into commands, and what remains.
#include "screen_view.h"

#include "colours.h"

#include <QtCore/QDateTime>

#include <fcntl.h>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

constexpr int kKeptMessages = 1000;

TableRow tableRow(const ValueRow& row)
{
    return {printable(row.name), row.address, row.value.isNull() ? QString() : shownValue(row),
            ageText(row.ageMs),  row.ageMs,   row.quality,
            row.reason};
}

} // namespace

std::unique_ptr<RunView> ScreenView::open(Console& console, bool takesCommands)
{
    std::unique_ptr<ScreenView> view(new ScreenView(console));
    Output& out = console.out();
    view->screen_ = TableScreen::open(
        {[&out](const QByteArray& bytes) { out.write(bytes); }, [&out] { return out.isBehind(); }},
        takesCommands, coloursWanted());
    if (!view->screen_) {
        return nullptr;
    }
    const bool typed = takesCommands && view->screen_->takesKeys();
    if (typed && ::pipe2(view->commands_, O_CLOEXEC | O_NONBLOCK) != 0) {
        return nullptr;
    }
    return view;
}

ScreenView::~ScreenView()
{
    for (const int end : commands_) {
        if (end >= 0) {
            ::close(end);
        }
    }
}

TableContent ScreenView::contentOf(const std::vector<ValueRow>& rows, const LineState& state) const
{
    TableContent content;
    for (const ValueRow& row : rows) {
        content.rows.push_back(tableRow(row));
    }
    content.connected = state.connected;
    content.state = state.words;
    content.time = QDateTime::currentDateTimeUtc().toString("hh:mm:ss 'UTC'");
    content.figures = state.recent;
    content.recording = state.recording.words;
    content.recordingFails = state.recording.isFailing;
    content.messages = messages_;
    return content;
}

void ScreenView::show(const std::vector<ValueRow>& rows, const LineState& state)
{
    rows_ = rows;
    state_ = state;
    shown_ = true;
    drawAgain();
}

void ScreenView::drawAgain()
{
    screen_->show(contentOf(rows_, state_));
}

void ScreenView::change(const ValueRow& row, WallClock::time_point time)
{
    message(QString("%1  %2").arg(utcText(time), assignmentLine(row)));
}

void ScreenView::message(const QString& text)
{
    messages_ << text;
    if (messages_.size() > kKeptMessages) {
        messages_.removeFirst();
        ++forgotten_;
    }
    if (shown_) {
        drawAgain();
    }
}

bool ScreenView::look()
{
    const TableScreen::Wish wish = screen_->look();
    if (wish == TableScreen::Wish::command) {
        passOn(screen_->command());
    }
    return wish != TableScreen::Wish::end;
}

void ScreenView::passOn(const QString& command)
{
    const QByteArray line = command.toLocal8Bit() + '\n';
    const auto size = static_cast<size_t>(line.size());
    if (::write(commands_[1], line.constData(), size) != static_cast<ssize_t>(size)) {
        message(command + ": not taken, too much is waiting");
    }
}

void ScreenView::leave()
{
    screen_->leave();
}

// As a block of text, without the rows that did not fit.
QStringList ScreenView::lastPicture() const
{
    std::vector<ValueRow> rows;
    for (const size_t place : screen_->drawn()) {
        if (place < rows_.size()) { // fewer may be polled by now
            rows.push_back(rows_[place]);
        }
    }
    QStringList lines(utcText(WallClock::now()) + "  " + state_.words);
    lines << tableLines(rows, coloursWanted());
    const int more = screen_->shownInAll() - static_cast<int>(rows.size());
    if (more > 0) {
        lines << QString("… %1 more").arg(more);
    }
    return lines;
}

void ScreenView::close(const QStringList& lines, const QJsonObject&)
{
    leave();
    QStringList last = shown_ ? lastPicture() : QStringList();
    if (forgotten_ > 0) {
        last << QString("… %1 earlier messages").arg(forgotten_);
    }
    console_.print((last + messages_ + lines).join('\n'));
}

} // namespace tavmir::host
