#include "plain_socket.h"

#include "wire/tcp_connect.h"

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
        if (left <= 0) {
            return "timed out";
        }
        struct pollfd wait = {descriptor, events, 0};
        const int ready = poll(&wait, 1, static_cast<int>(left));
        if (ready > 0) {
            return std::string();
        }
        if (ready < 0 && errno != EINTR) {
            return systemError("poll");
        }
    }
}

} // namespace

PlainSocket::PlainSocket() : descriptor(-1) {}

PlainSocket::~PlainSocket()
{
    if (descriptor >= 0) {
        close(descriptor);
    }
}

std::string PlainSocket::connectTo(const wire::Endpoint& controller, int timeoutMs,
                                   std::vector<wire::ConnectAttempt>& attempts)
{
    const wire::ConnectOutcome outcome =
        wire::connectTo(controller.host, controller.port, timeoutMs, -1);
    descriptor = outcome.descriptor;
    attempts = outcome.attempts;
    return descriptor >= 0 ? std::string() : "connect: " + outcome.problem;
}

std::string PlainSocket::send(const QByteArray& bytes, int timeoutMs)
{
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    int sent = 0;
    while (sent < bytes.size()) {
        const std::string error = waitFor(descriptor, POLLOUT, deadline);
        if (!error.empty()) {
            return "send: " + error;
        }
        const ssize_t now =
            ::send(descriptor, bytes.constData() + sent,
                   static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (now > 0) {
            sent += static_cast<int>(now);
        } else if (errno != EINTR && errno != EAGAIN) {
            return systemError("send");
        }
    }
    return std::string();
}

std::string PlainSocket::receive(QByteArray& bytes, int count, int timeoutMs)
{
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    const int end = bytes.size() + count;
    while (bytes.size() < end) {
        const std::string error = waitFor(descriptor, POLLIN, deadline);
        if (!error.empty()) {
            return "receive: " + error;
        }
        char part[512];
        const std::size_t room = qMin(sizeof part, static_cast<std::size_t>(end - bytes.size()));
        const ssize_t now = recv(descriptor, part, room, MSG_DONTWAIT);
        if (now == 0) {
            return "receive: the controller closed the connection";
        }
        if (now > 0) {
            bytes.append(part, static_cast<int>(now));
        } else if (errno != EINTR && errno != EAGAIN) {
            return systemError("receive");
        }
    }
    return std::string();
}

} // namespace probe
} // namespace tavmir
