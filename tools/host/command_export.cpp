// Options, and the walk on a thread of its own, which a signal ends.
#include "command_export.h"

#include "complain.h"
#include "console.h"
#include "exit_status.h"
#include "export_rows.h"
#include "link/wake_event.h"
#include "own_command_line.h"
#include "recorder/state_words.h"
#include "value_row.h"

#include <QtCore/QDateTime>

#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <limits>
#include <optional>
#include <thread>

namespace tavmir::host
{

namespace
{

using recorder::Micros;
using recorder::TimeSpan;

struct Options {
    QString folder;
    QStringList addresses;
    qint64 stepMs = 0; // 0: each row
    TimeSpan span = {std::numeric_limits<Micros>::min() / 4,
                     std::numeric_limits<Micros>::max() / 4};
    QString problem; // not empty: refused
};

// Without a zone it is UTC.
std::optional<Micros> momentOf(const QString& text)
{
    QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!time.isValid()) {
        return std::nullopt;
    }
    if (time.timeSpec() == Qt::LocalTime) {
        time.setTimeSpec(Qt::UTC);
    }
    return time.toMSecsSinceEpoch() * 1000;
}

void takeMoment(const QCommandLineParser& parser, const char* option, Micros& moment,
                QString& problem)
{
    if (!parser.isSet(option)) {
        return;
    }
    const QString text = parser.value(option);
    const std::optional<Micros> given = momentOf(text);
    if (!given && problem.isEmpty()) {
        problem = QString("--%1 %2: must be a time such as 2026-03-01T12:00:00.000Z")
                      .arg(option, printable(text));
    }
    moment = given.value_or(moment);
}

void takeStep(const QCommandLineParser& parser, Options& options)
{
    constexpr int kLongestMs = 24 * 3600 * 1000;
    if (!parser.isSet("wide")) {
        return;
    }
    bool isNumber = false;
    options.stepMs = parser.value("wide").toInt(&isNumber);
    if (!isNumber || options.stepMs < 1 || options.stepMs > kLongestMs) {
        options.problem = QString("--wide %1: must be a whole number from 1 to %2")
                              .arg(printable(parser.value("wide")))
                              .arg(kLongestMs);
    } else if (parser.isSet("csv")) {
        options.problem = "--csv, --wide: either a row for each value, or one at each step";
    }
}

void addOptions(QCommandLineParser& parser)
{
    parser.addOption({"csv", "A row for each value and each change of quality; so it is without "
                             "options, too."});
    parser.addOption({"wide", "A row each MS milliseconds, with a column for each address.", "MS"});
    parser.addOption({"from",
                      "Only what was recorded at this time or later (ISO 8601; UTC "
                      "without a zone).",
                      "TIME"});
    parser.addOption({"to", "Only what was recorded before this time.", "TIME"});
    parser.addPositionalArgument("FOLDER", "A folder that was recorded into.", "export FOLDER");
    parser.addPositionalArgument("ADDRESS", "Addresses or names of variables; without, all.",
                                 "[ADDRESS...]");
}

Options optionsOf(const QCommandLineParser& parser)
{
    Options options;
    const QStringList given = parser.positionalArguments();
    if (given.isEmpty()) {
        options.problem = QString("usage: tavmir-host export %1").arg(kExportArguments);
        return options;
    }
    options.folder = given.first();
    options.addresses = given.mid(1);
    takeStep(parser, options);
    takeMoment(parser, "from", options.span.from, options.problem);
    takeMoment(parser, "to", options.span.until, options.problem);
    if (options.problem.isEmpty() && options.span.from >= options.span.until) {
        options.problem = "--from, --to: the first must be before the second";
    }
    return options;
}

// How far it is, on standard error, when it takes long: in one line on a terminal, else now and
// then in another.
class Progress
{
public:
    explicit Progress(Console& console) : console_(console) {}

    void tell(const TimeSpan& done, const TimeSpan& whole)
    {
        const auto now = std::chrono::steady_clock::now();
        if (now < next_ || whole.until <= whole.from) {
            return;
        }
        next_ = now + (isTerminal_ ? std::chrono::milliseconds(500) : std::chrono::seconds(10));
        const double share = static_cast<double>(done.until - whole.from) /
                             static_cast<double>(whole.until - whole.from);
        const QString words = QString("exported until %1, %2 %")
                                  .arg(recorder::momentText(done.until))
                                  .arg(static_cast<int>(100 * share));
        if (isTerminal_) {
            std::fprintf(stderr, "\r%s", words.toLocal8Bit().constData());
            isLineOpen_ = true;
        } else {
            console_.complain(words);
        }
    }

