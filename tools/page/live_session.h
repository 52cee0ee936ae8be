// A client that listens by WebSocket:
//
//   start ─▶ greeting ─▶ snapshot, or what it missed ─▶ changes … ─▶ close
//
// It is sent one message at a time and never has another waiting: who is slow skips what is
// overtaken and gets the latest when there is room.
#ifndef TAVMIR_PAGE_LIVE_SESSION_H
#define TAVMIR_PAGE_LIVE_SESSION_H

#include "connections.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/stream.hpp>

namespace tavmir::page
{

// Close codes of its own.
constexpr unsigned short kWrongToken = 4401;

// What Beast takes in advance.
constexpr std::size_t kMostHandshake = 1536;

class LiveSession : public Session, public std::enable_shared_from_this<LiveSession>
{
public:
    // connections  outlive it
    LiveSession(Connections& connections, Socket socket);

    // Once.
    //   handshake  the request that asked for it and what the client sent behind it; kMostHandshake
    //              bytes at most
    void start(std::string handshake);

    void tick(Clock::time_point now) override;
    void goAway() override;
    void drop() override;
    bool isIdle() const override { return false; }
    bool isListening() const override { return state_ == State::listening; }

private:
    enum class State { opening, greeting, listening, leaving };
    using Error = boost::system::error_code;

    void onOpen(Error error);
    void read();
    void onRead(Error error);
    void greet(const std::string& text);
    void send(LiveMessage message);
    void sendRest();
    void onSent(Error error, std::size_t bytes);
    void ping();
    void leaveBy(Clock::time_point deadline);
    void close(unsigned short code, const char* reason);

    bool isSending() const { return outgoing_.text != nullptr; }
    const PageLimits& limits() const { return connections_.limits(); }

    Connections& connections_;
    boost::beast::websocket::stream<Socket, false> stream_;
    std::string handshake_;
    boost::beast::flat_buffer buffer_;
    State state_ = State::opening;
    Clock::time_point deadline_;     // of opening, greeting and leaving
    Clock::time_point sendDeadline_; // while something is being sent
    Clock::time_point heard_;        // something of the client
    Clock::time_point pinged_;       // the last time
    bool isPinging_ = false;
    LiveMessage outgoing_;
    std::size_t sent_ = 0;
    std::uint64_t seen_ = 0; // sequence of what it was sent last
};

} // namespace tavmir::page

#endif
