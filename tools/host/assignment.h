// The text of "ADDRESS=VALUE" as a write, and how it went in words.
#ifndef TAVMIR_HOST_ASSIGNMENT_H
#define TAVMIR_HOST_ASSIGNMENT_H

#include "session/host_session.h"

namespace tavmir::host
{

struct Assignment {
    project::Element element;
    QByteArray bytes;
    QString address; // as it was given
    QString value;   // the same
    QString shown;   // "Main.Setpoint = 5"
    QString problem; // not empty: refused
};

// `text` is split at its first "=". The value is taken in `format`; when that is automatic, in the
// one in which the element is shown (PolledIndex).
Assignment parseAssignment(const project::Project& project, const PolledIndex& polled,
                           const QString& text, project::Format format);

// The same of an address and a value.
Assignment parseAssignment(const project::Project& project, const PolledIndex& polled,
                           const QString& address, const QString& value, project::Format format);

// "Main.Setpoint = 5: written", or what became of it and why.
QString writeResult(const Assignment& assignment, const Outcome& outcome);

} // namespace tavmir::host

#endif
