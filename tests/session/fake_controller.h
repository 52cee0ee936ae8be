// A controller for tests of the session: one number per station, class and address, behind
// TestServer.
#ifndef TAVMIR_TESTS_SESSION_FAKE_CONTROLLER_H
#define TAVMIR_TESTS_SESSION_FAKE_CONTROLLER_H

#include "link/test_server.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <tuple>

namespace tavmir::host
{

class FakeController
{
public:
    // What becomes of a request.
    enum class Mood {
        answers,
        silent,         // not carried out, no reply
        refuses,        // not carried out, an exception reply
        isBusy,         // not carried out, an exception reply that says so
        tooLong,        // not carried out, a reply of a wrong length
        closes,         // not carried out, the connection is closed
        loses,          // carried out, no reply
        losesAndCloses, // carried out, the connection is closed instead of a reply
        losesAndLeaves, // the same, and nobody listens until plug() is called
        answersTwice,   // answered, and once more
        addsAByte,      // carried out, and one byte too many behind the reply
        straysFirst     // answered, after a reply with other addresses and one with another count
    };

    // Asked on the server's thread what becomes of a request; it may call the controller.
    //   number  of the request among those with its function code, from 1
    using Judge = std::function<Mood(const QByteArray& request, int number)>;

    static constexpr int kUsualStation = 1;
    static constexpr int kExceptionCode = 3;
    static constexpr int kBusyCode = 6;

    FakeController() { start(0); }

    // The number that the class of the read function 'd', 'f' or 'l' has at the address.
    void setAt(int station, char readFunction, quint32 address, quint32 number);
    quint32 getAt(int station, char readFunction, quint32 address);
    void set(char readFunction, quint32 address, quint32 number)
    {
        setAt(kUsualStation, readFunction, address, number);
    }
    quint32 get(char readFunction, quint32 address)
    {
        return getAt(kUsualStation, readFunction, address);
    }

    // Requests of the class of the read function that name the address are refused with this
    // exception code from now on; 0: not any more.
    void lack(char readFunction, quint32 address, int code = 2);

    // How long each reply takes.
    void takeMs(int ms) { replyMs_ = ms; }

    // What becomes of requests with one of these function codes from now on.
    void treat(const QByteArray& functions, Mood mood);
    void judge(const QByteArray& functions, const Judge& judge);

    // Requests with one of these function codes, oldest first.
    std::vector<QByteArray> requests(const QByteArray& functions);
    // Those of them that name the address.
    std::vector<QByteArray> requestsOf(const QByteArray& functions, quint32 address);
    size_t count(const QByteArray& functions) { return requests(functions).size(); }

    // Off: connections are closed and the port is refused; on again: the same port.
    void unplug() { server_.reset(); }
    void plug() { start(port_); }

    int port() const { return port_; }
    int connections() const { return server_->connections(); }

private:
    void start(int port);
    void answer(TestServer::Client& client, const QByteArray& request);
    Mood moodFor(const QByteArray& request);
    int lackCode(const QByteArray& request);
    QByteArray carryOut(const QByteArray& request);
    QByteArray strayReplies(const QByteArray& request);
    QByteArray entriesOfRead(const QByteArray& request);
    void store(const QByteArray& request);

    std::mutex mutex_;
    std::map<std::tuple<int, char, quint32>, quint32> numbers_;
    std::map<char, Judge> judges_;
    std::map<char, int> asked_;
    std::vector<QByteArray> requests_;
    std::map<std::pair<char, quint32>, int> lacks_;
    std::atomic<int> replyMs_{0};
    int port_ = 0;
    std::unique_ptr<TestServer> server_;
};

// The requests before number `answered` get `before`; it and those behind it are answered.
FakeController::Judge untilNumber(int answered, FakeController::Mood before);

} // namespace tavmir::host

#endif
