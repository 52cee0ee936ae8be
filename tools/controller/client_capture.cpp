#include "client_capture.h"

#include "frame_bytes.h"

#include <QtNetwork/QHostAddress>

#include <algorithm>
#include <chrono>

namespace tavmir::controller
{

namespace
{

using capture::Side;

wire::Endpoint endpointOf(const QHostAddress& address, quint16 port)
{
    wire::Endpoint endpoint;
    endpoint.host = address.toString().toStdString();
    endpoint.port = port;
    return endpoint;
}

} // namespace

ClientCapture::ClientCapture(const QTcpSocket& socket, const ServerSettings& settings)
    : settings_(settings)
{
    if (settings.capture == nullptr) {
        return;
    }
    const std::int64_t now = nowNs();
    conversation_ = std::make_unique<capture::TcpConversation>(
        endpointOf(socket.localAddress(), socket.localPort()),
        endpointOf(socket.peerAddress(), socket.peerPort()), now, *settings.capture);
    conversation_->opened(Side::other, now, now);
}

std::int64_t ClientCapture::nowNs() const
{
    const auto now = settings_.now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

void ClientCapture::received(const unsigned char* bytes, std::size_t size,
                             const std::string& comment)
{
    if (isOn()) {
        conversation_->data(Side::other, bytes, size, nowNs(), comment);
    }
}

void ClientCapture::queued(const QByteArray& reply, const std::string& comment)
{
    if (isOn()) {
        queued_.push_back({reply, comment, 0});
    }
}

void ClientCapture::left(qint64 bytes)
{
    while (isOn() && bytes > 0 && !queued_.empty()) {
        Queued& first = queued_.front();
        const int part = static_cast<int>(std::min<qint64>(bytes, first.bytes.size() - first.done));
        conversation_->data(Side::own, bytesOf(first.bytes) + first.done,
                            static_cast<std::size_t>(part), nowNs(),
                            first.done == 0 ? first.comment : std::string());
        first.done += part;
        bytes -= part;
        if (first.done == first.bytes.size()) {
            queued_.pop_front();
        }
    }
}

void ClientCapture::closedByClient()
{
    if (isOn()) {
        conversation_->closed(Side::other, nowNs());
        conversation_.reset();
    }
}

void ClientCapture::closed(const std::string& why)
{
    if (isOn()) {
        conversation_->closed(Side::own, nowNs(), why);
        conversation_.reset();
    }
}

} // namespace tavmir::controller
