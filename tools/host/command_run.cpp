// `run`: polls, shows the values live, and takes reads and writes from standard input.
#include "commands.h"

#include "exchange.h"
#include "line_reader.h"
#include "prepared_host.h"
#include "statistics_report.h"
#include "terminal.h"
#include "wire/stop_signal.h"

#include <unistd.h>

#include <atomic>
#include <thread>

namespace tavmir::host
{

namespace
{

// Reads and writes typed while the values run, one after the other, on a thread of their own.
class Operator
{
public:
    Operator(PreparedHost& host, Terminal& terminal)
        : host_(host), terminal_(terminal), lines_(STDIN_FILENO), thread_([this] { loop(); })
    {
    }

    ~Operator()
    {
        stop();
        thread_.join();
    }

    // Takes no further line.
    void stop() { lines_.stop(); }

private:
    void loop()
    {
        while (const std::optional<QByteArray> line = lines_.next()) {
            const QString text = QString::fromLocal8Bit(*line).trimmed();
            if (text.contains('=')) {
                write(text);
            } else if (!text.isEmpty()) {
                read(text);
            }
        }
    }

    void write(const QString& text)
    {
        const Assignment assignment =
            parseAssignment(host_.project(), text, project::Format::automatic);
        if (!assignment.problem.isEmpty()) {
            terminal_.message(assignment.problem);
            return;
        }
        const Deadline deadline(host_.operationMs());
        terminal_.message(writeResult(
            assignment, host_.session().write(assignment.element, assignment.bytes, deadline)));
    }

    void read(const QString& address)
    {
        const ReadRequest request = parseRead(host_.project(), address, project::Format::automatic);
        if (!request.problem.isEmpty()) {
            terminal_.message(request.problem);
            return;
        }
        QStringList messages;
        const auto rows = readAll(host_.session(), request.elements, host_.operationMs(), messages);
        for (const ValueRow& row : rows) {
            messages << QString("%1 = %2: read").arg(row.address, printable(row.value));
        }
        for (const QString& message : messages) {
            terminal_.message(message);
        }
    }

    PreparedHost& host_;
    Terminal& terminal_;
    LineReader lines_;
    std::thread thread_;
};

std::vector<ValueRow> currentRows(HostSession& session)
{
    std::vector<ValueRow> rows;
    const Clock::time_point now = Clock::now();
    for (const PolledElement& entry : session.polled()) {
        ValueRow row = cachedRow(session, entry);
        if (const auto read = session.lastPolled(entry.element)) {
            const auto age = std::chrono::duration_cast<std::chrono::milliseconds>(now - *read);
            row.ageMs = std::max<qint64>(0, age.count());
        }
        rows.push_back(row);
    }
    return rows;
}

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

} // namespace

int runCommand(const CommandLine& line)
{
    wire::StopSignal stop;
    Terminal terminal(line.output);
    std::atomic<bool> connected{false};
    PreparedHost host(line);
    if (!host.readProject()) {
        return kExitBadInput;
    }
    const project::Connection& connection = host.project().connection;
    const QString controller = QString("%1:%2").arg(connection.host).arg(connection.port);
    SessionOptions options;
    options.pauseMs = line.pauseMs;
    const auto observer = [&](bool isConnected, const QString& why) {
        const bool wasConnected = connected.exchange(isConnected);
        terminal.message(
            isConnected    ? "connected to " + controller
            : wasConnected ? QString("lost %1: %2").arg(controller, why)
            : why.startsWith(controller + ": ")
                ? QString("cannot connect to %1; trying again").arg(why)
                : QString("cannot connect to %1: %2; trying again").arg(controller, why));
    };
    if (!host.openSession(options, observer)) {
        return kExitBadInput;
    }
    HostSession& session = host.session();
    const Clock::time_point start = Clock::now();
    session.start();
    {
        std::unique_ptr<Operator> commands;
        if (line.commandsFromInput) {
            commands = std::make_unique<Operator>(host, terminal);
        }
        bool stopped = false;
        while (!stopped) {
            const double left = line.durationMs < 0 ? line.intervalMs
                                                    : line.durationMs - 1000 * secondsSince(start);
            const int wait =
                static_cast<int>(std::min<double>(line.intervalMs, std::max(0.0, left)));
            stopped = stop.waitMs(wait) ||
                      (line.durationMs >= 0 && 1000 * secondsSince(start) >= line.durationMs);
            terminal.show(currentRows(session), connected,
                          (connected ? "connected to " : "not connected to ") + controller);
        }
        if (commands) {
            commands->stop();
        }
        session.stop(); // ends what the operator still waits for
    }
    const double seconds = secondsSince(start);
    terminal.close(statisticsLines(session, seconds), statisticsJson(session, seconds));
    return kExitOk;
}

} // namespace tavmir::host
