#include "statistics.h"

namespace tavmir::controller
{

namespace
{

QString line(const QString& name, std::uint64_t number)
{
    return QStringLiteral("%1: %2\n").arg(name).arg(number);
}

} // namespace

void Statistics::countRequest(const Request& request, std::uint8_t exceptionCode)
{
    countArrival(request);
    if (exceptionCode != 0) {
        ++exceptions[exceptionCode];
        return;
    }
    (request.functionCode->write ? elementsWritten : elementsRead) += request.elements.size();
}

void Statistics::countLostRequest(const Request& request)
{
    countArrival(request);
}

void Statistics::countArrival(const Request& request)
{
    ++requests;
    if (request.functionCode) {
        ++requestsByFunction[request.function];
    } else {
        ++requestsOfUnknownFunction;
    }
}

void Statistics::countFault(FaultKind kind)
{
    if (kind != FaultKind::None)
        ++faults[static_cast<std::size_t>(kind)];
}

QString Statistics::text() const
{
    QString text = line(QStringLiteral("requests"), requests);
    for (const auto& [code, number] : requestsByFunction)
        text +=
            line(QStringLiteral("requests to %1").arg(wire::findFunctionCode(code)->words), number);
    if (requestsOfUnknownFunction > 0)
        text += line(QStringLiteral("requests of unknown function"), requestsOfUnknownFunction);
    text += line(QStringLiteral("elements read"), elementsRead);
    text += line(QStringLiteral("elements written"), elementsWritten);
    for (const auto& [code, number] : exceptions)
        text += line(QStringLiteral("exceptions of code %1").arg(code), number);
    std::uint64_t allFaults = 0;
    for (const std::uint64_t number : faults)
        allFaults += number;
    text += line(QStringLiteral("faults"), allFaults);
    for (const FaultRow& row : kFaultTable) {
        if (faultsOf(row.kind) > 0) {
            text += line(QString("faults %1").arg(row.name), faultsOf(row.kind));
        }
    }
    text += line(QStringLiteral("clients"), clients);
    text += line(QStringLiteral("clients at once at most"), clientsAtOnce);
    text += line(QStringLiteral("clients refused"), clientsRefused);
    text += line(QStringLiteral("clients too slow"), clientsTooSlow);
    text += line(QStringLiteral("broken streams"), brokenStreams);
    text += line(QStringLiteral("bytes received"), bytesReceived);
    text += line(QStringLiteral("bytes sent"), bytesSent);
    return text;
}

} // namespace tavmir::controller
