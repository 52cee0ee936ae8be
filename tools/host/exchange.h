// Reads and writes as a user asks for them: the texts of "ADDRESS" and "ADDRESS=VALUE".
#ifndef TAVMIR_HOST_EXCHANGE_H
#define TAVMIR_HOST_EXCHANGE_H

#include "session/host_session.h"
#include "value_table.h"

namespace tavmir::host
{

struct Assignment {
    project::Element element;
    QByteArray bytes;
    QString shown;   // "Main.Setpoint = 5"
    QString problem; // not empty: refused
};

// `text` is split at its first "=". Values are taken in `format`; when that is automatic,
// a number with a fraction is taken where the project shows one.
Assignment parseAssignment(const project::Project& project, const QString& text,
                           project::Format format);

struct ReadRequest {
    std::vector<PolledElement> elements; // an array or structure has more than one
    QString problem;
};

// What to read for an address, and how to show it.
ReadRequest parseRead(const project::Project& project, const QString& address,
                      project::Format format);

// What the driver's cache holds of an element, of unknown age.
ValueRow cachedRow(HostSession& session, const PolledElement& entry);

// Reads all from the controller, at most `timeoutMs` for each. Rows of those that were read;
// one message for each that was not.
std::vector<ValueRow> readAll(HostSession& session, const std::vector<PolledElement>& elements,
                              int timeoutMs, QStringList& failures);

// "Main.Setpoint = 5: written", or why not.
QString writeResult(const Assignment& assignment, const OperationOutcome& outcome);

} // namespace tavmir::host

#endif
