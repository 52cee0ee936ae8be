// POSIX sockets: for a request that is answered within a slice one send and one receive.
#include "tcp_link.h"

#include "reply_matcher.h"
#include "wire/tcp_connect.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tavmir::host
{

namespace
{

// How long one receive call sleeps.
constexpr int kReceiveSliceMs = 50;
// A receive call's slice is counted in the system's ticks and may end this much late.
constexpr int kTickMs = 20;

void sleepInSlices(int socket)
{
    const timeval slice = {0, kReceiveSliceMs * 1000};
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &slice, sizeof slice);
}

QString systemError(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

} // namespace

TcpLink::TcpLink(const LinkOptions& options, LinkStatistics& statistics, Observer observer)
    : options_(options), statistics_(statistics), observer_(std::move(observer)),
      pause_(options.reconnectMinMs, options.reconnectMaxMs, options.jitterSeed),
      nextAttempt_(Clock::now())
{
}

TcpLink::~TcpLink()
{
    close();
}

void TcpLink::close()
{
    if (socket_ >= 0) {
        ::close(socket_);
        socket_ = -1;
    }
    decoder_.clear();
}

ExchangeResult TcpLink::exchange(const char* request, size_t size, QByteArray& reply)
{
    const Deadline deadline(options_.replyTimeoutMs);
    if (socket_ < 0) {
        const Connecting connecting = connectWithin(deadline);
        if (connecting != Connecting::connected) {
            return connecting == Connecting::stopped ? ExchangeResult::stopped
                                                     : ExchangeResult::notConnected;
        }
    }
    const Clock::time_point sent = Clock::now();
    if (!send(request, size, Deadline(sent, options_.replyTimeoutMs))) {
        return stopping_ ? ExchangeResult::stopped : ExchangeResult::notConnected;
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(request);
    return awaitReply(wire::viewFrame(bytes, size), sent, reply);
}

ExchangeResult TcpLink::awaitReply(const FrameView& request, Clock::time_point sent,
                                   QByteArray& reply)
{
    const Deadline deadline(sent, options_.replyTimeoutMs);
    for (;;) {
        FrameView frame;
        switch (decoder_.next(frame)) {
        case FrameDecoder::State::broken:
            statistics_.brokenStreams.add();
            lose("the stream from the controller makes no sense");
            return ExchangeResult::notConnected;
        case FrameDecoder::State::needMore:
            switch (receive(deadline, false)) {
            case Received::bytes:
            case Received::woken:
                continue;
            case Received::nothing:
                return giveUpWaiting();
            case Received::stopped:
                return ExchangeResult::stopped;
            case Received::lost:
                return ExchangeResult::notConnected;
            }
            continue;
        case FrameDecoder::State::frame:
            break;
        }
        const ReplyKind kind = classifyReply(request, frame);
        if (kind == ReplyKind::foreign) {
            statistics_.discarded.add();
            if (deadline.passed()) {
                return giveUpWaiting(); // a flood of foreign frames must not hold the request
            }
            continue;
        }
        statistics_.roundTrip.add(static_cast<uint64_t>((Clock::now() - sent).count()));
        if (!proven_) {
            proven_ = true;
            pause_.reset();
        }
        if (kind == ReplyKind::exception) {
            statistics_.exceptions.add();
            return ExchangeResult::exception;
        }
        reply.resize(static_cast<int>(frame.size));
        std::memcpy(reply.data(), frame.bytes, frame.size);
        return ExchangeResult::reply;
    }
}

ExchangeResult TcpLink::giveUpWaiting()
{
    statistics_.timeouts.add();
    if (decoder_.hasPartialFrame()) {
        statistics_.brokenStreams.add();
        lose("a reply was cut off");
    }
    return ExchangeResult::timeout;
}

TcpLink::Connecting TcpLink::connectWithin(const Deadline& deadline)
{
    if (sleepUntil(std::min(nextAttempt_, deadline.end()), false) == Received::stopped) {
        return Connecting::stopped;
    }
    if (nextAttempt_ >= deadline.end()) {
        return Connecting::failed;
    }
    const wire::ConnectOutcome outcome = wire::connectTo(
        options_.host.toStdString(), options_.port, options_.connectTimeoutMs, stop_.descriptor());
    if (outcome.woken) {
        return Connecting::stopped;
    }
    if (outcome.descriptor < 0) {
        statistics_.connectFailures.add();
        nextAttempt_ = Clock::now() + std::chrono::milliseconds(pause_.next());
        if (!failureTold_) {
            failureTold_ = true;
            observer_(false, QString::fromLocal8Bit(outcome.problem.c_str()));
        }
        return Connecting::failed;
    }
    socket_ = outcome.descriptor;
    sleepInSlices(socket_);
    proven_ = false;
    failureTold_ = false;
    decoder_.clear();
    statistics_.connects.add();
    observer_(true, QString());
    return Connecting::connected;
}

bool TcpLink::send(const char* bytes, size_t size, const Deadline& deadline)
{
    size_t done = 0;
    while (done < size) {
        const ssize_t sent =
            ::send(socket_, bytes + done, size - done, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0) {
            done += static_cast<size_t>(sent);
            continue;
        }
        if (sent < 0 && errno == EINTR) {
            continue;
        }
        if (sent < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
            lose(systemError(errno));
            return false;
        }
        pollfd waits[2] = {{socket_, POLLOUT, 0}, {stop_.descriptor(), POLLIN, 0}};
        if (deadline.passed() || ::poll(waits, 2, deadline.remainingMs()) == 0 || stopping_) {
            // Part of a request cannot be taken back.
            lose("the controller takes no more data");
            return false;
        }
    }
    statistics_.bytesSent.add(size);
    return true;
}

TcpLink::Received TcpLink::receive(const Deadline& deadline, bool wakeable)
{
    if (wakeable || deadline.remainingMs() <= kReceiveSliceMs + kTickMs) {
        const Received waited = awaitBytes(deadline, wakeable);
        return waited == Received::bytes ? takeBytes(MSG_DONTWAIT) : waited;
    }
    // Sleeping in the receive call saves the wait's own call and its fine timer, which cost as
    // much as the transfer. A stop is seen when the slice is over.
    return stopping_ ? Received::stopped : takeBytes(0);
}

TcpLink::Received TcpLink::awaitBytes(const Deadline& deadline, bool wakeable)
{
    pollfd waits[3] = {
        {socket_, POLLIN, 0}, {stop_.descriptor(), POLLIN, 0}, {work_.descriptor(), POLLIN, 0}};
    const int ready = ::poll(waits, wakeable ? 3 : 2, deadline.remainingMs());
    if (ready == 0) {
        return Received::nothing;
    }
    if (ready < 0) {
        return errno == EINTR ? Received::bytes : Received::nothing;
    }
    if (waits[1].revents != 0) {
        return Received::stopped;
    }
    if (waits[2].revents != 0) {
        work_.take();
        return Received::woken;
    }
    return Received::bytes;
}

TcpLink::Received TcpLink::takeBytes(int flags)
{
    size_t room = 0;
    unsigned char* space = decoder_.space(room);
    const ssize_t got = ::recv(socket_, space, room, flags);
    if (got > 0) {
        decoder_.added(static_cast<size_t>(got));
        statistics_.bytesReceived.add(static_cast<uint64_t>(got));
        return Received::bytes;
    }
    if (got < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)) {
        return Received::bytes; // none yet: the caller looks at its deadline again
    }
    lose(got == 0 ? QString("the controller closed the connection") : systemError(errno));
    return Received::lost;
}

void TcpLink::idle(int ms)
{
    const Deadline deadline(ms);
    if (socket_ < 0) {
        sleepUntil(deadline.end(), true);
        return;
    }
    do {
        FrameView frame;
        FrameDecoder::State state = decoder_.next(frame);
        for (; state == FrameDecoder::State::frame; state = decoder_.next(frame)) {
            statistics_.discarded.add();
        }
        if (state == FrameDecoder::State::broken) {
            statistics_.brokenStreams.add();
            lose("the stream from the controller makes no sense");
            return;
        }
    } while (receive(deadline, true) == Received::bytes && !deadline.passed());
}

TcpLink::Received TcpLink::sleepUntil(Clock::time_point end, bool wakeable)
{
    pollfd waits[2] = {{stop_.descriptor(), POLLIN, 0}, {work_.descriptor(), POLLIN, 0}};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        const int wait = static_cast<int>(std::max<decltype(left + 0)>(0, left));
        ::poll(waits, wakeable ? 2 : 1, wait);
        if (waits[0].revents != 0) {
            return Received::stopped;
        }
        if (waits[1].revents != 0) {
            work_.take();
            return Received::woken;
        }
        if (left <= 0) {
            return Received::nothing;
        }
    }
}

void TcpLink::lose(const QString& why)
{
    close();
    statistics_.lostConnections.add();
    nextAttempt_ = Clock::now() + std::chrono::milliseconds(pause_.next());
    failureTold_ = true;
    observer_(false, why);
}

} // namespace tavmir::host