    void end()
    {
        if (isLineOpen_) {
            std::fputs("\r\x1B[K", stderr);
        }
    }

private:
    static constexpr auto kQuietFor = std::chrono::seconds(2);

    Console& console_;
    const bool isTerminal_ = ::isatty(STDERR_FILENO) == 1;
    std::chrono::steady_clock::time_point next_ = std::chrono::steady_clock::now() + kQuietFor;
    bool isLineOpen_ = false;
};

class Export
{
public:
    Export(const Options& options, recorder::RecordingExport& walk, Console& console)
        : options_(options), walk_(walk), console_(console), progress_(console)
    {
    }

    void run()
    {
        recorder::ExportSink sink;
        const auto& columns = walk_.columns();
        sink.row = [&](Micros at, size_t column, const recorder::ExportCell& cell) {
            print(longRow(at, columns[column], cell));
        };
        sink.step = [&](Micros at, const std::vector<recorder::ExportCell>& cells) {
            print(wideRow(at, columns, cells));
        };
        sink.goesOn = [&](TimeSpan done, TimeSpan whole) {
            send();
            progress_.tell(done, whole);
            return !isStopped_ && !console_.isBroken();
        };
        sink.problem = [&](const QString& problem) {
            isWhole_ = false;
            console_.complain(problem);
        };
        print(options_.stepMs > 0 ? wideHeading(columns) : longHeading());
        walk_.walk(options_.span, options_.stepMs, sink);
        send();
        progress_.end();
    }

    void stop() { isStopped_ = true; }

    // Every file could be read, and nobody stopped it.
    bool isWhole() const { return isWhole_ && !isStopped_; }
    bool isStopped() const { return isStopped_; }

private:
    static constexpr int kSentTogether = 32768; // bytes

    void print(const QString& line)
    {
        waiting_ += line.toUtf8() + '\n';
        if (waiting_.size() >= kSentTogether) {
            send();
        }
    }

    void send()
    {
        console_.out().write(waiting_);
        waiting_.clear();
    }

    const Options& options_;
    recorder::RecordingExport& walk_;
    Console& console_;
    Progress progress_;
    QByteArray waiting_;
    bool isWhole_ = true;
    std::atomic<bool> isStopped_{false};
};

void runUntilSignal(Export& work, wire::StopSignal& stop, Console& console)
{
    console.waitForRoom();
    WakeEvent done;
    std::thread worker([&] {
        work.run();
        done.wake();
    });
    pollfd waits[2] = {{done.descriptor(), POLLIN, 0}, {stop.descriptor(), POLLIN, 0}};
    while (waits[0].revents == 0) {
        if (::poll(waits, 2, -1) > 0 && waits[1].revents != 0 && stop.take()) {
            work.stop();
            console.hurry();
            break;
        }
    }
    worker.join();
    console.hurry();
}

} // namespace

int exportCommand(const QStringList& arguments)
{
    OwnCommandLine line(kExportPurpose);
    addOptions(line.parser());
    if (const std::optional<int> ended = line.take(arguments)) {
        return *ended;
    }
    const Options options = optionsOf(line.parser());
    QString problem = options.problem;
    std::unique_ptr<recorder::RecordingReader> reader;
    if (problem.isEmpty()) {
        reader = recorder::RecordingReader::open(options.folder, problem);
    }
    std::optional<recorder::RecordingExport> walk;
    if (reader) {
        walk.emplace(*reader, options.addresses, problem);
    }
    if (!problem.isEmpty()) {
        complain(problem);
        return kExitBadInput;
    }
    wire::StopSignal stop;
    Console console;
    Export work(options, *walk, console);
    runUntilSignal(work, stop, console);
    if (work.isStopped()) {
        console.complain("the export was stopped: it is not whole");
        console.finishSoon();
        return kExitFailed;
    }
    return console.finish(stop) && work.isWhole() ? kExitOk : kExitFailed;
}

} // namespace tavmir::host
