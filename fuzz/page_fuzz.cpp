// What a client sends the page's server, over a pair of sockets that lead nowhere else: a head and
// a body of HTTP, frames of a WebSocket, a greeting, an address. The server ends it in bounded
// steps, answers in HTTP or not at all, and tells nothing to who does not send the token.
#include "page/connections.h"
#include "page/http_session.h"
#include "page/query.h"
#include "page/write_desk.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace
{

using namespace tavmir::page;

constexpr char kToken[] = "0123456789abcdef0123456789abcdef";
constexpr int kMostSteps = 10000;

void require(bool isSo)
{
    if (!isSo) {
        std::abort();
    }
}

class FuzzContent : public PageContent
{
public:
    Answer get(const std::string& what, const Query& query) override
    {
        ++questions;
        Answer answer;
        answer.body = what;
        for (const auto& item : query.items) {
            answer.body += item.first + item.second;
        }
        return answer;
    }
    void post(const std::string&, const std::string& body, Done done) override
    {
        ++questions;
        require(body.size() <= PageLimits().bodyBytes);
        done({});
    }
    void look() override { ++looks_; }
    std::string epoch() const override { return "e"; }
    std::uint64_t sequence() const override { return looks_; }
    std::string snapshot() override { return "snapshot"; }
    std::string changes(std::uint64_t, std::uint64_t) override { return "changes"; }

    int questions = 0;

private:
    std::uint64_t looks_ = 0;
};

const Assets kAssets = {{"/", "text/html", "page"}, {"/app/main.js", "text/javascript", "main"}};

std::string readAll(int socket)
{
    std::string all;
    char bytes[4096];
    ssize_t count = 0;
    while ((count = ::recv(socket, bytes, sizeof bytes, MSG_DONTWAIT)) > 0) {
        all.append(bytes, static_cast<std::size_t>(count));
    }
    return all;
}

// All that the server answers to these bytes and a client that then sends no more.
std::string answersTo(std::string_view bytes, FuzzContent& content)
{
    int ends[2];
    require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
    std::string answers;
    {
        boost::asio::io_context context;
        PageLimits limits;
        limits.lookEvery = PageLimits::Ms(0);
        limits.closeTime = PageLimits::Ms(0);
        Connections connections(
            context, {content, kAssets, AccessRules("127.0.0.1", false, 8080, kToken), limits});
        Socket socket(context);
        socket.assign(boost::asio::ip::tcp::v4(), ends[0]);
        connections.take(std::move(socket));
        require(::send(ends[1], bytes.data(), bytes.size(), MSG_DONTWAIT) ==
                static_cast<ssize_t>(bytes.size()));
        ::shutdown(ends[1], SHUT_WR);
        for (int step = 0; !connections.isEmpty(); ++step) {
            require(step < kMostSteps);
            context.restart();
            if (context.poll() == 0) {
                connections.tick();
            }
            answers += readAll(ends[1]);
        }
        context.restart();
        context.poll();
    }
    answers += readAll(ends[1]);
    ::close(ends[1]);
    return answers;
}

void talkHttp(std::string_view bytes)
{
    FuzzContent content;
    const std::string answers = answersTo(bytes, content);
    require(answers.empty() || answers.rfind("HTTP/1.1 ", 0) == 0);
    require(content.questions == 0 || bytes.find(kToken) != bytes.npos);
}

void talkLive(std::string_view frames)
{
    FuzzContent content;
    const std::string head = "GET /api/v1/live HTTP/1.1\r\nHost: 127.0.0.1:8080\r\n"
                             "Upgrade: websocket\r\nConnection: Upgrade\r\n"
                             "Sec-WebSocket-Version: 13\r\n"
                             "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n";
    const std::string answers = answersTo(head + std::string(frames), content);
    require(answers.rfind("HTTP/1.1 101", 0) == 0 || answers.rfind("HTTP/1.1 400", 0) == 0);
    require(content.questions == 0);
}

void readWrite(const std::string& body)
{
    const tavmir::host::ParsedWrite parsed = tavmir::host::parseWrite(body);
    require(!parsed.problem.contains('\n'));
}

} // namespace

// The first byte says what the others are.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    Greeting greeting;
    Target target;
    switch (data[0]) {
    case 'l':
        talkLive(rest);
        break;
    case 'g':
        require(!readGreeting(rest, greeting) || !greeting.token.empty());
        break;
    case 't':
        require(!readTarget(rest, target) || target.path.front() == '/');
        break;
    case 'w':
        readWrite(std::string(rest));
        break;
    default:
        talkHttp(rest);
        break;
    }
    return 0;
}
