// Writes as a user asks for them.
#include "assignment.h"

#include "project/raw_address.h"
#include "project/value_format.h"
#include "value_row.h"

namespace tavmir::host
{

using project::Format;

Assignment parseAssignment(const project::Project& project, const PolledIndex& polled,
                           const QString& text, Format format)
{
    const int equals = text.indexOf('=');
    if (equals < 0) {
        Assignment refused;
        refused.problem = QString("%1: a write is ADDRESS=VALUE").arg(printable(text));
        return refused;
    }
    return parseAssignment(project, polled, text.left(equals), text.mid(equals + 1), format);
}

Assignment parseAssignment(const project::Project& project, const PolledIndex& polled,
                           const QString& address, const QString& value, Format format)
{
    Assignment assignment;
    const project::Resolution named = project::resolveNamed(project, address);
    if (!named.ok) {
        assignment.problem = QString("address \"%1\": %2").arg(printable(address), named.problem);
        return assignment;
    }
    assignment.element = named.element;
    const project::EncodedValue encoded =
        format == Format::automatic
            ? project::encodeShown(assignment.element, polled.formatOf(assignment.element), value)
            : project::encodeValue(assignment.element, format, value);
    if (!encoded.ok) {
        assignment.problem = printable(encoded.problem);
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
