// Entries told as lines.
#include "feed_lines.h"

#include "project/counted.h"
#include "wire/endpoint.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

using wire::TraceWay;

const unsigned char* replyOf(const FeedEntry& entry)
{
    return entry.received.empty() ? entry.exchange.reply : entry.received.data();
}

size_t replySizeOf(const FeedEntry& entry)
{
    return entry.received.empty() ? entry.exchange.replyKept() : entry.received.size();
}

std::string bytesInCount(size_t count)
{
    return project::counted(count, "byte", "bytes").toStdString();
}

const char* remarkOn(Stray stray)
{
    switch (stray) {
    case Stray::late:
        return "late";
    case Stray::duplicate:
        return "duplicate";
    case Stray::foreign:
    case Stray::remainder:
        break;
    }
    return "foreign";
}

LineKind strayKind(Stray stray)
{
    switch (stray) {
    case Stray::late:
        return LineKind::late;
    case Stray::duplicate:
        return LineKind::duplicate;
    case Stray::foreign:
        return LineKind::foreign;
    case Stray::remainder:
        break;
    }
    return LineKind::cut;
}

LineKind answerKind(const Exchange& exchange)
{
    if (!exchange.answered()) {
        return LineKind::nothing;
    }
    if (exchange.end == ExchangeEnd::exception) {
        return LineKind::exception;
    }
    return exchange.isGood() ? LineKind::reply : LineKind::wrongReply;
}

// False: the bytes begin no frame.
bool beginsFrame(const std::vector<unsigned char>& bytes)
{
    wire::FrameDecoder decoder;
    decoder.append(bytes.data(), bytes.size());
    wire::FrameView frame;
    return decoder.next(frame) != wire::FrameDecoder::State::broken;
}

std::string endsInWords(const FeedEntry& entry)
{
    if (!entry.attempts || entry.attempts->empty()) {
        return std::string();
    }
    const wire::ConnectAttempt& last = entry.attempts->back();
    return " to " + wire::endpointText(last.peer.host, last.peer.port) + " from " +
           wire::endpointText(last.local.host, last.local.port);
}

} // namespace

FeedLines::FeedLines(const project::ElementNames& names, Show show)
    : names_(names), show_(std::move(show)),
      describe_([this](const wire::ElementInFrame* first, std::size_t count) {
          return names_.describe(first, count);
      })
{
}

void FeedLines::take(const FeedEntry& entry)
{
    switch (entry.kind) {
    case FeedKind::exchange:
        takeExchange(entry);
        return;
    case FeedKind::strayBytes:
        holdStray(entry);
        return;
    case FeedKind::connectionLost:
        holdLost(entry);
        return;
    case FeedKind::connected:
        takeConnected(entry);
        return;
    case FeedKind::connectFailed:
        linkProblem_ = entry.text;
        if (!entry.standing) {
            say(entry, LineKind::connectFailed, "cannot connect: " + entry.text.toStdString());
        }
        return;
    case FeedKind::closed:
        say(entry, LineKind::closed, "the host closed the connection");
        return;
    case FeedKind::gaveUp:
        say(entry, LineKind::gaveUp,
            "given up after " + project::counted(attempt_, "attempt", "attempts").toStdString());
        return;
    case FeedKind::framesDropped: // each of them was told
        release();
        return;
    case FeedKind::operationEnded:
    case FeedKind::planChanged:
    case FeedKind::elementSetAside:
    case FeedKind::elementBack:
        return;
    }
}

void FeedLines::gap(quint64 missed)
{
    release();
    FeedLine line = lineAt(WallClock::now(), TraceWay::nothing, LineKind::missed);
    line.words = "missed " + std::to_string(missed);
    show(line, nullptr, 0);
}

void FeedLines::quiet()
{
    if (!held_.empty() && held_.back().endsConnection) {
        release();
    }
}

void FeedLines::end()
{
    release();
}

void FeedLines::takeExchange(const FeedEntry& entry)
{
    attempt_ = entry.exchange.attempt;
    if (entry.exchange.sentBytes == 0) {
        release();
        showUnsent(entry);
        return;
    }
    releaseUntil(entry.exchange.sentAt);
    showRequest(entry);
    release();
    showAnswer(entry);
}

void FeedLines::showRequest(const FeedEntry& entry)
{
    const Exchange& exchange = entry.exchange;
    FeedLine line =
        lineAt(wallAt(entry, exchange.sentAt), TraceWay::toController, LineKind::request);
    line.words = requestWords(exchange);
    if (exchange.attempt > 1) {
        line.remarks.push_back("attempt " + std::to_string(exchange.attempt));
    }
    if (exchange.sentBytes < exchange.requestSize) {
        line.remarks.push_back(bytesInCount(exchange.sentBytes) + " of it sent");
    }
    show(line, exchange.request, std::min<size_t>(exchange.sentBytes, exchange.requestKept()));
}

