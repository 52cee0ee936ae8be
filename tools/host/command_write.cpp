// `write`: values to the controller, each with its result.
#include "commands.h"

#include "complain.h"
#include "console.h"
#include "prepared_host.h"
#include "read_back.h"
#include "until_signal.h"
#include "write_report.h"

#include <deque>

namespace tavmir::host
{

namespace
{

// Enough to fill the driver's requests, few enough for every outcome to be kept until it is asked
// for.
constexpr size_t kQueuedAhead = 1000;

// Writes in the given order. Plain writes are queued together; a bit of a word is written for
// itself, after all before it have ended, and so is each value that is read back.
class Writer
{
public:
    Writer(PreparedHost& host, Console& console) : host_(host), console_(console) {}

    void add(const Assignment& assignment)
    {
        const Deadline deadline(host_.operationMs());
        if (assignment.element.bitNumber || host_.line().readBack) {
            finish();
            report(assignment,
                   host_.session().write(assignment.element, assignment.bytes, deadline));
            return;
        }
        const OperationId id =
            host_.session().queueWrite(assignment.element, assignment.bytes, deadline);
        queued_.push_back({&assignment, id});
        if (queued_.size() > kQueuedAhead) {
            reportFirst();
        }
    }

    // Waits for all that are queued.
    void finish()
    {
        while (!queued_.empty()) {
            reportFirst();
        }
    }

    bool allWritten() const { return allWritten_; }

private:
    struct Queued {
        const Assignment* assignment;
        OperationId id;
    };

    void reportFirst()
    {
        const Queued queued = queued_.front();
        queued_.pop_front();
        report(*queued.assignment, host_.session().await(queued.id));
    }

    void report(const Assignment& assignment, const Outcome& outcome)
    {
        WriteReport report = {outcome, std::nullopt};
        if (host_.line().readBack) {
            report.readBack = readBack(host_, assignment, host_.line().valueFormat);
            report.outcome = settled(outcome, *report.readBack);
        }
        print(assignment, report);
        if (!isDone(report)) {
            allWritten_ = false;
            console_.complain(writeLine(assignment, report));
        }
    }

    void print(const Assignment& assignment, const WriteReport& report)
    {
        switch (host_.line().output) {
        case OutputFormat::table:
            if (isDone(report)) {
                console_.print(writeLine(assignment, report));
            }
            break;
        case OutputFormat::json:
            console_.print(jsonLine(writeJson(assignment, report)));
            break;
        case OutputFormat::csv:
            console_.print(writeCsv(assignment, report, utcText(WallClock::now())));
            break;
        }
    }

    PreparedHost& host_;
    Console& console_;
    std::deque<Queued> queued_;
    bool allWritten_ = true;
};

// Every assignment; none when one of them is refused.
std::optional<std::vector<Assignment>> assignmentsOf(const PreparedHost& host)
{
    std::vector<Assignment> assignments;
    for (const QString& text : host.line().arguments) {
        assignments.push_back(
            parseAssignment(host.project(), host.polled(), text, host.line().valueFormat));
        if (!assignments.back().problem.isEmpty()) {
            complain(assignments.back().problem);
            return std::nullopt;
        }
    }
    return assignments;
}

} // namespace

int writeCommand(const CommandLine& line)
{
    PreparedHost host(line);
    if (!host.readProject()) {
        return kExitBadInput;
    }
    wire::StopSignal stop;
    const std::optional<std::vector<Assignment>> assignments = assignmentsOf(host);
    SessionOptions options;
    options.polls = false;
    if (!assignments || !host.openSession(options)) {
        return kExitBadInput;
    }
    Console console;
    if (line.output == OutputFormat::csv) {
        console.print(writeCsvHeading());
    }
    Writer writer(host, console);
    host.startCapture(complain);
    host.session().start();
    workUntilSignal(stop, host.session(), console, [&] {
        host.awaitConnection();
        for (const Assignment& assignment : *assignments) {
            writer.add(assignment);
        }
        writer.finish();
    });
    host.closeSession(console);
    return console.finish(stop) && writer.allWritten() ? kExitOk : kExitFailed;
}

} // namespace tavmir::host
