// HTTP and WebSocket, as much as tests need.
#include "test_client.h"

#include "support/patience.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

namespace tavmir::page
{

namespace
{

constexpr int kPatienceMs = 60000;
constexpr char kMask[] = {0x11, 0x22, 0x33, 0x44};

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::map<std::string, std::string> headersOf(const std::string& head)
{
    std::map<std::string, std::string> headers;
    std::size_t line = head.find("\r\n") + 2;
    while (line < head.size() && head[line] != '\r') {
        const std::size_t end = head.find("\r\n", line);
        const std::size_t colon = head.find(": ", line);
        headers[lower(head.substr(line, colon - line))] = head.substr(colon + 2, end - colon - 2);
        line = end + 2;
    }
    return headers;
}

} // namespace

int Frame::closeCode() const
{
    if (kind != 8 || payload.size() < 2) {
        return 0;
    }
    return static_cast<unsigned char>(payload[0]) * 256 + static_cast<unsigned char>(payload[1]);
}

std::string frameBytes(int kind, std::string_view payload, bool isLast)
{
    std::string bytes;
    bytes += static_cast<char>(kind | (isLast ? 0x80 : 0));
    if (payload.size() < 126) {
        bytes += static_cast<char>(0x80 | payload.size());
    } else {
        const bool isShort = payload.size() < 65536;
        bytes += static_cast<char>(0x80 | (isShort ? 126 : 127));
        for (int shift = isShort ? 8 : 56; shift >= 0; shift -= 8) {
            bytes += static_cast<char>(payload.size() >> shift);
        }
    }
    bytes.append(kMask, sizeof kMask);
    for (std::size_t i = 0; i < payload.size(); ++i) {
        bytes += static_cast<char>(payload[i] ^ kMask[i % sizeof kMask]);
    }
    return bytes;
}

TestClient::TestClient(unsigned short port, int receiveBytes)
    : port_(port), socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    if (receiveBytes > 0) {
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receiveBytes, sizeof receiveBytes);
    }
    const int waitMs = test::patienceMs(kPatienceMs);
    const timeval patience = {waitMs / 1000, waitMs % 1000 * 1000};
    ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::connect(socket_, reinterpret_cast<const sockaddr*>(&place), sizeof place);
}

TestClient::~TestClient()
{
    ::close(socket_);
}

bool TestClient::send(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

void TestClient::endSending()
{
    ::shutdown(socket_, SHUT_WR);
}

void TestClient::vanish()
{
    const linger atOnce = {1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    ::close(socket_);
    socket_ = -1;
}

bool TestClient::fill()
{
    char bytes[16384];
    const ssize_t count = ::recv(socket_, bytes, sizeof bytes, 0);
    if (count <= 0) {
        return false;
    }
    waiting_.append(bytes, static_cast<std::size_t>(count));
    return true;
}

std::string TestClient::take(std::size_t count)
{
    while (waiting_.size() < count) {
        if (!fill()) {
            return std::string();
        }
    }
    std::string taken = waiting_.substr(0, count);
    waiting_.erase(0, count);
    return taken;
}

Reply TestClient::reply(bool isToHead)
{
    std::size_t end = 0;
    while ((end = waiting_.find("\r\n\r\n")) == waiting_.npos) {
        if (!fill()) {
            return {};
        }
    }
    Reply reply;
    reply.head = take(end + 4);
    reply.status = std::stoi(reply.head.substr(reply.head.find(' ') + 1));
    reply.headers = headersOf(reply.head);
    const auto length = reply.headers.find("content-length");
    if (!isToHead && length != reply.headers.end()) {
        reply.body = take(std::stoul(length->second));
    }
    return reply;
}

Reply TestClient::get(const std::string& target, const std::string& more)
{
    send("GET " + target + " HTTP/1.1\r\nHost: " + host() + "\r\n" + more + "\r\n");
    return reply();
}

Reply TestClient::post(const std::string& target, const std::string& body, const std::string& more)
{
    send("POST " + target + " HTTP/1.1\r\nHost: " + host() +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + more + "\r\n" + body);
    return reply();
}

bool TestClient::isEnded()
{
    return isEndedInOrder() || errno == ECONNRESET;
}

bool TestClient::isEndedInOrder()
{
    char bytes[16384];
    for (;;) {
        const ssize_t count = ::recv(socket_, bytes, sizeof bytes, 0);
        if (count <= 0) {
            return count == 0;
        }
    }
}

int TestClient::goLive(const std::string& more)
{
    send("GET /api/v1/live HTTP/1.1\r\nHost: " + host() +
         "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
         "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n" +
         more + "\r\n");
    return reply().status;
}

void TestClient::sendFrame(int kind, std::string_view payload, bool isLast)
{
    send(frameBytes(kind, payload, isLast));
}

Frame TestClient::frame()
{
    const std::string head = take(2);
    if (head.empty()) {
        return {};
    }
    std::size_t size = static_cast<unsigned char>(head[1]);
    const int more = size == 126 ? 2 : size == 127 ? 8 : 0;
    if (more > 0) {
        size = 0;
        for (const char byte : take(static_cast<std::size_t>(more))) {
            size = size * 256 + static_cast<unsigned char>(byte);
        }
    }
    Frame frame;
    frame.kind = head[0] & 0x0f;
    frame.isLast = (head[0] & 0x80) != 0;
    frame.payload = take(size);
    return frame;
}

std::string TestClient::message()
{
    std::string text;
    for (int expected = 1;; expected = 0) {
        const Frame part = frame();
        if (part.kind != expected) {
            return std::string();
        }
        text += part.payload;
        if (part.isLast) {
            return text;
        }
    }
}

} // namespace tavmir::page
