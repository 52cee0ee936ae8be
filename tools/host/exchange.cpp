// From texts to operations and back.
#include "exchange.h"

#include "project/address_expansion.h"
#include "project/value_format.h"

namespace tavmir::host
{

using project::Format;

namespace
{

// The format in which the project shows the address, when it names it.
Format shownFormat(const project::Project& project, const project::Element& element)
{
    for (const project::Polled& polled : project.polled) {
        if (polled.address == element.addressText) {
            return project::effectiveFormat(element, polled.format);
        }
    }
    return project::effectiveFormat(element, Format::automatic);
}

} // namespace

Assignment parseAssignment(const project::Project& project, const QString& text, Format format)
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
    if (format == Format::automatic &&
        shownFormat(project, assignment.element) == Format::floating) {
        format = Format::floating;
    }
    const project::EncodedValue encoded = project::encodeValue(assignment.element, format, value);
    if (!encoded.ok) {
        assignment.problem =
            QString("value of %1: %2").arg(printable(address), printable(encoded.problem));
        return assignment;
    }
    assignment.bytes = encoded.bytes;
    assignment.shown = QString("%1 = %2").arg(address, printable(value));
    return assignment;
}

ReadRequest parseRead(const project::Project& project, const QString& address, Format format)
{
    ReadRequest request;
    const project::Expansion expansion = project::expandAddress(project, address);
    if (!expansion.ok) {
        request.problem = QString("address \"%1\": %2").arg(printable(address), expansion.problem);
        return request;
    }
    for (const project::Element& element : expansion.elements) {
        if (expansion.elements.size() == 1 && !project::formatFits(element, format)) {
            request.problem = QString("address \"%1\": not shown as %2")
                                  .arg(printable(address), project::formatName(format));
            return request;
        }
        PolledElement entry;
        entry.element = element;
        entry.name = element.addressText;
        entry.format = format == Format::automatic ? shownFormat(project, element)
                                                   : project::effectiveFormat(element, format);
        request.elements.push_back(entry);
    }
    return request;
}

ValueRow cachedRow(HostSession& session, const PolledElement& entry)
{
    ValueRow row;
    row.name = entry.name;
    row.address = entry.element.addressText;
    row.format = entry.format;
    row.value =
        project::decodeValue(entry.element, entry.format, session.cachedValue(entry.element));
    return row;
}

std::vector<ValueRow> readAll(HostSession& session, const std::vector<PolledElement>& elements,
                              int timeoutMs, QStringList& failures)
{
    std::vector<std::optional<OperationId>> ids;
    for (const PolledElement& entry : elements) {
        ids.push_back(session.readOnce(entry.element, Deadline(timeoutMs)));
    }
    std::vector<ValueRow> rows;
    for (size_t i = 0; i < elements.size(); ++i) {
        const PolledElement& entry = elements[i];
        const OperationOutcome outcome =
            ids[i] ? session.await(*ids[i], Deadline(timeoutMs))
                   : OperationOutcome{OperationState::failed, "earlier reads did not end in time"};
        if (!outcome.ok()) {
            failures << QString("%1: not read: %2").arg(entry.name, outcome.reason);
            continue;
        }
        ValueRow row = cachedRow(session, entry);
        row.ageMs = 0;
        rows.push_back(row);
    }
    return rows;
}

QString writeResult(const Assignment& assignment, const OperationOutcome& outcome)
{
    if (outcome.ok()) {
        return assignment.shown + ": written";
    }
    return QString("%1: not written: %2").arg(assignment.shown, outcome.reason);
}

} // namespace tavmir::host
