// Connections, and when one is another.
#include "streams.h"

namespace tavmir::diagnose
{

namespace
{

using Kind = StreamEvent::Kind;

} // namespace

bool Streams::isAnother(const Open& open, const Segment& segment) const
{
    if (segment.syn && !segment.ack) {
        return !open.stream.sawBeginning || segment.sequence != open.beginsAt;
    }
    // A port that was used anew, the beginning not in the capture.
    const bool fromFirst = segment.from == open.stream.first;
    const Half& half = open.halves[fromFirst ? 0 : 1];
    return !segment.rst && !segment.bytes.empty() && half.bytes.hasBegun() &&
           half.bytes.isFar(segment.sequence);
}

Streams::Open& Streams::openOf(const Segment& segment, Nanoseconds at)
{
    const bool isOrdered = segment.from < segment.to;
    const Key key = isOrdered ? Key(segment.from, segment.to) : Key(segment.to, segment.from);
    const auto found = open_.find(key);
    if (found != open_.end()) {
        if (!isAnother(found->second, segment)) {
            return found->second;
        }
        end(found->second, at);
        open_.erase(found);
    }
    Open& open = open_[key];
    const bool secondSpeaks = segment.syn && segment.ack;
    open.stream.number = static_cast<std::size_t>(made_++);
    open.stream.first = secondSpeaks ? segment.to : segment.from;
    open.stream.second = secondSpeaks ? segment.from : segment.to;
    open.stream.sawBeginning = segment.syn;
    open.beginsAt = secondSpeaks ? segment.acknowledged - 1 : segment.sequence;
    if (segment.syn) {
        tell(open, {Kind::asked, true, at});
    }
    return open;
}

void Streams::take(Segment segment, Nanoseconds at)
{
    Open& open = openOf(segment, at);
    const bool fromFirst = segment.from == open.stream.first;
    Half& own = open.halves[fromFirst ? 0 : 1];
    Half& other = open.halves[fromFirst ? 1 : 0];
    if (segment.syn && !own.bytes.hasBegun()) {
        own.bytes.beginAt(segment.sequence + 1);
    }
    if (segment.syn && segment.ack && !open.isConnected) {
        open.isConnected = true;
        tell(open, {Kind::connected, false, at});
    }
    if (segment.rst) {
        if (!open.isReset) {
            open.isReset = true;
            tell(open, {Kind::reset, fromFirst, at});
        }
        return;
    }
    if (segment.ack && !segment.syn) {
        other.knowsAcknowledged = true;
        other.acknowledged = segment.acknowledged;
        if (!other.bytes.hasBegun()) {
            other.bytes.beginAt(segment.acknowledged);
        }
    }
    const std::uint32_t behind =
        segment.sequence + static_cast<std::uint32_t>(segment.bytes.size() + segment.notKept);
    const bool closes = segment.fin;
    takeBytes(open, fromFirst, segment, at);
    bool& isFinished = open.isFinished[fromFirst ? 0 : 1];
    if (closes && !isFinished) {
        skipAcknowledged(open, !fromFirst, at);
        isFinished = true;
        // Everything in front of it was sent.
        const std::uint32_t lacks = own.bytes.hasBegun() ? own.bytes.skipTo(behind) : 0;
        if (lacks > 0) {
            tell(open, {Kind::missing, fromFirst, at, {}, lacks});
            deliver(open, fromFirst, at);
        }
        tell(open, {Kind::finished, fromFirst, at});
    }
}

void Streams::takeBytes(Open& open, bool fromFirst, Segment& segment, Nanoseconds at)
{
    Half& own = open.halves[fromFirst ? 0 : 1];
    if (segment.bytes.empty() && segment.notKept == 0) {
        return;
    }
    const auto keptUntil = segment.sequence + static_cast<std::uint32_t>(segment.bytes.size());
    // What these bytes answer was there, whether or not the capture has it.
    skipAcknowledged(open, !fromFirst, at);
    if (!own.bytes.hasBegun()) {
        own.bytes.beginAt(segment.sequence);
    }
    own.bytes.take(segment.sequence, std::move(segment.bytes));
    deliver(open, fromFirst, at);
    if (segment.notKept > 0 && own.bytes.isNext(keptUntil)) {
        const std::uint32_t lacks =
            own.bytes.skipTo(keptUntil + static_cast<std::uint32_t>(segment.notKept));
        tell(open, {Kind::missing, fromFirst, at, {}, lacks});
        deliver(open, fromFirst, at);
    }
    if (own.knowsAcknowledged) {
        skipAcknowledged(open, fromFirst, at);
    }
    if (own.bytes.waitsForTooMuch()) {
        const std::uint32_t lacks = own.bytes.skipToWaiting();
        tell(open, {Kind::missing, fromFirst, at, {}, lacks});
        deliver(open, fromFirst, at);
    }
}

void Streams::deliver(Open& open, bool fromFirst, Nanoseconds at)
{
    StreamBytes& bytes = open.halves[fromFirst ? 0 : 1].bytes;
    if (!bytes.hasBegun()) {
        return;
    }
    StreamEvent event{Kind::bytes, fromFirst, at};
    event.bytes = bytes.fetch();
    if (!event.bytes.empty()) {
        tell(open, std::move(event));
    }
}

void Streams::skipAcknowledged(Open& open, bool fromFirst, Nanoseconds at)
{
    Half& half = open.halves[fromFirst ? 0 : 1];
    if (!half.knowsAcknowledged || !half.bytes.hasBegun() ||
        open.isFinished[fromFirst ? 0 : 1]) { // a FIN counts as a byte
        return;
    }
    for (;;) {
        const std::uint32_t lacks = half.bytes.skipTo(half.acknowledged);
        if (lacks == 0) {
            return;
        }
        tell(open, {Kind::missing, fromFirst, at, {}, lacks});
        deliver(open, fromFirst, at);
    }
}

void Streams::end(Open& open, Nanoseconds at)
{
    for (const bool fromFirst : {true, false}) {
        StreamBytes& bytes = open.halves[fromFirst ? 0 : 1].bytes;
        for (std::uint32_t lacks = 0; bytes.hasBegun() && (lacks = bytes.skipToWaiting()) > 0;) {
            tell(open, {Kind::missing, fromFirst, at, {}, lacks});
            deliver(open, fromFirst, at);
        }
        skipAcknowledged(open, fromFirst, at);
    }
    tell(open, {Kind::over, true, at});
}

void Streams::finish(Nanoseconds at)
{
    for (auto& entry : open_) {
        end(entry.second, at);
    }
    open_.clear();
}

} // namespace tavmir::diagnose
