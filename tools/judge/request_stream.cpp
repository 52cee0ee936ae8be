// The header's length field says where a frame ends.
#include "request_stream.h"

namespace tavmir::judge
{

namespace
{

constexpr std::size_t kLeastLength = 2; // station and function

bool isHeader(const Bytes& bytes)
{
    const std::size_t length = wire::bigEndian16(bytes.data() + wire::kLengthOffset);
    return wire::bigEndian16(bytes.data() + wire::kProtocolOffset) == 0 && length >= kLeastLength &&
           length <= kMostFrameBytes - wire::kLengthEnd;
}

Event eventOf(Event::Kind kind, const Event& received, const Bytes& bytes)
{
    Event event = received;
    event.kind = kind;
    event.bytes = bytes;
    return event;
}

} // namespace

std::vector<Event> RequestStream::take(const Event& received)
{
    std::vector<Event> events;
    if (broken_) {
        return events;
    }
    if (waiting_.empty()) {
        since_ = received.at;
    }
    waiting_.insert(waiting_.end(), received.bytes.begin(), received.bytes.end());
    while (waiting_.size() >= wire::kLengthEnd) {
        if (!isHeader(waiting_)) {
            broken_ = true;
            events.push_back(eventOf(Event::Kind::unframed, received, waiting_));
            waiting_.clear();
            return events;
        }
        const std::size_t size =
            wire::kLengthEnd + wire::bigEndian16(waiting_.data() + wire::kLengthOffset);
        if (waiting_.size() < size) {
            return events;
        }
        const auto end = waiting_.begin() + static_cast<std::ptrdiff_t>(size);
        events.push_back(eventOf(Event::Kind::request, received, Bytes(waiting_.begin(), end)));
        waiting_.erase(waiting_.begin(), end);
        since_ = received.at;
        told_ = false;
    }
    return events;
}

std::vector<Event> RequestStream::tick(Us now, int client)
{
    if (waiting_.empty() || told_ || now - since_ < kWholeWithin) {
        return {};
    }
    return {halfSent(now, client)};
}

std::vector<Event> RequestStream::close(Us now, int client)
{
    if (waiting_.empty() || told_) {
        return {};
    }
    return {halfSent(now, client)};
}

Event RequestStream::halfSent(Us now, int client)
{
    told_ = true;
    Event event;
    event.kind = Event::Kind::halfSent;
    event.at = now;
    event.client = client;
    event.bytes = waiting_;
    return event;
}

} // namespace tavmir::judge
