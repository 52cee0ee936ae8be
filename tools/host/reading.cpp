// Asking ahead of the answers.
#include "reading.h"

#include "project/raw_address.h"
#include "project/value_format.h"

#include <deque>

namespace tavmir::host
{

using project::Format;

namespace
{

// Elements on the wire that are asked for at a time: what fits the driver's list, so that asking
// never waits for room.
constexpr int kAskedAhead = 1000;

} // namespace

ReadRequest parseRead(const project::Project& project, const PolledIndex& polled,
                      const QString& address, Format format)
{
    ReadRequest request;
    const project::Expansion expansion = project::expandNamed(project, address);
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
        entry.name = project::shownAddress(element);
        const bool isAsked = format != Format::automatic && project::formatFits(element, format);
        entry.format = isAsked ? format : polled.formatOf(element);
        request.elements.push_back(entry);
    }
    return request;
}

ValueRow rowOf(const PolledElement& entry, const Outcome& outcome)
{
    if (outcome.ok()) {
        return rowOf(entry, valueBytes(entry.element, outcome.bytes), 0);
    }
    const bool asked = outcome.state != OutcomeState::notSent;
    return rowWithout(entry, {asked ? Quality::bad : Quality::never, outcome.reason});
}

QString notRead(const ValueRow& row)
{
    return QString("%1: not read: %2").arg(row.name, row.reason);
}

void readAll(HostSession& session, const std::vector<PolledElement>& elements, int timeoutMs,
             const std::function<void(const ValueRow& row)>& read,
             const std::function<void(const ValueRow& row)>& failed)
{
    std::deque<OperationId> asked;
    int onTheWay = 0;
    size_t next = 0;
    QString whyNoMore;
    for (const PolledElement& entry : elements) {
        while (next < elements.size() && (asked.empty() || onTheWay < kAskedAhead) &&
               whyNoMore.isNull()) {
            const project::Element& element = elements[next++].element;
            asked.push_back(session.queueRead(element, Deadline(timeoutMs)));
            onTheWay += project::wireElementCount(element);
        }
        Outcome outcome;
        outcome.reason = whyNoMore;
        if (!asked.empty()) {
            outcome = session.await(asked.front());
            asked.pop_front();
            onTheWay -= project::wireElementCount(entry.element);
        }
        const ValueRow row = rowOf(entry, outcome);
        if (outcome.ok()) {
            read(row);
            continue;
        }
        failed(row);
        if (outcome.state == OutcomeState::notSent && !session.connection().isConnected()) {
            whyNoMore = outcome.reason;
        }
    }
}

} // namespace tavmir::host
