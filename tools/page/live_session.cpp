// WebSocket by Beast. Time is looked at by tick() alone, Beast's own timers are off.
#include "live_session.h"

#include "greeting.h"
#include "http_answers.h"
#include "send_progress.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/core/buffers_to_string.hpp>

#include <algorithm>

namespace tavmir::page
{

namespace
{

namespace websocket = boost::beast::websocket;

} // namespace

LiveSession::LiveSession(Connections& connections, Socket socket)
    : connections_(connections), stream_(std::move(socket)),
      buffer_(connections.limits().frameBytes),
      deadline_(Clock::now() + connections.limits().helloTime), heard_(Clock::now())
{
}

void LiveSession::start(std::string handshake)
{
    handshake_ = std::move(handshake);
    stream_.read_message_max(limits().frameBytes);
    stream_.auto_fragment(false);
    stream_.set_option(websocket::stream_base::decorator([](websocket::response_type& response) {
        for (const HeaderLine& line : kSafeHeaders) {
            response.set(line.name, line.value);
        }
    }));
    stream_.control_callback(
        [this](websocket::frame_type, boost::beast::string_view) { heard_ = Clock::now(); });
    stream_.async_accept(boost::asio::buffer(handshake_),
                         [self = shared_from_this()](Error error) { self->onOpen(error); });
}

void LiveSession::onOpen(Error error)
{
    if (error) {
        drop();
        return;
    }
    if (state_ == State::opening) {
        state_ = State::greeting;
    }
    read();
}

void LiveSession::read()
{
    stream_.async_read(
        buffer_, [self = shared_from_this()](Error error, std::size_t) { self->onRead(error); });
}

void LiveSession::onRead(Error error)
{
    if (error) {
        drop();
        return;
    }
    heard_ = Clock::now();
    const std::string text = boost::beast::buffers_to_string(buffer_.data());
    buffer_.consume(buffer_.size());
    if (!stream_.got_text()) {
        close(websocket::close_code::unknown_data, "messages are texts");
    } else if (state_ == State::greeting) {
        greet(text);
    } else if (state_ == State::listening) {
        close(websocket::close_code::policy_error, "there is nothing to say after the greeting");
    }
    read();
}

void LiveSession::greet(const std::string& text)
{
    Greeting greeting;
    if (!readGreeting(text, greeting)) {
        close(websocket::close_code::policy_error, "this is no greeting");
        return;
    }
    if (!connections_.service().rules.isToken(greeting.token)) {
        close(kWrongToken, "the token is another one");
        return;
    }
    state_ = State::listening;
    seen_ = greeting.sequence;
    connections_.lookIfOld();
    send(connections_.messages().first(greeting));
}

void LiveSession::tick(Clock::time_point now)
{
    if (state_ != State::opening && state_ != State::leaving && !stream_.is_open()) {
        // Beast is taking leave of it, and would wait for it for ever.
        leaveBy(now + limits().closeTime);
    }
    if (state_ == State::leaving || state_ == State::opening) {
        if (now >= deadline_) {
            drop();
        }
        return;
    }
    if ((isSending() && now >= sendDeadline_) || now - heard_ >= 3 * limits().silence) {
        drop();
        return;
    }
    if (state_ == State::greeting && now >= deadline_) {
        close(websocket::close_code::policy_error, "no greeting came");
        return;
    }
    if (now - std::max(heard_, pinged_) >= limits().silence && !isPinging_) {
        pinged_ = now;
        ping();
    }
    if (state_ == State::listening && !isSending()) {
        send(connections_.messages().changes(seen_));
    }
}

void LiveSession::send(LiveMessage message)
{
    if (!message.text) {
        return;
    }
    outgoing_ = std::move(message);
    seen_ = outgoing_.sequence;
    sent_ = 0;
    stream_.text(true);
    sendRest();
}

void LiveSession::sendRest()
{
    const std::size_t unread = outgoing_.text->size() - sent_;
    const std::size_t piece = std::min(unread, kPieceBytes);
    sendDeadline_ = sendDeadline(limits(), unread);
    stream_.async_write_some(piece == unread,
                             boost::asio::buffer(outgoing_.text->data() + sent_, piece),
                             [self = shared_from_this()](Error error, std::size_t bytes) {
                                 self->onSent(error, bytes);
                             });
}

void LiveSession::onSent(Error error, std::size_t bytes)
{
    if (error) {
        // The read ends too, and drops it.
        outgoing_ = LiveMessage();
        return;
    }
    sent_ += bytes;
    if (sent_ < outgoing_.text->size()) {
        sendRest();
        return;
    }
    outgoing_ = LiveMessage();
}

void LiveSession::ping()
{
    isPinging_ = true;
    stream_.async_ping({}, [self = shared_from_this()](Error) { self->isPinging_ = false; });
}

void LiveSession::leaveBy(Clock::time_point deadline)
{
    state_ = State::leaving;
    deadline_ = deadline;
}

void LiveSession::close(unsigned short code, const char* reason)
{
    if (state_ == State::leaving) {
        return;
    }
    leaveBy(Clock::now() + limits().closeTime);
    stream_.async_close({static_cast<websocket::close_code>(code), reason},
                        [self = shared_from_this()](Error) { self->drop(); });
}

void LiveSession::goAway()
{
    if (state_ == State::opening) {
        drop();
        return;
    }
    close(websocket::close_code::going_away, "the program ends");
}

void LiveSession::drop()
{
    const auto self = shared_from_this();
    state_ = State::leaving;
    Error ignored;
    stream_.next_layer().close(ignored);
    connections_.remove(*this);
}

} // namespace tavmir::page
