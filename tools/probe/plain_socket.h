// A TCP connection with a time-out on everything. One thread; no exception.
#ifndef TAVMIR_PROBE_PLAIN_SOCKET_H
#define TAVMIR_PROBE_PLAIN_SOCKET_H

#include "wire/connect_attempt.h"
#include "wire/endpoint.h"

#include <QtCore/QByteArray>

#include <string>
#include <vector>

namespace tavmir
{
namespace probe
{

class PlainSocket
{
public:
    PlainSocket();
    ~PlainSocket();

    PlainSocket(const PlainSocket&) = delete;
    PlainSocket& operator=(const PlainSocket&) = delete;

    // Each result: empty, or in words what went wrong. `timeoutMs` bounds each call as a whole.

    // Tries every address that the name has. Once.
    //   attempts  receives each of them
    std::string connectTo(const wire::Endpoint& controller, int timeoutMs,
                          std::vector<wire::ConnectAttempt>& attempts);

    std::string send(const QByteArray& bytes, int timeoutMs);

    // Receives exactly `count` bytes, appended to `bytes`.
    std::string receive(QByteArray& bytes, int count, int timeoutMs);

private:
    int descriptor; // -1: not connected
};

} // namespace probe
} // namespace tavmir

#endif
