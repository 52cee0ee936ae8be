// What the controller counted since its start.
#ifndef TAVMIR_CONTROLLER_STATISTICS_H
#define TAVMIR_CONTROLLER_STATISTICS_H

#include "admission.h"
#include "fault_plan.h"
#include "request.h"

#include <QtCore/QString>

#include <array>
#include <cstdint>
#include <map>

namespace tavmir::controller
{

struct Statistics {
    std::uint64_t requests = 0;
    std::map<std::uint8_t, std::uint64_t> requestsByFunction; // the six codes
    std::uint64_t requestsOfUnknownFunction = 0;
    std::uint64_t elementsRead = 0; // by requests that were carried out
    std::uint64_t elementsWritten = 0;
    std::map<std::uint8_t, std::uint64_t> exceptions; // by exception code
    std::array<std::uint64_t, kFaultKinds> faults{};  // by kind; none is not counted
    std::uint64_t aboveRate = 0;                      // requests: refused or delayed for it
    std::uint64_t toUnknownStations = 0;
    std::uint64_t toRefusedAddresses = 0;
    std::uint64_t unanswered = 0; // requests to stations that are not there, in silence
    std::uint64_t clients = 0;
    std::uint64_t clientsAtOnce = 0; // the most
    std::uint64_t clientsRefused = 0;
    std::uint64_t brokenStreams = 0;
    std::uint64_t clientsTooSlow = 0;
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesSent = 0; // handed to the operating system's connection

    // exceptionCode  0: carried out.
    void countRequest(const Request& request, std::uint8_t exceptionCode);
    // It came, and that is all: lost or not answered.
    void countLostRequest(const Request& request);
    void countVerdict(const Verdict& verdict);
    void countFault(FaultKind kind);
    std::uint64_t faultsOf(FaultKind kind) const { return faults[static_cast<std::size_t>(kind)]; }

    // One line per figure, "name: number", kinds that never occurred left out of the lists.
    QString text() const;

private:
    void countArrival(const Request& request);
};

} // namespace tavmir::controller

#endif
