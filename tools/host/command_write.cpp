// `write`: values to the controller, each with its result.
#include "commands.h"

#include "exchange.h"
#include "prepared_host.h"

#include <cstdio>

namespace tavmir::host
{

namespace
{

// Writes in the given order. Plain writes are queued together; a bit of a word is written for
// itself, after all before it have ended.
class Writer
{
public:
    explicit Writer(PreparedHost& host) : host_(host) {}

    void add(const Assignment& assignment)
    {
        const Deadline deadline(host_.operationMs());
        if (assignment.element.bitNumber) {
            finish();
            report(assignment,
                   host_.session().write(assignment.element, assignment.bytes, deadline));
            return;
        }
        const auto id = host_.session().queueWrite(assignment.element, assignment.bytes, deadline);
        if (id) {
            queued_.push_back({&assignment, *id});
            return;
        }
        report(assignment, {OperationState::failed, "earlier writes did not end in time"});
    }

    // Waits for all that are queued.
    void finish()
    {
        for (const Queued& queued : queued_) {
            const Deadline deadline(host_.operationMs());
            report(*queued.assignment, host_.session().await(queued.id, deadline));
        }
        queued_.clear();
    }

    bool allWritten() const { return allWritten_; }

private:
    struct Queued {
        const Assignment* assignment;
        OperationId id;
    };

    void report(const Assignment& assignment, const OperationOutcome& outcome)
    {
        const QString text = writeResult(assignment, outcome);
        if (!outcome.ok()) {
            allWritten_ = false;
            complain(text);
            return;
        }
        std::printf("%s\n", text.toLocal8Bit().constData());
        std::fflush(stdout);
    }

    PreparedHost& host_;
    std::vector<Queued> queued_;
    bool allWritten_ = true;
};

} // namespace

int writeCommand(const CommandLine& line)
{
    PreparedHost host(line);
    if (!host.readProject()) {
        return kExitBadInput;
    }
    std::vector<Assignment> assignments;
    for (const QString& text : line.arguments) {
        assignments.push_back(parseAssignment(host.project(), text, line.valueFormat));
        if (!assignments.back().problem.isEmpty()) {
            complain(assignments.back().problem);
            return kExitBadInput;
        }
    }
    SessionOptions options;
    options.polls = false;
    if (!host.openSession(options, [](bool, const QString&) {})) {
        return kExitBadInput;
    }
    host.session().start();
    Writer writer(host);
    for (const Assignment& assignment : assignments) {
        writer.add(assignment);
    }
    writer.finish();
    return writer.allWritten() ? kExitOk : kExitFailed;
}

} // namespace tavmir::host
