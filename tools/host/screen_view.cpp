// A screen, line by line.
#include "screen_view.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr int kRecentMessages = 5;
constexpr int kUsualRows = 24;
constexpr int kUsualColumns = 80;
constexpr char kHome[] = "\x1b[H";
constexpr char kClearScreen[] = "\x1b[2J";
constexpr char kClearRestOfLine[] = "\x1b[K";
constexpr char kClearBelow[] = "\x1b[J";

winsize terminalSize()
{
    winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) {
        size.ws_row = kUsualRows;
        size.ws_col = kUsualColumns;
    }
    return size;
}

} // namespace

void ScreenView::show(const std::vector<ValueRow>& rows, const LineState& state)
{
    if (console_.out().isBehind()) {
        return; // a newer picture follows
    }
    const QStringList lines = tableLines(rows);
    QStringList screen(utcText(WallClock::now()) + "  " + state.words);
    const winsize size = terminalSize();
    const int room = std::max(1, size.ws_row - 2 - static_cast<int>(recent_.size()));
    screen += lines.mid(0, room - (lines.size() > room ? 1 : 0));
    if (lines.size() > room) {
        screen << QString("… %1 more").arg(lines.size() - room + 1);
    }
    screen += recent_;
    QByteArray bytes = first_ ? QByteArray(kClearScreen) + kHome : QByteArray(kHome);
    for (const QString& line : screen) {
        bytes += line.left(size.ws_col).toUtf8() + kClearRestOfLine + "\r\n";
    }
    console_.out().write(bytes + kClearBelow);
    first_ = false;
    undrawn_.clear();
}

void ScreenView::change(const ValueRow& row, WallClock::time_point time)
{
    console_.print(QString("%1  %2").arg(utcText(time), assignmentLine(row)));
}

void ScreenView::message(const QString& text)
{
    undrawn_ << text;
    recent_ << text;
    recent_ = recent_.mid(std::max(0, static_cast<int>(recent_.size()) - kRecentMessages));
}

void ScreenView::close(const QStringList& lines, const QJsonObject&)
{
    console_.print((undrawn_ + lines).join('\n'));
}

} // namespace tavmir::host
