// A client of the page's server on a plain socket, which can do everything wrong. Blocks; what does
// not come within a generous limit is an empty answer.
#ifndef TAVMIR_TESTS_PAGE_TEST_CLIENT_H
#define TAVMIR_TESTS_PAGE_TEST_CLIENT_H

#include <map>
#include <string>
#include <string_view>

namespace tavmir::page
{

struct Reply {
    int status = 0; // 0: none came
    std::string head;
    std::map<std::string, std::string> headers; // names in lower case
    std::string body;
};

struct Frame {
    int kind = -1; // 0 goes on, 1 text, 2 binary, 8 close, 9 ping, 10 pong; -1: none came
    bool isLast = true;
    std::string payload;

    int closeCode() const;
};

// A frame as a client sends it, masked.
std::string frameBytes(int kind, std::string_view payload, bool isLast = true);

class TestClient
{
public:
    //   receiveBytes  of the system's buffer; 0: as usual
    explicit TestClient(unsigned short port, int receiveBytes = 0);
    ~TestClient();
    TestClient(const TestClient&) = delete;
    TestClient& operator=(const TestClient&) = delete;

    // False: not all of it could be sent.
    bool send(std::string_view bytes);
    // Nothing more comes from here.
    void endSending();
    // Ends without a farewell: the other side gets a reset.
    void vanish();

    // The next answer; one to HEAD has no body.
    Reply reply(bool isToHead = false);
    // Sends a request for "/…" with Host, and `more` header lines, each with its line's end.
    Reply get(const std::string& target, const std::string& more = "");
    Reply post(const std::string& target, const std::string& body, const std::string& more = "");
    // The other side has ended the connection, whatever it sent before.
    bool isEnded();
    // The same, but not by a reset, which may take with it what was not read yet.
    bool isEndedInOrder();

    // Asks for the live connection; the status of the answer.
    int goLive(const std::string& more = "");
    void sendFrame(int kind, std::string_view payload, bool isLast = true);
    Frame frame();
    // The next text in one piece; answers no ping. Empty: something else came.
    std::string message();

    std::string host() const { return "127.0.0.1:" + std::to_string(port_); }
    int descriptor() const { return socket_; }

private:
    bool fill();
    std::string take(std::size_t count);

    unsigned short port_;
    int socket_;
    std::string waiting_; // read and not taken
};

} // namespace tavmir::page

#endif
