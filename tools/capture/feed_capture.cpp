// Entries into packets.
#include "feed_capture.h"

#include "feed/line_health.h"
#include "wire/frame_layout.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tavmir::capture
{

namespace
{

using namespace tavmir::host;

// What is held at most: a flood within one exchange is written out of its order.
constexpr size_t kMostHeld = 4096;
// Where the controller is when no entry says it.
constexpr int kUsualPort = 502;

std::int64_t nsOf(WallClock::time_point time)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
}

std::int64_t nsAt(const FeedEntry& entry, Clock::time_point moment)
{
    return nsOf(wallAt(entry, moment));
}

bool isSame(const wire::Endpoint& left, const wire::Endpoint& right)
{
    return left.host == right.host && left.port == right.port;
}

std::string requestOf(const FeedEntry& stray)
{
    const QString sent = durationText(stray.at - stray.askedAt);
    return QString("request #%1, sent %2 before")
        .arg(wire::bigEndian16(stray.received.data() + wire::kTransactionOffset))
        .arg(sent)
        .toStdString();
}

std::string strayInWords(const FeedEntry& stray)
{
    switch (stray.stray) {
    case Stray::late:
        return "late: answers " + requestOf(stray);
    case Stray::duplicate:
        return "duplicate: " + requestOf(stray) + ", was answered already";
    case Stray::foreign:
        return "foreign: answers no request of this connection";
    case Stray::remainder:
        break;
    }
    return "no whole frame: what had come when the connection ended";
}

// What was wrong and no packet of its own shows it.
std::string requestComment(const Exchange& exchange, const QString& linkProblem)
{
    QStringList words;
    if (exchange.attempt > 1) {
        words << QString("attempt %1").arg(exchange.attempt);
    }
    if (exchange.sentBytes < exchange.requestSize) {
        words << QString("%1 of %2 bytes were sent")
                     .arg(exchange.sentBytes)
                     .arg(exchange.requestSize);
    }
    if (!exchange.answered()) {
        words << endInWords(exchange, linkProblem);
    }
    return words.join("; ").toStdString();
}

} // namespace

void FeedCapture::take(const FeedEntry& entry)
{
    if (entry.standing) {
        takeStanding(entry);
        return;
    }
    switch (entry.kind) {
    case FeedKind::exchange:
        takeExchange(entry);
        break;
    case FeedKind::connected:
    case FeedKind::connectFailed:
        release();
        takeAttempts(entry);
        break;
    case FeedKind::connectionLost:
    case FeedKind::closed:
    case FeedKind::strayBytes:
        hold(entry);
        break;
    case FeedKind::framesDropped:
        release();
        break;
    default:
        break;
    }
}

void FeedCapture::gap(quint64 missed)
{
    release();
    missed_ += missed;
}

void FeedCapture::quiet()
{
    const bool ends = std::any_of(held_.begin(), held_.end(), [](const Held& held) {
        return held.kind != FeedKind::strayBytes;
    });
    if (ends) {
        release();
    }
}

void FeedCapture::end()
{
    release();
}

// How the connection stands, for a reader that came late or missed something.
void FeedCapture::takeStanding(const FeedEntry& entry)
{
    const bool isLink = entry.kind == FeedKind::connected ||
                        entry.kind == FeedKind::connectFailed ||
                        entry.kind == FeedKind::connectionLost;
    if (!isLink) {
        return;
    }
    release();
    if (entry.kind != FeedKind::connected || !entry.attempts || entry.attempts->empty()) {
        conversation_.reset();
        return;
    }
    const wire::ConnectAttempt& attempt = entry.attempts->back();
    if (!conversation_ || !isSame(conversation_->own(), attempt.local) ||
        !isSame(conversation_->other(), attempt.peer)) {
        conversation_.emplace(attempt.local, attempt.peer, nsAt(entry, attempt.began), sink_);
    }
}

void FeedCapture::takeAttempts(const FeedEntry& entry)
{
    conversation_.reset();
    if (!entry.attempts) {
        return;
    }
    for (const wire::ConnectAttempt& attempt : *entry.attempts) {
        const std::int64_t beganNs = nsAt(entry, attempt.began);
        const std::int64_t endedNs = nsAt(entry, attempt.ended);
        conversation_.emplace(attempt.local, attempt.peer, beganNs, sink_);
        if (attempt.error == 0) {
            conversation_->opened(Side::own, beganNs, endedNs, noted(std::string()));
            return;
        }
        conversation_->failed(attempt.error == ECONNREFUSED, beganNs, endedNs,
                              noted(std::string("no connection: ") + std::strerror(attempt.error)));
    }
    conversation_.reset();
}

