// getaddrinfo, non-blocking connect, poll.
#include "socket_connect.h"

#include "wire/deadline.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace tavmir::host
{

using wire::Deadline;

namespace
{

struct FreeAddresses {
    void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};

int countOf(const addrinfo* list)
{
    int count = 0;
    for (; list != nullptr; list = list->ai_next) {
        ++count;
    }
    return count;
}

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

// Makes the connected socket what a link works with; false when the system refuses.
bool prepare(int descriptor)
{
    // Requests are small and each waits for its reply: nothing may be held back.
    const int on = 1;
    const timeval slice = {0, kReceiveSliceMs * 1000};
    return ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) == 0 &&
           ::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &slice, sizeof slice) == 0 &&
           ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK) == 0;
}

// The errno of the attempt; on success the socket is in `descriptor`.
int tryAddress(const addrinfo& address, const Deadline& deadline, int wakeDescriptor,
               int& descriptor)
{
    const int opened = ::socket(
        address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol);
    if (opened < 0) {
        return errno;
    }
    int error = ::connect(opened, address.ai_addr, address.ai_addrlen) == 0 ? 0 : errno;
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

} // namespace

ConnectOutcome connectTo(const QString& host, int port, int timeoutMs, int wakeDescriptor)
{
    const Deadline deadline(timeoutMs);
    addrinfo hints = {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    ConnectOutcome outcome;
    const int looked = ::getaddrinfo(host.toUtf8().constData(),
                                     QByteArray::number(port).constData(), &hints, &found);
    if (looked != 0) {
        outcome.problem = QString::fromLocal8Bit(::gai_strerror(looked));
        return outcome;
    }
    const std::unique_ptr<addrinfo, FreeAddresses> addresses(found);
    int left = countOf(found);
    for (const addrinfo* address = found; address != nullptr; address = address->ai_next) {
        // One that does not answer must leave time for those behind it.
        const Deadline share(deadline.remainingMs() / left--);
        const int error = tryAddress(*address, share, wakeDescriptor, outcome.descriptor);
        if (error == 0) {
            outcome.problem.clear();
            return outcome;
        }
        outcome.problem = QString::fromLocal8Bit(std::strerror(error));
        outcome.woken = error == ECANCELED;
        if (outcome.woken) {
            return outcome;
        }
    }
    return outcome;
}

} // namespace tavmir::host
