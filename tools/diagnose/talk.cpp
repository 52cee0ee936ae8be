// Telling hosts from controllers.
#include "talk.h"

namespace tavmir::diagnose
{

namespace
{

using Kind = StreamEvent::Kind;

// Without a frame of this protocol in so much, another one is spoken.
constexpr std::size_t kMostInVain = 64 * 1024;
constexpr std::size_t kMostWaiting = 1000; // events

} // namespace

Talk::Talk(const Stream& stream, int port, Find find)
    : stream_(stream), find_(std::move(find)), fromHost_(stream.sawBeginning),
      fromController_(stream.sawBeginning)
{
    const bool secondFits = port == 0 || stream.second.port == port;
    const bool firstFits = port == 0 || stream.first.port == port;
    if (stream.sawBeginning) {
        isMute_ = !secondFits;
        if (secondFits) {
            decide(true);
        }
        return;
    }
    isMute_ = !firstFits && !secondFits;
    if (firstFits != secondFits) {
        decide(secondFits);
    }
}

void Talk::decide(bool hostIsFirst)
{
    hostIsFirst_ = hostIsFirst;
    const TcpEnd& host = hostIsFirst ? stream_.first : stream_.second;
    const TcpEnd& controller = hostIsFirst ? stream_.second : stream_.first;
    conversation_ = &find_(host.address, controller);
    if (!stream_.sawBeginning) {
        conversation_->foundOpen(stream_.number);
    }
    for (const StreamEvent& event : waiting_) {
        apply(event);
    }
    waiting_.clear();
}

void Talk::take(const StreamEvent& event)
{
    if (isMute_) {
        return;
    }
    if (conversation_ != nullptr) {
        apply(event);
        return;
    }
    wait(event);
}

void Talk::wait(const StreamEvent& event)
{
    waiting_.push_back(event);
    waitingBytes_ += event.bytes.size();
    if (event.kind == Kind::bytes) {
        const std::vector<std::uint8_t>& bytes = event.bytes;
        if (isWholeRequest(bytes.data(), bytes.size())) {
            decide(event.fromFirst);
            return;
        }
        if (isWholeReply(bytes.data(), bytes.size())) {
            decide(!event.fromFirst);
            return;
        }
    }
    if (waitingBytes_ > kMostInVain || waiting_.size() > kMostWaiting) {
        isMute_ = true;
        waiting_.clear();
    }
}

void Talk::apply(const StreamEvent& event)
{
    const bool byHost = event.fromFirst == hostIsFirst_;
    switch (event.kind) {
    case Kind::asked:
        conversation_->asked(stream_.number, event.at);
        return;
    case Kind::connected:
        conversation_->connected(stream_.number, event.at);
        return;
    case Kind::bytes:
        applyBytes(event, byHost);
        return;
    case Kind::missing:
        (byHost ? fromHost_ : fromController_).lack();
        conversation_->lacks(byHost, event.lacks);
        return;
    case Kind::finished:
    case Kind::reset:
        endParts();
        conversation_->closed(stream_.number, event.at, byHost, event.kind == Kind::reset);
        return;
    case Kind::over:
        conversation_->unread(fromHost_.unread() + fromController_.unread());
        conversation_->over(stream_.number, event.at);
        return;
    }
}

void Talk::applyBytes(const StreamEvent& event, bool byHost)
{
    for (const Piece& piece : (byHost ? fromHost_ : fromController_).take(event.bytes, event.at)) {
        if (piece.kind != Piece::Kind::frame) {
            conversation_->damaged(stream_.number, byHost, piece);
        } else if (byHost) {
            conversation_->request(stream_.number, piece);
            fromController_.expectNew();
        } else {
            conversation_->reply(stream_.number, piece);
        }
    }
    bytesInVain_ += event.bytes.size();
    if (conversation_->speaks()) {
        bytesInVain_ = 0;
    }
    if (bytesInVain_ > kMostInVain) {
        isMute_ = true;
    }
}

// Of a connection that closes: what has begun stays as it is.
void Talk::endParts()
{
    Piece part;
    if (fromController_.end(part)) {
        conversation_->damaged(stream_.number, false, part);
    }
    if (fromHost_.end(part)) {
        conversation_->damaged(stream_.number, true, part);
    }
}

} // namespace tavmir::diagnose
