// `read`: values from the controller, once.
#include "commands.h"

#include "exchange.h"
#include "prepared_host.h"

#include <QtCore/QDateTime>
#include <QtCore/QTextStream>

#include <cstdio>

namespace tavmir::host
{

namespace
{

void show(const std::vector<ValueRow>& rows, OutputFormat format)
{
    QTextStream out(stdout);
    const QString now = QDateTime::currentDateTime().toString(Qt::ISODateWithMs);
    if (format == OutputFormat::csv) {
        out << csvHeading() << '\n';
    }
    for (const ValueRow& row : rows) {
        switch (format) {
        case OutputFormat::table:
            out << row.address << " = " << printable(row.value) << '\n';
            break;
        case OutputFormat::json:
            out << jsonLine(jsonOf(row)) << '\n';
            break;
        case OutputFormat::csv:
            out << csvLine(row, now) << '\n';
            break;
        }
    }
}

} // namespace

int readCommand(const CommandLine& line)
{
    PreparedHost host(line);
    if (!host.readProject()) {
        return kExitBadInput;
    }
    std::vector<PolledElement> elements;
    for (const QString& address : line.arguments) {
        const ReadRequest request = parseRead(host.project(), address, line.valueFormat);
        if (!request.problem.isEmpty()) {
            complain(request.problem);
            return kExitBadInput;
        }
        elements.insert(elements.end(), request.elements.begin(), request.elements.end());
    }
    SessionOptions options;
    options.polls = false;
    if (!host.openSession(options, [](bool, const QString&) {})) {
        return kExitBadInput;
    }
    host.session().start();
    QStringList failures;
    show(readAll(host.session(), elements, host.operationMs(), failures), line.output);
    for (const QString& failure : failures) {
        complain(failure);
    }
    return failures.isEmpty() ? kExitOk : kExitFailed;
}

} // namespace tavmir::host
