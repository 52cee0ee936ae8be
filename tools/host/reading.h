// One-shot reads as a user asks for them: addresses of single values, arrays and structures.
#ifndef TAVMIR_HOST_READING_H
#define TAVMIR_HOST_READING_H

#include "session/host_session.h"
#include "value_row.h"

#include <QtCore/QStringList>

#include <functional>

namespace tavmir::host
{

struct ReadRequest {
    std::vector<PolledElement> elements; // an array or structure has more than one
    QString problem;
};

// What to read for an address, and how to show it.
ReadRequest parseRead(const project::Project& project, const PolledIndex& polled,
                      const QString& address, project::Format format);

// Reads all from the controller, at most `timeoutMs` for each. When the connection is lost that
// long, what is left is not asked for.
//   read    told each value that its own reply brought, in the order of `elements`
//   failed  told each that was not read, with the reason
void readAll(HostSession& session, const std::vector<PolledElement>& elements, int timeoutMs,
             const std::function<void(const ValueRow& row)>& read,
             const std::function<void(const ValueRow& row)>& failed);

// What one read's outcome makes of its element: a good value, or none with the reason.
ValueRow rowOf(const PolledElement& entry, const Outcome& outcome);

// "Main.Setpoint: not read: the controller did not answer within 500 ms"
QString notRead(const ValueRow& row);

} // namespace tavmir::host

#endif
