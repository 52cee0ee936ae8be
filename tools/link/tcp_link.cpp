// POSIX sockets: for a request that is answered within a slice one send and one receive.
#include "tcp_link.h"

#include "feed/feed.h"
#include "feed/own_copy.h"
#include "reply_matcher.h"
#include "wire/frame_layout.h"
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

FeedEntry attemptsNow(FeedKind kind, const QString& text, const wire::ConnectOutcome& outcome)
{
    FeedEntry entry = entryNow(kind, text);
    entry.attempts = std::make_shared<const std::vector<wire::ConnectAttempt>>(outcome.attempts);
    return entry;
}

} // namespace

TcpLink::TcpLink(const LinkOptions& options, Observer observer)
    : options_(options), observer_(std::move(observer)),
      pause_(options.reconnectMinMs, options.reconnectMaxMs, options.jitterSeed),
      nextAttempt_(Clock::now()), problem_("not tried yet")
{
}

TcpLink::~TcpLink()
{
    closeSocket();
}

void TcpLink::close()
{
    if (socket_ >= 0) {
        tellDropped();
        tellRemainder();
        closeSocket();
        observer_(entryNow(FeedKind::closed));
    }
}

void TcpLink::closeSocket()
{
    if (socket_ >= 0) {
        ::close(socket_);
        socket_ = -1;
    }
    decoder_.clear();
    isHeld_ = false;
}

ExchangeEnd TcpLink::exchange(const char* request, size_t size, QByteArray& reply,
                              Exchange& exchange)
{
    tellDropped();
    exchange.sentBytes = 0;
    exchange.foreignFrames = 0;
    exchange.replySize = 0;
    exchange.exceptionCode = 0;
    exchange.replyTimeoutMs = static_cast<quint32>(options_.replyTimeoutMs);
    exchange.requestSize = static_cast<quint32>(size);
    exchange.sentAt = Clock::now();
    exchange.end = ExchangeEnd::notSent;
    if (socket_ < 0) {
        const Deadline deadline(exchange.sentAt, options_.replyTimeoutMs);
        if (connectWithin(deadline.end()) == Connecting::stopped) {
            exchange.end = ExchangeEnd::stopped;
        }
        exchange.sentAt = Clock::now();
    }
    if (socket_ >= 0) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(request);
        const FrameView frame = wire::viewFrame(bytes, size);
        asked_.begin(frame, exchange.sentAt);
        const std::optional<ExchangeEnd> unsent = send(request, exchange);
        exchange.end = unsent ? *unsent : awaitReply(frame, reply, exchange);
        asked_.end(exchange.answered());
    }
    exchange.receivedBytes = received_;
    received_ = 0;
    exchange.endedAt = Clock::now();
    exchange.endedWall = WallClock::now();
    if (decoder_.hasPartialFrame() && !isHeld_) {
        holdSince(exchange.endedAt, exchange.endedWall);
    }
    return exchange.end;
}

ExchangeEnd TcpLink::awaitReply(const FrameView& request, QByteArray& reply, Exchange& exchange)
{
    const Deadline deadline(exchange.sentAt, options_.replyTimeoutMs);
    for (;;) {
        FrameView frame;
        switch (decoder_.next(frame)) {
        case FrameDecoder::State::broken:
            loseBroken("the stream from the controller makes no sense");
            return ExchangeEnd::broken;
        case FrameDecoder::State::needMore:
            stampPartialFrame();
            switch (receive(deadline, false)) {
            case Received::bytes:
            case Received::woken:
                continue;
            case Received::nothing:
                return giveUpWaiting();
            case Received::stopped:
                return ExchangeEnd::stopped;
            case Received::lost:
                return ExchangeEnd::lost;
            }
            continue;
        case FrameDecoder::State::frame:
            break;
        }
        const ReplyKind kind = classifyReply(request, frame);
        if (kind != ReplyKind::foreign) {
            return takeFrame(frame, kind == ReplyKind::exception, reply, exchange);
        }
        ++exchange.foreignFrames;
        tellStray(frame);
        if (deadline.passed()) {
            return giveUpWaiting(); // a flood of foreign frames must not hold the request
        }
    }
}

ExchangeEnd TcpLink::takeFrame(const FrameView& frame, bool isException, QByteArray& reply,
                               Exchange& exchange)
{
    if (!proven_) {
        proven_ = true;
        pause_.reset();
    }
    exchange.replySize = static_cast<quint32>(frame.size);
    reply.resize(static_cast<int>(frame.size));
    std::memcpy(reply.data(), frame.bytes, frame.size);
    if (isException) {
        exchange.exceptionCode = frame.bytes[wire::kCountOffset];
        return ExchangeEnd::exception;
    }
    return ExchangeEnd::reply;
}

ExchangeEnd TcpLink::giveUpWaiting()
{
    if (!decoder_.hasPartialFrame()) {
        return ExchangeEnd::timeout;
    }
    loseBroken("a reply was cut off");
    return ExchangeEnd::cut;
}

TcpLink::Connecting TcpLink::connectWithin(Clock::time_point end)
{
    if (sleepUntil(std::min(nextAttempt_, end), false) == Received::stopped) {
        return Connecting::stopped;
    }
    return nextAttempt_ >= end ? Connecting::failed : connectNow();
}

bool TcpLink::reconnect()
{
    if (socket_ < 0 && sleepUntil(nextAttempt_, false) != Received::stopped) {
        connectNow();
    }
    return socket_ >= 0;
}

