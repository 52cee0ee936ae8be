// Lines into operations.
#include "operator_input.h"

#include "assignment.h"
#include "reading.h"

namespace tavmir::host
{

OperatorInput::OperatorInput(int descriptor, PreparedHost& host,
                             std::function<void(const QString& text)> say)
    : host_(host), say_(std::move(say)), lines_(descriptor), thread_([this] { loop(); })
{
}

OperatorInput::~OperatorInput()
{
    finish();
}

bool OperatorInput::finish()
{
    stop();
    if (thread_.joinable()) {
        thread_.join();
    }
    return allWritten_;
}

void OperatorInput::loop()
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

void OperatorInput::write(const QString& text)
{
    const Assignment assignment =
        parseAssignment(host_.project(), host_.polled(), text, project::Format::automatic);
    if (!assignment.problem.isEmpty()) {
        allWritten_ = false;
        say_(assignment.problem);
        return;
    }
    const Outcome outcome =
        host_.session().write(assignment.element, assignment.bytes, Deadline(host_.operationMs()));
    if (!outcome.ok()) {
        allWritten_ = false;
    }
    say_(writeResult(assignment, outcome));
}

void OperatorInput::read(const QString& address)
{
    const ReadRequest request =
        parseRead(host_.project(), host_.polled(), address, project::Format::automatic);
    if (!request.problem.isEmpty()) {
        say_(request.problem);
        return;
    }
    const auto came = [&](const ValueRow& row) {
        say_(QString("%1 = %2: read").arg(row.address, printable(row.value)));
    };
    const auto failed = [&](const ValueRow& row) { say_(notRead(row)); };
    readAll(host_.session(), request.elements, host_.operationMs(), came, failed);
}

} // namespace tavmir::host
