// What one client's connection adds to the capture: its requests, the bytes that really go out, its
// beginning and its end. Does nothing when there is no capture.
//
// Lives as long as the client's session, on its thread.
#ifndef TAVMIR_CONTROLLER_CLIENT_CAPTURE_H
#define TAVMIR_CONTROLLER_CLIENT_CAPTURE_H

#include "server_settings.h"

#include "capture/tcp_conversation.h"

#include <QtCore/QByteArray>
#include <QtNetwork/QTcpSocket>

#include <deque>
#include <memory>

namespace tavmir::controller
{

class ClientCapture
{
public:
    // The socket is connected, to a client that has just come.
    ClientCapture(const QTcpSocket& socket, const ServerSettings& settings);

    bool isOn() const { return conversation_ != nullptr; }

    // comment  what is wrong with them; empty: nothing
    void received(const unsigned char* bytes, std::size_t size, const std::string& comment);
    // Handed to the socket.
    void queued(const QByteArray& reply, const std::string& comment);
    // So many of those bytes have left.
    void left(qint64 bytes);
    // Each ends it; what follows is not captured.
    void closedByClient();
    void closed(const std::string& why);

private:
    struct Queued {
        QByteArray bytes;
        std::string comment;
        int done;
    };

    std::int64_t nowNs() const;

    const ServerSettings& settings_;
    std::unique_ptr<capture::TcpConversation> conversation_; // null: none, or over
    std::deque<Queued> queued_;
};

} // namespace tavmir::controller

#endif