TcpLink::Connecting TcpLink::connectNow()
{
    const wire::ConnectOutcome outcome = wire::connectTo(
        options_.host.toStdString(), options_.port, options_.connectTimeoutMs, stop_.descriptor());
    if (outcome.woken) {
        return Connecting::stopped;
    }
    if (outcome.descriptor < 0) {
        nextAttempt_ = Clock::now() + std::chrono::milliseconds(pause_.next());
        problem_ = QString::fromLocal8Bit(outcome.problem.c_str());
        observer_(attemptsNow(FeedKind::connectFailed, problem_, outcome));
        return Connecting::failed;
    }
    socket_ = outcome.descriptor;
    sleepInSlices(socket_);
    proven_ = false;
    decoder_.clear();
    asked_.clear();
    observer_(attemptsNow(FeedKind::connected, QString(), outcome));
    return Connecting::connected;
}

std::optional<ExchangeEnd> TcpLink::send(const char* bytes, Exchange& exchange)
{
    const Deadline deadline(exchange.sentAt, options_.replyTimeoutMs);
    const size_t size = exchange.requestSize;
    const auto unsent = [&] {
        return exchange.sentBytes > 0 ? ExchangeEnd::lost : ExchangeEnd::notSent;
    };
    while (exchange.sentBytes < size) {
        const ssize_t sent = ::send(socket_, bytes + exchange.sentBytes, size - exchange.sentBytes,
                                    MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0) {
            exchange.sentBytes = static_cast<quint32>(exchange.sentBytes + sent);
            continue;
        }
        if (sent < 0 && errno == EINTR) {
            continue;
        }
        if (sent < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
            loseAfterError(errno);
            return unsent();
        }
        pollfd waits[2] = {{socket_, POLLOUT, 0}, {stop_.descriptor(), POLLIN, 0}};
        if (deadline.passed() || ::poll(waits, 2, deadline.remainingMs()) == 0 || stopping_) {
            // Part of a request cannot be taken back.
            lose("the controller takes no more data", ClosedBy::host);
            return stopping_ ? ExchangeEnd::stopped : unsent();
        }
    }
    return std::nullopt;
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
        received_ += static_cast<quint32>(got);
        isHeld_ = false;
        return Received::bytes;
    }
    if (got < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)) {
        return Received::bytes; // none yet: the caller looks at its deadline again
    }
    if (got == 0) {
        lose("the controller closed the connection", ClosedBy::controller);
    } else {
        loseAfterError(errno);
    }
    return Received::lost;
}

void TcpLink::idle(int ms)
{
    const Deadline deadline(ms);
    if (socket_ < 0) {
        sleepUntil(deadline.end(), true);
        return;
    }
    dropUntil(deadline);
    tellDropped();
}

void TcpLink::dropUntil(const Deadline& deadline)
{
    do {
        FrameView frame;
        FrameDecoder::State state = decoder_.next(frame);
        for (; state == FrameDecoder::State::frame; state = decoder_.next(frame)) {
            ++dropped_;
            tellStray(frame);
        }
        if (state == FrameDecoder::State::broken) {
            loseBroken("the stream from the controller makes no sense");
            return;
        }
        stampPartialFrame();
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

// What came while nothing was in flight.
void TcpLink::tellDropped()
{
    if (received_ == 0 && dropped_ == 0) {
        return;
    }
    FeedEntry entry = entryNow(FeedKind::framesDropped);
    entry.frames = dropped_;
    entry.bytes = received_;
    dropped_ = 0;
    received_ = 0;
    observer_(entry);
}

void TcpLink::tellStray(const FrameView& frame)
{
    const AskedRequests::Verdict verdict = asked_.judge(frame);
    FeedEntry entry = strayEntry(verdict.stray, frame.bytes, frame.size);
    entry.askedAt = verdict.askedAt;
    observer_(entry);
}

// Part of a frame came just now, unless it was stamped before.
void TcpLink::stampPartialFrame()
{
    if (decoder_.hasPartialFrame() && !isHeld_) {
        holdSince(Clock::now(), WallClock::now());
    }
}

void TcpLink::holdSince(Clock::time_point at, WallClock::time_point wall)
{
    isHeld_ = true;
    heldSince_ = at;
    heldSinceWall_ = wall;
}

// What the decoder holds, before it is forgotten.
void TcpLink::tellRemainder()
{
    if (decoder_.hasPartialFrame()) {
        observer_(strayEntry(Stray::remainder, decoder_.rest(), decoder_.restSize()));
    }
}

FeedEntry TcpLink::strayEntry(Stray stray, const unsigned char* bytes, size_t size) const
{
    FeedEntry entry = entryNow(FeedKind::strayBytes);
    if (isHeld_) {
        entry.at = heldSince_;
        entry.wall = heldSinceWall_;
    }
    entry.stray = stray;
    entry.received.assign(bytes, bytes + size);
    return entry;
}

void TcpLink::lose(const QString& why, ClosedBy closedBy)
{
    stampPartialFrame();
    FeedEntry entry = entryNow(FeedKind::connectionLost, why);
    entry.closedBy = closedBy;
    lose(entry);
}

void TcpLink::loseAfterError(int error)
{
    const bool reset = error == ECONNRESET || error == EPIPE;
    lose(systemError(error), reset ? ClosedBy::reset : ClosedBy::network);
}

void TcpLink::loseBroken(const QString& why)
{
    stampPartialFrame();
    FeedEntry entry = entryNow(FeedKind::connectionLost, why);
    entry.brokenStream = true;
    entry.closedBy = ClosedBy::host;
    lose(entry);
}

void TcpLink::lose(const FeedEntry& entry)
{
    tellRemainder();
    closeSocket();
    nextAttempt_ = Clock::now() + std::chrono::milliseconds(pause_.next());
    problem_ = ownCopy(entry.text);
    observer_(entry);
}

} // namespace tavmir::host
