// A whole capture: its packets, the conversations in it, and what is wrong in each.
#ifndef TAVMIR_DIAGNOSE_DIAGNOSIS_H
#define TAVMIR_DIAGNOSE_DIAGNOSIS_H

#include "capture_reader.h"
#include "findings.h"

namespace tavmir::diagnose
{

struct DiagnosisSettings {
    // Only conversations with controllers at this port, whatever is said there; 0: all that speak
    // the protocol.
    int port = 0;
    // Connections to this port count too when nothing was said there, as to a controller that
    // refuses them; 0: none such.
    int expectedPort = 0;
};

struct Diagnosis {
    std::uint64_t packets = 0;
    std::uint64_t tcpPackets = 0;
    std::uint64_t connections = 0; // of whatever protocol
    Nanoseconds begin = 0;
    Nanoseconds end = 0;
    std::vector<std::string> notes;
    std::vector<ConversationReport> conversations;

    // Something is wrong, or nothing of the protocol is there that could be well.
    bool isWrong() const;
};

Diagnosis diagnose(CaptureReader& reader, const DiagnosisSettings& settings,
                   const wire::DescribeElements& describe);

} // namespace tavmir::diagnose

#endif