void FeedLines::showAnswer(const FeedEntry& entry)
{
    const Exchange& exchange = entry.exchange;
    const bool came = exchange.answered();
    FeedLine line = lineAt(entry.wall, came ? TraceWay::fromController : TraceWay::nothing,
                           answerKind(exchange));
    line.hasRequest = true;
    line.sinceRequest = entry.at - exchange.sentAt;
    if (!came) {
        line.words = wire::titleInWords(wire::viewFrame(exchange.request, exchange.requestKept())) +
                     ": " + endInWords(exchange, linkProblem_).toStdString();
        show(line, nullptr, 0);
        return;
    }
    line.words = replyWords(replyOf(entry), replySizeOf(entry));
    if (exchange.end == ExchangeEnd::reply && !exchange.isGood()) {
        line.remarks.push_back("wrong length: " + bytesInCount(exchange.replySize) +
                               " instead of " + std::to_string(exchange.expectedReply));
    }
    show(line, replyOf(entry), replySizeOf(entry));
}

void FeedLines::showUnsent(const FeedEntry& entry)
{
    FeedLine line = lineAt(entry.wall, TraceWay::nothing, LineKind::unsent);
    line.words = requestWords(entry.exchange);
    line.remarks.push_back("not sent: " + endInWords(entry.exchange, linkProblem_).toStdString());
    show(line, nullptr, 0);
}

// Told again to a reader that missed entries: it may be the same connection.
void FeedLines::takeConnected(const FeedEntry& entry)
{
    if (entry.standing && connections_ > 0 && entry.attempts == attempts_) {
        return;
    }
    release();
    ++connections_;
    attempts_ = entry.attempts;
    say(entry, LineKind::connected, "connected" + endsInWords(entry));
}

void FeedLines::holdLost(const FeedEntry& entry)
{
    linkProblem_ = entry.text;
    if (entry.standing) {
        return;
    }
    FeedLine line = lineAt(entry.wall, TraceWay::nothing, LineKind::lost);
    line.words = "the connection was lost: " + entry.text.toStdString();
    held_.push_back({entry.at, line, {}, true});
}

void FeedLines::holdStray(const FeedEntry& entry)
{
    FeedLine line = lineAt(entry.wall, TraceWay::fromController, strayKind(entry.stray));
    if (entry.stray == Stray::remainder && !beginsFrame(entry.received)) {
        line.words = bytesInCount(entry.received.size());
        line.remarks.emplace_back("no frame");
    } else {
        line.words = replyWords(entry.received.data(), entry.received.size());
        line.remarks.emplace_back(entry.stray == Stray::remainder ? "cut" : remarkOn(entry.stray));
    }
    if (entry.stray == Stray::late || entry.stray == Stray::duplicate) {
        line.hasRequest = true;
        line.sinceRequest = entry.at - entry.askedAt;
    }
    held_.push_back({entry.at, line, entry.received, false});
}

void FeedLines::say(const FeedEntry& entry, LineKind kind, const std::string& words)
{
    release();
    FeedLine line = lineAt(entry.wall, TraceWay::nothing, kind);
    line.words = words;
    show(line, nullptr, 0);
}

void FeedLines::release()
{
    releaseUntil(Clock::time_point::max());
}

void FeedLines::releaseUntil(Clock::time_point moment)
{
    const auto later = std::find_if(held_.begin(), held_.end(),
                                    [&](const Held& held) { return held.at >= moment; });
    for (auto held = held_.begin(); held != later; ++held) {
        show(held->line, held->bytes.empty() ? nullptr : held->bytes.data(), held->bytes.size());
    }
    held_.erase(held_.begin(), later);
}

void FeedLines::show(FeedLine& line, const unsigned char* bytes, size_t size)
{
    line.bytes = bytes;
    line.size = size;
    show_(line);
}

FeedLine FeedLines::lineAt(WallClock::time_point at, TraceWay way, LineKind kind) const
{
    FeedLine line;
    line.kind = kind;
    line.at = at;
    line.who = "connection " + std::to_string(connections_);
    line.way = way;
    return line;
}

std::string FeedLines::requestWords(const Exchange& exchange) const
{
    return wire::requestInWords(exchange.request, exchange.requestKept(), describe_);
}

std::string FeedLines::replyWords(const unsigned char* bytes, size_t size) const
{
    return wire::replyInWords(bytes, size, describe_);
}

} // namespace tavmir::host
