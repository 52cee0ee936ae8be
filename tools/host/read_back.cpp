// One read.
#include "read_back.h"

#include "reading.h"

namespace tavmir::host
{

ReadBack readBack(PreparedHost& host, const Assignment& assignment, project::Format format)
{
    const ReadRequest request =
        parseRead(host.project(), host.polled(), assignment.address, format);
    const Outcome outcome = host.session().read(assignment.element, Deadline(host.operationMs()));
    const QByteArray bytes = valueBytes(assignment.element, outcome.bytes);
    const bool isThere = outcome.ok();
    return {rowOf(request.elements.front(), outcome), isThere ? bytes : QByteArray(),
            isThere && bytes == assignment.bytes};
}

} // namespace tavmir::host
