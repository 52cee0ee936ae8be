#include "plain_socket.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace tavmir
{
namespace probe
{

namespace
{

typedef std::chrono::steady_clock Clock;

std::string systemError(const char* what)
{
    return std::string(what) + ": " + std::strerror(errno);
}

// Waits until the socket is ready for `events`.
//   result  empty, or why it is not
std::string waitFor(int descriptor, short events, Clock::time_point deadline)
{
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return "timed out";
        struct pollfd wait = {descriptor, events, 0};
        const int ready = poll(&wait, 1, static_cast<int>(left));
        if (ready > 0)
            return std::string();
        if (ready < 0 && errno != EINTR)
            return systemError("poll");
    }
}

// One address of the host.
//   result  empty when `descriptor` is connected
std::string connectAddress(int descriptor, const struct addrinfo& address, int timeoutMs)
{
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags < 0 || fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) < 0)
        return systemError("fcntl");
    if (connect(descriptor, address.ai_addr, address.ai_addrlen) == 0)
        return std::string();
    if (errno != EINPROGRESS)
        return systemError("connect");
    const std::string error =
        waitFor(descriptor, POLLOUT, Clock::now() + std::chrono::milliseconds(timeoutMs));
    if (!error.empty())
        return "connect: " + error;
    int outcome = 0;
    socklen_t size = sizeof outcome;
    if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &outcome, &size) < 0)
        return systemError("getsockopt");
    errno = outcome;
    return outcome == 0 ? std::string() : systemError("connect");
}

} // namespace

PlainSocket::PlainSocket() : descriptor(-1) {}

PlainSocket::~PlainSocket()
{
    if (descriptor >= 0)
        close(descriptor);
}

std::string PlainSocket::connectTo(const wire::Endpoint& controller, int timeoutMs)
{
    struct addrinfo wanted;
    std::memset(&wanted, 0, sizeof wanted);
    wanted.ai_socktype = SOCK_STREAM;
    struct addrinfo* found = nullptr;
    const int status = getaddrinfo(controller.host.c_str(), std::to_string(controller.port).c_str(),
                                   &wanted, &found);
    if (status != 0)
        return controller.host + ": " + gai_strerror(status);
    std::string error = controller.host + ": no address";
    for (const struct addrinfo* address = found; address != nullptr; address = address->ai_next) {
        descriptor =
            socket(address->ai_family, address->ai_socktype | SOCK_CLOEXEC, address->ai_protocol);
        if (descriptor < 0) {
            error = systemError("socket");
            continue;
        }
        error = connectAddress(descriptor, *address, timeoutMs);
        if (error.empty())
            break;
        close(descriptor);
        descriptor = -1;
    }
    freeaddrinfo(found);
    return error;
}

std::string PlainSocket::send(const QByteArray& bytes, int timeoutMs)
{
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    int sent = 0;
    while (sent < bytes.size()) {
        const std::string error = waitFor(descriptor, POLLOUT, deadline);
        if (!error.empty())
            return "send: " + error;
        const ssize_t now = ::send(descriptor, bytes.constData() + sent,
                                   static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (now > 0)
            sent += static_cast<int>(now);
        else if (errno != EINTR && errno != EAGAIN)
            return systemError("send");
    }
    return std::string();
}

std::string PlainSocket::receive(QByteArray& bytes, int count, int timeoutMs)
{
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    const int end = bytes.size() + count;
    while (bytes.size() < end) {
        const std::string error = waitFor(descriptor, POLLIN, deadline);
        if (!error.empty())
            return "receive: " + error;
        char part[512];
        const std::size_t room = qMin(sizeof part, static_cast<std::size_t>(end - bytes.size()));
        const ssize_t now = recv(descriptor, part, room, 0);
        if (now == 0)
            return "receive: the controller closed the connection";
        if (now > 0)
            bytes.append(part, static_cast<int>(now));
        else if (errno != EINTR && errno != EAGAIN)
            return systemError("receive");
    }
    return std::string();
}

} // namespace probe
} // namespace tavmir
