// poll over the listener and its clients.
#include "test_server.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace tavmir::host
{

namespace
{

sockaddr_in loopback(int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
    return address;
}

int boundSocket(int port)
{
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    EXPECT_EQ(0, ::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    return descriptor;
}

int portOf(int descriptor)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

int byteAt(const QByteArray& bytes, int place)
{
    return static_cast<unsigned char>(bytes.at(place));
}

} // namespace

void TestServer::Client::send(const QByteArray& bytes)
{
    const ssize_t sent =
        ::send(descriptor_, bytes.constData(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL);
    Q_UNUSED(sent)
}

void TestServer::Client::sendSlowly(const QByteArray& bytes)
{
    for (const char byte : bytes) {
        send(QByteArray(1, byte));
    }
}

TestServer::TestServer(Answer answer, int port)
    : answer_(std::move(answer)), listener_(boundSocket(port))
{
    EXPECT_EQ(0, ::listen(listener_, 16));
    port_ = portOf(listener_);
    thread_ = std::thread([this] { loop(); });
}

TestServer::~TestServer()
{
    stop_.wake();
    thread_.join();
    closeAll();
}

void TestServer::closeAll()
{
    for (const Client& client : clients_) {
        ::close(client.descriptor_);
    }
    clients_.clear();
    if (listener_ >= 0) {
        ::close(listener_);
        listener_ = -1;
    }
}

void TestServer::loop()
{
    for (;;) {
        std::vector<pollfd> waits = {{stop_.descriptor(), POLLIN, 0}, {listener_, POLLIN, 0}};
        for (const Client& client : clients_) {
            waits.push_back({client.descriptor_, POLLIN, 0});
        }
        ::poll(waits.data(), waits.size(), -1);
        if (waits[0].revents != 0) {
            return;
        }
        serveClients(waits);
        if (listener_ >= 0 && waits[1].revents != 0) {
            acceptClient();
        }
    }
}

// waits  of the clients, behind two others
void TestServer::serveClients(const std::vector<pollfd>& waits)
{
    for (size_t i = waits.size(); i-- > 2;) {
        Client& client = clients_[i - 2];
        if (waits[i].revents == 0 || serve(client)) {
            continue;
        }
        if (client.leaving_) {
            closeAll();
            return;
        }
        ::close(client.descriptor_);
        clients_.erase(clients_.begin() + static_cast<std::ptrdiff_t>(i - 2));
    }
}

void TestServer::acceptClient()
{
    const int descriptor = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    const int on = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    clients_.emplace_back(descriptor);
    ++connections_;
}

bool TestServer::serve(Client& client)
{
    char bytes[4096];
    const ssize_t got = ::recv(client.descriptor_, bytes, sizeof bytes, 0);
    if (got <= 0) {
        return false;
    }
    client.received_.append(bytes, static_cast<int>(got));
    while (client.received_.size() >= 6 && !client.closing_ && !client.leaving_) {
        const int size = 6 + byteAt(client.received_, 4) * 256 + byteAt(client.received_, 5);
        if (client.received_.size() < size) {
            break;
        }
        const QByteArray request = client.received_.left(size);
        client.received_.remove(0, size);
        answer_(client, request, ++requests_);
    }
    return !client.closing_ && !client.leaving_;
}

int stationOf(const QByteArray& request)
{
    return byteAt(request, 6);
}

int countOf(const QByteArray& request)
{
    return byteAt(request, 8);
}

std::vector<quint32> addressesOf(const QByteArray& request)
{
    const int count = countOf(request);
    const int entryBytes = count == 0 ? 0 : (request.size() - 9) / count;
    std::vector<quint32> addresses;
    for (int i = 0; i < count; ++i) {
        quint32 address = 0;
        for (int place = 9 + i * entryBytes; place < 9 + i * entryBytes + 4; ++place) {
            address = address << 8 | static_cast<quint32>(byteAt(request, place));
        }
        addresses.push_back(address);
    }
    return addresses;
}

QByteArray replyTo(const QByteArray& request, const QByteArray& entries)
{
    QByteArray reply = request.left(9) + entries;
    const int length = reply.size() - 6;
    reply[4] = static_cast<char>(length >> 8);
    reply[5] = static_cast<char>(length & 0xFF);
    return reply;
}

QByteArray goodReply(const QByteArray& request, int firstValue)
{
    QByteArray entries;
    if (request.at(7) == 'f') {
        for (int i = 0; i < byteAt(request, 8); ++i) {
            entries += request.mid(9 + 4 * i, 4);
            entries += static_cast<char>((firstValue + i) >> 8);
            entries += static_cast<char>((firstValue + i) & 0xFF);
        }
    }
    return replyTo(request, entries);
}

QByteArray exceptionTo(const QByteArray& request, int code)
{
    QByteArray reply = replyTo(request, QByteArray());
    reply[7] = static_cast<char>(byteAt(request, 7) | 0x80);
    reply[8] = static_cast<char>(code);
    return reply;
}

QByteArray wordRequest(int transactionId, int count)
{
    QByteArray request;
    request += static_cast<char>(transactionId >> 8);
    request += static_cast<char>(transactionId & 0xFF);
    request += QByteArray(4, '\0');
    request += '\1';
    request += 'f';
    request += static_cast<char>(count);
    QByteArray entries;
    for (int i = 1; i <= count; ++i) {
        entries += QByteArray(2, '\0');
        entries += static_cast<char>((16 * i) >> 8);
        entries += static_cast<char>((16 * i) & 0xFF);
    }
    return replyTo(request, entries);
}

int closedPort()
{
    const int descriptor = boundSocket(0);
    const int port = portOf(descriptor);
    ::close(descriptor);
    return port;
}

} // namespace tavmir::host
