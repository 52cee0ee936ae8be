// Writes as a user asks for them.
#include "assignment.h"

#include "project/value_format.h"
#include "value_row.h"

namespace tavmir::host
{

using project::Format;

Assignment parseAssignment(const project::Project& project, const PolledIndex& polled,
                           const QString& text, Format format)
{
    Assignment assignment;
    const int equals = text.indexOf('=');
    if (equals < 0) {
        assignment.problem = QString("%1: a write is ADDRESS=VALUE").arg(printable(text));
        return assignment;
    }
    const QString address = text.left(equals);
    const QString value = text.mid(equals + 1);
    const project::Resolution resolution = project::resolveAddress(project, address);
    if (!resolution.ok) {
        assignment.problem =
            QString("address \"%1\": %2").arg(printable(address), resolution.problem);
        return assignment;
    }
    assignment.element = resolution.element;
    if (format == Format::automatic && polled.formatOf(assignment.element) == Format::floating) {
        format = Format::floating;
    }
    const project::EncodedValue encoded = project::encodeValue(assignment.element, format, value);
    if (!encoded.ok) {
        assignment.problem =
            QString("value of %1: %2").arg(printable(address), printable(encoded.problem));
        return assignment;
    }
    assignment.bytes = encoded.bytes;
    assignment.address = address;
    assignment.value = value;
    assignment.shown = QString("%1 = %2").arg(address, printable(value));
    return assignment;
}

QString writeResult(const Assignment& assignment, const Outcome& outcome)
{
    const QString done = outcome.reason.isEmpty() ? QString("written") : outcome.reason;
    return QString("%1: %2").arg(assignment.shown, outcome.ok() ? done : outcomeInWords(outcome));
}

} // namespace tavmir::host
