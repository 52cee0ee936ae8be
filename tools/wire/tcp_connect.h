// Opens a TCP connection within a time limit that holds for the look-up of the name too.
#ifndef TAVMIR_WIRE_TCP_CONNECT_H
#define TAVMIR_WIRE_TCP_CONNECT_H

#include "connect_attempt.h"
#include "name_lookup.h"

#include <string>
#include <vector>

namespace tavmir
{
namespace wire
{

struct ConnectOutcome {
    int descriptor = -1; // blocking, with TCP_NODELAY; the caller closes it. -1: failed
    bool woken = false;  // failed because `wakeDescriptor` became readable
    // Failed: why. Each address that was tried with its reason, "192.0.2.1:502: Connection
    // refused; [2001:db8::1]:502: Connection timed out", or the name and why it has no address.
    std::string problem;
    // Each address that was tried, in that order; connected: the last one is the connection.
    std::vector<ConnectAttempt> attempts;
};

// host            a name or an address; each of its addresses is tried
// timeoutMs       for everything together; each address gets its share of what is left
// wakeDescriptor  ends the wait when readable; -1: none
// lookUps         for names
ConnectOutcome connectTo(const std::string& host, int port, int timeoutMs, int wakeDescriptor,
                         NameLookUps& lookUps = NameLookUps::ofThisProcess());

} // namespace wire
} // namespace tavmir

#endif
