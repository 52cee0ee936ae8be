// Non-blocking connect, poll.
#include "tcp_connect.h"

#include "endpoint.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace tavmir
{
namespace wire
{

namespace
{

// 0, or the errno that ended the attempt; ECANCELED when woken.
int finishConnect(int descriptor, const Deadline& deadline, int wakeDescriptor)
{
    pollfd waits[2] = {{descriptor, POLLOUT, 0}, {wakeDescriptor, POLLIN, 0}};
    for (;;) {
        const int ready = ::poll(waits, 2, deadline.remainingMs());
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready < 0) {
            return errno;
        }
        if (waits[1].revents != 0) {
            return ECANCELED;
        }
        if (ready == 0) {
            return ETIMEDOUT;
        }
        int error = 0;
        socklen_t size = sizeof error;
        ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size);
        return error;
    }
}

// Makes the connected socket what callers work with; false when the system refuses.
bool prepare(int descriptor)
{
    // Requests are small and each waits for its reply: nothing may be held back.
    const int on = 1;
    return ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) == 0 &&
           ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK) == 0;
}

void setPort(HostAddress& address, int port)
{
    const in_port_t number = htons(static_cast<std::uint16_t>(port));
    const bool sixth = address.bytes.ss_family == AF_INET6;
    const std::size_t offset =
        sixth ? offsetof(sockaddr_in6, sin6_port) : offsetof(sockaddr_in, sin_port);
    std::memcpy(reinterpret_cast<char*>(&address.bytes) + offset, &number, sizeof number);
}

const sockaddr* plain(const HostAddress& address)
{
    return reinterpret_cast<const sockaddr*>(&address.bytes);
}

Endpoint endpointOf(const HostAddress& address)
{
    char host[NI_MAXHOST] = "";
    char port[NI_MAXSERV] = "0";
    ::getnameinfo(plain(address), address.size, host, sizeof host, port, sizeof port,
                  NI_NUMERICHOST | NI_NUMERICSERV);
    Endpoint endpoint;
    endpoint.host = host;
    endpoint.port = std::atoi(port);
    return endpoint;
}

// Known from the first packet on, and no more when the attempt has failed.
Endpoint localEndOf(int descriptor)
{
    HostAddress local;
    local.size = sizeof local.bytes;
    if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&local.bytes), &local.size) != 0) {
        return Endpoint();
    }
    const Endpoint end = endpointOf(local);
    return end.port > 0 ? end : Endpoint();
}

// The errno of the attempt; on success the socket is in `descriptor`.
int tryAddress(const HostAddress& address, const Deadline& deadline, int wakeDescriptor,
               int& descriptor, Endpoint& local)
{
    const int opened =
        ::socket(address.bytes.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
    if (opened < 0) {
        return errno;
    }
    int error = ::connect(opened, plain(address), address.size) == 0 ? 0 : errno;
    local = localEndOf(opened);
    if (error == EINPROGRESS || error == EINTR) {
        error = finishConnect(opened, deadline, wakeDescriptor);
    }
    if (error == 0 && !prepare(opened)) {
        error = errno;
    }
    if (error != 0) {
        ::close(opened);
        return error;
    }
    descriptor = opened;
    return 0;
}

ConnectOutcome tryAll(const std::vector<HostAddress>& addresses, int port, const Deadline& deadline,
                      int wakeDescriptor)
{
    ConnectOutcome outcome;
    int left = static_cast<int>(addresses.size());
    for (HostAddress address : addresses) {
        setPort(address, port);
        // One that does not answer must leave time for those behind it.
        const Deadline share(deadline.remainingMs() / left--);
        ConnectAttempt attempt;
        attempt.peer = endpointOf(address);
        attempt.began = Clock::now();
        const int error =
            tryAddress(address, share, wakeDescriptor, outcome.descriptor, attempt.local);
        attempt.ended = Clock::now();
        attempt.error = error;
        outcome.attempts.push_back(attempt);
        if (error == 0) {
            outcome.problem.clear();
            return outcome;
        }
        outcome.problem += (outcome.problem.empty() ? "" : "; ") +
                           endpointText(attempt.peer.host, port) + ": " + std::strerror(error);
        outcome.woken = error == ECANCELED;
        if (outcome.woken) {
            return outcome;
        }
    }
    return outcome;
}

} // namespace

ConnectOutcome connectTo(const std::string& host, int port, int timeoutMs, int wakeDescriptor,
                         NameLookUps& lookUps)
{
    const Deadline deadline(timeoutMs);
    HostAddresses addresses = numericAddresses(host);
    ConnectOutcome outcome;
    if (addresses.found.empty()) {
        switch (lookUps.find(host, deadline, wakeDescriptor, addresses)) {
        case NameLookUps::End::answered:
            outcome.problem =
                host + ": " + (addresses.problem.empty() ? "no address" : addresses.problem);
            break;
        case NameLookUps::End::late:
            outcome.problem =
                host + ": the name was not looked up within " + std::to_string(timeoutMs) + " ms";
            break;
        case NameLookUps::End::woken:
            outcome.problem = host + ": " + std::strerror(ECANCELED);
            outcome.woken = true;
            break;
        }
    }
    return addresses.found.empty() ? outcome
                                   : tryAll(addresses.found, port, deadline, wakeDescriptor);
}

} // namespace wire
} // namespace tavmir
