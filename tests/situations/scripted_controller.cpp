#include "scripted_controller.h"

#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavmir::situations
{

namespace
{

const int kLookUpMs = 20;

// True when there is something to read; false when the test ends first.
bool awaitReadable(int socket, const std::atomic<bool>& stopping)
{
    while (!stopping) {
        pollfd waiting = {socket, POLLIN, 0};
        if (poll(&waiting, 1, kLookUpMs) > 0) {
            return true;
        }
    }
    return false;
}

int lengthOf(const QByteArray& start)
{
    return static_cast<unsigned char>(start.at(4)) * 256 + static_cast<unsigned char>(start.at(5));
}

} // namespace

bool Peer::receive(QByteArray& bytes, int count)
{
    while (count > 0) {
        char piece[512];
        if (!awaitReadable(socket_, stopping_)) {
            return false;
        }
        const auto wanted = static_cast<std::size_t>(qMin<int>(count, sizeof piece));
        const ssize_t got = recv(socket_, piece, wanted, 0);
        if (got <= 0) {
            return false;
        }
        bytes.append(piece, static_cast<int>(got));
        count -= static_cast<int>(got);
    }
    return true;
}

QByteArray Peer::request()
{
    QByteArray frame;
    if (!receive(frame, 6) || !receive(frame, lengthOf(frame))) {
        return QByteArray();
    }
    return frame;
}

void Peer::send(const QByteArray& bytes)
{
    // The host may have left: then there is nobody to tell.
    if (::send(socket_, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL) <
        0) {
        return;
    }
}

void Peer::sendByteByByte(const QByteArray& bytes)
{
    for (int i = 0; i < bytes.size(); ++i) {
        send(bytes.mid(i, 1));
        std::this_thread::yield();
    }
}

ScriptedController::ScriptedController()
{
    bindTo(0);
}

ScriptedController::~ScriptedController()
{
    stop();
    close(listener_);
}

void ScriptedController::bindTo(int port)
{
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<quint16>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, generic, size) != 0 || getsockname(listener_, generic, &size) != 0) {
        throw std::runtime_error("no loopback port");
    }
    port_ = ntohs(address.sin_port);
}

void ScriptedController::start(const Script& script)
{
    if (listen(listener_, 4) != 0) {
        throw std::runtime_error("cannot listen");
    }
    stopping_ = false;
    thread_ = std::thread([this, script] { run(script); });
}

void ScriptedController::stop()
{
    if (!thread_.joinable()) {
        return;
    }
    stopping_ = true;
    thread_.join();
    close(listener_);
    bindTo(port_);
}

void ScriptedController::run(const Script& script)
{
    while (awaitReadable(listener_, stopping_)) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) {
            continue;
        }
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        Peer peer(socket, stopping_);
        script(peer);
        close(socket);
    }
}

int functionOf(const QByteArray& frame)
{
    return static_cast<unsigned char>(frame.at(7));
}

QByteArray readReply(const QByteArray& request, quint32 value)
{
    const int valueBytes = functionOf(request) == 'd' ? 1 : functionOf(request) == 'f' ? 2 : 4;
    QByteArray reply = request.left(9);
    for (int at = 9; at + 4 <= request.size(); at += 4) {
        reply += request.mid(at, 4);
        for (int byte = valueBytes - 1; byte >= 0; --byte) {
            reply += static_cast<char>((value >> (8 * byte)) & 0xFF);
        }
    }
    const int length = reply.size() - 6;
    reply[4] = static_cast<char>(length / 256);
    reply[5] = static_cast<char>(length % 256);
    return reply;
}

QByteArray writeReply(const QByteArray& request)
{
    QByteArray reply = request.left(9);
    reply[4] = 0;
    reply[5] = 3;
    return reply;
}

QByteArray rightReply(const QByteArray& request, quint32 value)
{
    const int function = functionOf(request);
    const bool isRead = function == 'd' || function == 'f' || function == 'l';
    return isRead ? readReply(request, value) : writeReply(request);
}

QByteArray exceptionReply(const QByteArray& request, int code)
{
    QByteArray reply = writeReply(request);
    reply[7] = static_cast<char>(functionOf(request) | 0x80);
    reply[8] = static_cast<char>(code);
    return reply;
}

QByteArray withTransaction(QByteArray frame, int transaction)
{
    frame[0] = static_cast<char>(transaction / 256);
    frame[1] = static_cast<char>(transaction % 256);
    return frame;
}

} // namespace tavmir::situations
