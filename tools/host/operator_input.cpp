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
    stop();
    thread_.join();
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
        say_(assignment.problem);
        return;
    }
    const Deadline deadline(host_.operationMs());
    say_(writeResult(assignment,
                     host_.session().write(assignment.element, assignment.bytes, deadline)));
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
    readAll(host_.session(), request.elements, host_.operationMs(), came, say_);
}

} // namespace tavmir::host
