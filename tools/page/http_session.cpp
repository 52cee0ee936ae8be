// Reads requests by Beast, asks the rules, and writes answers.
#include "http_session.h"

#include "http_answers.h"
#include "live_session.h"
#include "send_progress.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include <algorithm>
#include <array>

namespace tavmir::page
{

namespace
{

namespace beast = boost::beast;
namespace http = boost::beast::http;
using boost::asio::ip::tcp;

// A client that goes on sending what nobody reads is not waited for.
constexpr std::size_t kMostForgotten = 256 * 1024;

std::string_view viewOf(beast::string_view text)
{
    return {text.data(), text.size()};
}

std::string addressOf(const Socket& socket)
{
    boost::system::error_code error;
    const auto address = socket.local_endpoint(error).address();
    if (error) {
        return std::string();
    }
    if (address.is_v6() && address.to_v6().is_v4_mapped()) {
        return make_address_v4(boost::asio::ip::v4_mapped, address.to_v6()).to_string();
    }
    return address.to_string();
}

std::vector<std::string_view> allOf(const http::fields& fields, http::field name)
{
    std::vector<std::string_view> values;
    const auto range = fields.equal_range(name);
    for (auto field = range.first; field != range.second; ++field) {
        values.push_back(viewOf(field->value()));
    }
    return values;
}

RequestHead headOf(const http::request<http::string_body>& request)
{
    RequestHead head;
    head.method = viewOf(request.method_string());
    head.target = viewOf(request.target());
    head.hosts = allOf(request, http::field::host);
    head.origins = allOf(request, http::field::origin);
    head.authorization = viewOf(request[http::field::authorization]);
    head.contentType = viewOf(request[http::field::content_type]);
    head.expect = viewOf(request[http::field::expect]);
    head.isUpgrade = beast::websocket::is_upgrade(request);
    return head;
}

// All that a WebSocket is made from; the rest of its request has been looked at.
std::string handshakeOf(const http::request<http::string_body>& request)
{
    std::string text = "GET / HTTP/1.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n";
    for (const http::field name :
         {http::field::host, http::field::sec_websocket_version, http::field::sec_websocket_key}) {
        const auto field = request.find(name);
        if (field != request.end()) {
            text.append(viewOf(field->name_string())).append(": ");
            text.append(viewOf(field->value())).append("\r\n");
        }
    }
    return text + "\r\n";
}

bool isTooLongAHead(const boost::system::error_code& error)
{
    return error == http::error::header_limit || error == http::error::buffer_overflow;
}

bool isBadRequest(const boost::system::error_code& error)
{
    return error.category() == http::make_error_code(http::error::bad_method).category() &&
           error != http::error::end_of_stream && error != http::error::partial_message;
}

} // namespace

HttpSession::HttpSession(Connections& connections, Socket socket)
    : connections_(connections), socket_(std::move(socket)), ownAddress_(addressOf(socket_)),
      buffer_(2 * connections.limits().headerBytes)
{
}

void HttpSession::enter(State state, PageLimits::Ms time)
{
    state_ = state;
    deadline_ = Clock::now() + time;
}

void HttpSession::start()
{
    readHead();
}

void HttpSession::turnAway()
{
    refuse(503, "there are too many clients");
}

void HttpSession::tick(Clock::time_point now)
{
    if (now < deadline_) {
        return;
    }
    const bool hasBegun = state_ == State::body || (parser_ && parser_->got_some());
    switch (state_) {
    case State::head:
    case State::body:
        if (hasBegun && !isLate_) {
            // The read ends with an error, and is answered there.
            isLate_ = true;
            deadline_ = now + limits().closeTime;
            socket_.cancel();
            return;
        }
        break;
    case State::content:
        ++order_;
        staysOpen_ = false;
        refuse(504, "no answer came in time");
        return;
    case State::idle:
    case State::writing:
    case State::leaving:
        break;
    }
    drop();
}

void HttpSession::goAway()
{
    if (state_ == State::writing || state_ == State::leaving) {
        staysOpen_ = false;
        return;
    }
    drop();
}

void HttpSession::drop()
{
    const auto self = shared_from_this();
    Error ignored;
    socket_.close(ignored);
    connections_.remove(*this);
}

void HttpSession::waitForRequest()
{
    if (buffer_.size() > 0) {
        readHead();
        return;
    }
    enter(State::idle, limits().idleTime);
    socket_.async_wait(tcp::socket::wait_read, [self = shared_from_this()](Error error) {
        if (error) {
            self->drop();
            return;
        }
        self->readHead();
    });
}

void HttpSession::readHead()
{
    enter(State::head, limits().headerTime);
    isLate_ = false;
    parser_.emplace();
    parser_->header_limit(static_cast<std::uint32_t>(limits().headerBytes));
    parser_->body_limit(limits().bodyBytes);
    http::async_read_header(
        socket_, buffer_, *parser_,
        [self = shared_from_this()](Error error, std::size_t) { self->onHead(error); });
}

void HttpSession::onHead(Error error)
{
    staysOpen_ = false;
    isHead_ = false;
    if (isTooLongAHead(error)) {
        return refuse(431, "the header is too long");
    }
    if (error == boost::asio::error::operation_aborted && isLate_ && socket_.is_open()) {
        return refuse(408, "the header did not come in time");
    }
    // With that error the head has been read: it is refused for what else is wrong with it first.
    const bool isTooLong = error == http::error::body_limit;
    if (error && !isTooLong) {
        return isBadRequest(error) ? refuse(400, "this is no request that can be read") : drop();
    }
    isLate_ = false;
    const auto& request = parser_->get();
    RequestHead head = headOf(request);
    head.isTooLong = isTooLong;
    head.hasBody = isTooLong || !parser_->is_done();
    isHead_ = request.method() == http::verb::head;
    staysOpen_ = !head.hasBody && parser_->keep_alive();
    const Service& service = connections_.service();
    follow(decide(head, service.rules, service.assets, ownAddress_));
}

void HttpSession::follow(Decision decision)
{
    switch (decision.route) {
    case Route::refuse:
        answer(decision.refusal, decision.allow);
        return;
    case Route::asset:
        send(answerBytes(200, decision.asset->type, decision.asset->bytes,
                         {isHead_, staysOpen_, ""}));
        return;
    case Route::question:
        ask(decision);
        return;
    case Route::order:
        readBody(std::move(decision.what));
        return;
    case Route::live:
        goLive();
        return;
    }
}

void HttpSession::ask(const Decision& decision)
{
    const PageContent::Done done = whenDone();
    try {
        connections_.service().content.ask(decision.what, decision.query, done);
    } catch (const std::exception&) {
        ++order_;
        refuse(500, "this cannot be answered");
    }
}

void HttpSession::readBody(std::string what)
{
    staysOpen_ = parser_->keep_alive();
    if (parser_->is_done()) {
        order(what);
        return;
    }
    enter(State::body, limits().bodyTime);
    const auto read = [self = shared_from_this(), what = std::move(what)] {
        http::async_read(self->socket_, self->buffer_, *self->parser_,
                         [self, what](Error error, std::size_t) { self->onBody(error, what); });
    };
    if (parser_->get()[http::field::expect].empty()) {
        read();
        return;
    }
    static constexpr std::string_view kGoOn = "HTTP/1.1 100 Continue\r\n\r\n";
    boost::asio::async_write(socket_, boost::asio::buffer(kGoOn.data(), kGoOn.size()),
                             [read, self = shared_from_this()](Error error, std::size_t) {
                                 if (error) {
                                     self->drop();
                                     return;
                                 }
                                 read();
                             });
}

void HttpSession::onBody(Error error, const std::string& what)
{
    if (!error) {
        order(what);
        return;
    }
    staysOpen_ = false;
    if (error == http::error::body_limit) {
        return refuse(413, "the body is too long");
    }
    if (error == boost::asio::error::operation_aborted && isLate_ && socket_.is_open()) {
        return refuse(408, "the body did not come in time");
    }
    return isBadRequest(error) ? refuse(400, "the body cannot be read") : drop();
}

// The content is asked now; what it says comes back to this thread.
PageContent::Done HttpSession::whenDone()
{
    enter(State::content, limits().answerTime);
    return [path = connections_.returnPath(), number = ++order_,
            weak = weak_from_this()](Answer answer) {
        path->post([number, weak, answer = std::move(answer)] {
            if (const auto self = weak.lock()) {
                self->onAnswer(number, answer);
            }
        });
    };
}

void HttpSession::order(const std::string& what)
{
    const PageContent::Done done = whenDone();
    try {
        connections_.service().content.post(what, parser_->get().body(), done);
    } catch (const std::exception&) {
        ++order_;
        refuse(500, "this cannot be carried out");
    }
}

void HttpSession::onAnswer(unsigned order, const Answer& answer)
{
    if (state_ == State::content && order == order_) {
        ++order_;
        this->answer(answer);
    }
}

void HttpSession::goLive()
{
    // A client that is in a hurry sends its greeting without waiting for the answer.
    const std::string handshake =
        handshakeOf(parser_->get()) + beast::buffers_to_string(buffer_.data());
    if (handshake.size() > kMostHandshake) {
        staysOpen_ = false;
        return refuse(400, "this is too much to ask for a WebSocket");
    }
    const auto self = shared_from_this();
    const auto live = std::make_shared<LiveSession>(connections_, std::move(socket_));
    connections_.replace(*this, live);
    live->start(handshake);
}

void HttpSession::answer(const Answer& answer, const char* allow)
{
    send(answerBytes(answer, {isHead_, staysOpen_, allow}));
}

void HttpSession::refuse(unsigned status, const char* text, const char* allow)
{
    answer(errorAnswer(status, text), allow);
}

void HttpSession::send(std::string bytes)
{
    state_ = State::writing;
    outgoing_ = std::move(bytes);
    sent_ = 0;
    sendRest();
}

void HttpSession::sendRest()
{
    const std::size_t unread = outgoing_.size() - sent_;
    deadline_ = sendDeadline(limits(), unread);
    socket_.async_write_some(
        boost::asio::buffer(outgoing_.data() + sent_, std::min(unread, kPieceBytes)),
        [self = shared_from_this()](Error error, std::size_t bytes) {
            self->onSent(error, bytes);
        });
}

void HttpSession::onSent(Error error, std::size_t bytes)
{
    if (error) {
        drop();
        return;
    }
    sent_ += bytes;
    if (sent_ < outgoing_.size()) {
        sendRest();
        return;
    }
    outgoing_ = std::string();
    parser_.reset();
    if (staysOpen_) {
        waitForRequest();
    } else {
        leave();
    }
}

// Closing at once while bytes of the client's are unread would throw the answer away.
void HttpSession::leave()
{
    enter(State::leaving, limits().closeTime);
    Error error;
    socket_.shutdown(tcp::socket::shutdown_send, error);
    if (error) {
        drop();
        return;
    }
    buffer_.clear();
    readAndForget();
}

void HttpSession::readAndForget()
{
    buffer_.clear();
    socket_.async_read_some(buffer_.prepare(buffer_.max_size()),
                            [self = shared_from_this()](Error error, std::size_t bytes) {
                                self->forgotten_ += bytes;
                                if (error || self->forgotten_ > kMostForgotten) {
                                    self->drop();
                                    return;
                                }
                                self->readAndForget();
                            });
}

} // namespace tavmir::page
