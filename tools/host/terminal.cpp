// Standard output as a terminal or as a stream.
#include "terminal.h"

#include <QtCore/QDateTime>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

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

QString now()
{
    return QDateTime::currentDateTime().toString(Qt::ISODateWithMs);
}

winsize terminalSize()
{
    winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) {
        size.ws_row = kUsualRows;
        size.ws_col = kUsualColumns;
    }
    return size;
}

void print(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

void printLines(const QStringList& lines)
{
    print(lines.join('\n').toUtf8() + '\n');
}

} // namespace

Terminal::Terminal(OutputFormat format)
    : format_(format), inPlace_(format == OutputFormat::table && ::isatty(STDOUT_FILENO) == 1)
{
}

void Terminal::show(const std::vector<ValueRow>& rows, bool connected, const QString& state)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    switch (format_) {
    case OutputFormat::table:
        if (inPlace_) {
            showInPlace(tableLines(rows), state);
        } else {
            printLines(QStringList(now() + "  " + state) + tableLines(rows) +
                       QStringList(QString()));
        }
        break;
    case OutputFormat::json: {
        QJsonArray values;
        for (const ValueRow& row : rows) {
            values << jsonOf(row);
        }
        print(jsonLine({{"time", now()}, {"connected", connected}, {"values", values}}) + '\n');
        break;
    }
    case OutputFormat::csv: {
        QStringList lines;
        if (first_) {
            lines << csvHeading();
        }
        const QString time = now();
        for (const ValueRow& row : rows) {
            lines << csvLine(row, time);
        }
        printLines(lines);
        break;
    }
    }
    first_ = false;
}

void Terminal::showInPlace(const QStringList& lines, const QString& state)
{
    QStringList screen(now() + "  " + state);
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
    print(bytes + kClearBelow);
}

void Terminal::message(const QString& text)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (inPlace_) {
        recent_ << text;
        recent_ = recent_.mid(std::max(0, static_cast<int>(recent_.size()) - kRecentMessages));
        return;
    }
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
}

void Terminal::close(const QStringList& lines, const QJsonObject& json)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    switch (format_) {
    case OutputFormat::table:
        printLines(lines);
        break;
    case OutputFormat::json:
        print(jsonLine({{"statistics", json}}) + '\n');
        break;
    case OutputFormat::csv:
        // Standard output holds values only.
        std::fprintf(stderr, "%s\n", lines.join('\n').toLocal8Bit().constData());
        break;
    }
}

} // namespace tavmir::host