void FeedCapture::takeExchange(const FeedEntry& entry)
{
    releaseUntil(entry.exchange.sentAt);
    if (entry.exchange.sentBytes > 0) {
        writeRequest(entry);
    }
    release();
    if (entry.exchange.answered() && entry.exchange.replySize > 0) {
        writeReply(entry);
    }
}

void FeedCapture::writeRequest(const FeedEntry& entry)
{
    const Exchange& exchange = entry.exchange;
    for (const Held& held : held_) {
        if (held.kind == FeedKind::connectionLost) {
            linkProblem_ = QString::fromStdString(held.comment);
        }
    }
    const std::int64_t wallNs = nsAt(entry, exchange.sentAt);
    const size_t size = std::min<size_t>(exchange.sentBytes, exchange.requestKept());
    conversation(wallNs).data(Side::own, exchange.request, size, wallNs,
                              noted(requestComment(exchange, linkProblem_)));
}

void FeedCapture::writeReply(const FeedEntry& entry)
{
    const Exchange& exchange = entry.exchange;
    const std::int64_t wallNs = nsOf(exchange.endedWall);
    const bool isWhole = entry.received.empty();
    const std::string comment =
        exchange.isGood() ? std::string() : endInWords(exchange, QString()).toStdString();
    conversation(wallNs).data(Side::other, isWhole ? exchange.reply : entry.received.data(),
                              isWhole ? exchange.replyKept() : entry.received.size(), wallNs,
                              noted(comment));
}

void FeedCapture::hold(const FeedEntry& entry)
{
    if (held_.size() == kMostHeld) {
        release();
    }
    Held held;
    held.kind = entry.kind;
    held.closedBy = entry.closedBy;
    held.at = entry.at;
    held.wallNs = nsOf(entry.wall);
    held.bytes = entry.received;
    held.comment =
        entry.kind == FeedKind::strayBytes ? strayInWords(entry) : entry.text.toStdString();
    held_.push_back(std::move(held));
}

void FeedCapture::release()
{
    releaseUntil(Clock::time_point::max());
}

void FeedCapture::releaseUntil(Clock::time_point moment)
{
    const auto later = std::find_if(held_.begin(), held_.end(),
                                    [&](const Held& held) { return held.at >= moment; });
    std::for_each(held_.begin(), later, [this](const Held& held) { write(held); });
    held_.erase(held_.begin(), later);
}

void FeedCapture::write(const Held& held)
{
    if (held.kind == FeedKind::strayBytes) {
        conversation(held.wallNs)
            .data(Side::other, held.bytes.data(), held.bytes.size(), held.wallNs,
                  noted(held.comment));
        return;
    }
    if (!conversation_) {
        return; // begun and ended in what was missed
    }
    if (held.kind == FeedKind::closed) {
        conversation_->closed(Side::own, held.wallNs, noted(std::string()));
    } else if (held.closedBy == ClosedBy::reset) {
        conversation_->reset(Side::other, held.wallNs, noted(held.comment));
    } else {
        // Of a network that fails no packet comes: the own end closes.
        const bool others = held.closedBy == ClosedBy::controller;
        conversation_->closed(others ? Side::other : Side::own, held.wallNs, noted(held.comment));
    }
    conversation_.reset();
}

// Where no entry said between which ends, the bytes are shown all the same.
TcpConversation& FeedCapture::conversation(std::int64_t wallNs)
{
    if (!conversation_) {
        wire::Endpoint controller;
        controller.port = kUsualPort;
        conversation_.emplace(wire::Endpoint(), controller, wallNs, sink_);
    }
    return *conversation_;
}

std::string FeedCapture::noted(const std::string& comment)
{
    if (missed_ == 0) {
        return comment;
    }
    const std::string gap =
        std::to_string(missed_) + " events before this packet were missed by the capture";
    missed_ = 0;
    return comment.empty() ? gap : gap + "; " + comment;
}

} // namespace tavmir::capture
