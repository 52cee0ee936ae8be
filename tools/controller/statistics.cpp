#include "statistics.h"

namespace tavmir::controller
{

namespace
{

QString line(const QString& name, std::uint64_t number)
{
    return QString("%1: %2\n").arg(name).arg(number);
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

void Statistics::countVerdict(const Verdict& verdict)
{
    aboveRate += verdict.aboveRate ? 1 : 0;
    toUnknownStations += verdict.unknownStation ? 1 : 0;
    toRefusedAddresses += verdict.refusedAddress ? 1 : 0;
    unanswered += verdict.isAnswered ? 0 : 1;
}

void Statistics::countFault(FaultKind kind)
{
    if (kind != FaultKind::None) {
        ++faults[static_cast<std::size_t>(kind)];
    }
}

QString Statistics::text() const
{
    QString text = line("requests", requests);
    for (const auto& [code, number] : requestsByFunction) {
        text += line(QString("requests to %1").arg(wire::findFunctionCode(code)->words), number);
    }
    if (requestsOfUnknownFunction > 0) {
        text += line("requests of unknown function", requestsOfUnknownFunction);
    }
    text += line("requests above the rate", aboveRate);
    text += line("requests to unknown stations", toUnknownStations);
    text += line("requests to refused addresses", toRefusedAddresses);
    text += line("requests not answered", unanswered);
    text += line("elements read", elementsRead);
    text += line("elements written", elementsWritten);
    for (const auto& [code, number] : exceptions) {
        text += line(QString("exceptions of code %1").arg(code), number);
    }
    std::uint64_t allFaults = 0;
    for (const std::uint64_t number : faults) {
        allFaults += number;
    }
    text += line("faults", allFaults);
    for (const FaultRow& row : kFaultTable) {
        if (faultsOf(row.kind) > 0) {
            text += line(QString("faults %1").arg(row.name), faultsOf(row.kind));
        }
    }
    text += line("clients", clients);
    text += line("clients at once at most", clientsAtOnce);
    text += line("clients refused", clientsRefused);
    text += line("clients too slow", clientsTooSlow);
    text += line("broken streams", brokenStreams);
    text += line("bytes received", bytesReceived);
    text += line("bytes sent", bytesSent);
    return text;
}

} // namespace tavmir::controller
