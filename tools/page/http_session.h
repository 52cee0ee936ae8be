// A client that asks by HTTP, one request after the other:
//
//   head ─▶ body ─▶ content ─▶ writing ─▶ idle ─▶ head …
//                                     └─▶ leaving: the client is to read the answer before the end
//
// A request for a WebSocket ends it; the client goes on as a LiveSession.
#ifndef TAVMIR_PAGE_HTTP_SESSION_H
#define TAVMIR_PAGE_HTTP_SESSION_H

#include "connections.h"
#include "request_rules.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <optional>

namespace tavmir::page
{

class HttpSession : public Session, public std::enable_shared_from_this<HttpSession>
{
public:
    // connections  outlive it
    HttpSession(Connections& connections, Socket socket);

    // One of the two, once.
    void start();
    void turnAway();

    void tick(Clock::time_point now) override;
    void goAway() override;
    void drop() override;
    bool isIdle() const override { return state_ == State::idle; }
    bool isListening() const override { return false; }

private:
    enum class State { idle, head, body, content, writing, leaving };
    using Error = boost::system::error_code;
    using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;

    void enter(State state, PageLimits::Ms time);
    void waitForRequest();
    void readHead();
    void onHead(Error error);
    void follow(Decision decision);
    void ask(const Decision& decision);
    void readBody(std::string what);
    void onBody(Error error, const std::string& what);
    PageContent::Done whenDone();
    void order(const std::string& what);
    void onAnswer(unsigned order, const Answer& answer);
    void goLive();
    void answer(const Answer& answer, const char* allow = "");
    void refuse(unsigned status, const char* text, const char* allow = "");
    void send(std::string bytes);
    void sendRest();
    void onSent(Error error, std::size_t bytes);
    void leave();
    void readAndForget();

    const PageLimits& limits() const { return connections_.limits(); }

    Connections& connections_;
    Socket socket_;
    std::string ownAddress_; // without brackets; empty: not known
    boost::beast::flat_buffer buffer_;
    std::optional<Parser> parser_; // of the request at hand
    State state_ = State::head;
    Clock::time_point deadline_;
    bool isLate_ = false; // the read at hand was ended by its deadline
    bool staysOpen_ = false;
    bool isHead_ = false; // the request wants no body
    unsigned order_ = 0;  // number of the last one: an answer to an earlier one comes too late
    std::string outgoing_;
    std::size_t sent_ = 0;
    std::size_t forgotten_ = 0; // bytes read while leaving
};

} // namespace tavmir::page

#endif
