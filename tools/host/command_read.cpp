// `read`: values from the controller, once.
#include "commands.h"

#include "colours.h"
#include "complain.h"
#include "console.h"
#include "prepared_host.h"
#include "reading.h"
#include "until_signal.h"

namespace tavmir::host
{

namespace
{

QString lineOf(const ValueRow& row, OutputFormat format, bool colours)
{
    switch (format) {
    case OutputFormat::table:
        break;
    case OutputFormat::json:
        return jsonLine(jsonOf(row));
    case OutputFormat::csv:
        return csvLine(row, utcText(WallClock::now()));
    }
    return assignmentLine(row, colours);
}

// Every element of every address; none when one of them is refused.
std::optional<std::vector<PolledElement>> elementsOf(const PreparedHost& host)
{
    std::vector<PolledElement> elements;
    for (const QString& address : host.line().arguments) {
        const ReadRequest request =
            parseRead(host.project(), host.polled(), address, host.line().valueFormat);
        if (!request.problem.isEmpty()) {
            complain(request.problem);
            return std::nullopt;
        }
        elements.insert(elements.end(), request.elements.begin(), request.elements.end());
    }
    return elements;
}

} // namespace

int readCommand(const CommandLine& line)
{
    PreparedHost host(line);
    if (!host.readProject()) {
        return kExitBadInput;
    }
    wire::StopSignal stop;
    const std::optional<std::vector<PolledElement>> elements = elementsOf(host);
    SessionOptions options;
    options.polls = false;
    if (!elements || !host.openSession(options)) {
        return kExitBadInput;
    }
    Console console;
    if (line.output == OutputFormat::csv) {
        console.print(csvHeading());
    }
    bool allRead = true;
    const bool colours = coloursWanted();
    const auto show = [&](const ValueRow& row) {
        console.print(lineOf(row, line.output, colours));
    };
    const auto failed = [&](const ValueRow& row) {
        allRead = false;
        show(row);
        console.complain(notRead(row));
    };
    host.startCapture(complain);
    host.session().start();
    workUntilSignal(stop, host.session(), console, [&] {
        host.awaitConnection();
        readAll(host.session(), *elements, host.operationMs(), show, failed);
    });
    host.closeSession(console);
    return console.finish(stop) && allRead ? kExitOk : kExitFailed;
}

} // namespace tavmir::host
