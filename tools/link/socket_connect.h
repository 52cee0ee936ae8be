// Opens a TCP connection within a time limit.
#ifndef TAVMIR_LINK_SOCKET_CONNECT_H
#define TAVMIR_LINK_SOCKET_CONNECT_H

#include <QtCore/QString>

namespace tavmir::host
{

// How long one receive call of a connected socket sleeps.
constexpr int kReceiveSliceMs = 50;

struct ConnectOutcome {
    int descriptor = -1; // blocking, with TCP_NODELAY; the caller closes it. -1: failed
    QString problem;     // failed: why
    bool woken = false;  // failed because `wakeDescriptor` became readable
};

// host            a name or an address; each of its addresses is tried. Looking a name up is
//                 not bounded by the time limit.
// timeoutMs       for all attempts together, each gets its share of what is left
// wakeDescriptor  ends the wait when readable; -1: none
ConnectOutcome connectTo(const QString& host, int port, int timeoutMs, int wakeDescriptor);

} // namespace tavmir::host

#endif
