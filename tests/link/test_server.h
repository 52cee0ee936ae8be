// A TCP server for tests of the link: it takes requests apart by their length field and lets a
// function of the test answer each.
#ifndef TAVMIR_TESTS_LINK_TEST_SERVER_H
#define TAVMIR_TESTS_LINK_TEST_SERVER_H

#include "link/wake_event.h"

#include <QtCore/QByteArray>

#include <poll.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace tavmir::host
{

class TestServer
{
public:
    // One client; valid inside the answering function only.
    class Client
    {
    public:
        explicit Client(int descriptor) : descriptor_(descriptor) {}
        void send(const QByteArray& bytes);
        // One segment for each byte.
        void sendSlowly(const QByteArray& bytes);
        void close() { closing_ = true; }
        // As when the power goes: every connection is closed, and nobody listens any more.
        void leave() { leaving_ = true; }

    private:
        friend class TestServer;
        int descriptor_;
        QByteArray received_;
        bool closing_ = false;
        bool leaving_ = false;
    };

    // number  of the request, from 1 over all connections
    using Answer = std::function<void(Client&, const QByteArray& request, int number)>;

    // Listens on a free port of the loopback, or on the given one.
    explicit TestServer(Answer answer, int port = 0);
    ~TestServer();

    int port() const { return port_; }
    int connections() const { return connections_; }
    int requests() const { return requests_; }

private:
    void loop();
    void acceptClient();
    void serveClients(const std::vector<pollfd>& waits);
    // False when the connection is over.
    bool serve(Client& client);
    void closeAll();

    Answer answer_;
    int listener_;
    int port_ = 0;
    std::atomic<int> connections_{0};
    std::atomic<int> requests_{0};
    std::vector<Client> clients_;
    WakeEvent stop_;
    std::thread thread_;
};

// The request's header fields.
int stationOf(const QByteArray& request);
int countOf(const QByteArray& request);
// The addresses that it names, in its order.
std::vector<quint32> addressesOf(const QByteArray& request);

// The request's header with `entries` behind it and a length that is right.
QByteArray replyTo(const QByteArray& request, const QByteArray& entries);
// A good reply to a read of words or to a write: word i is `firstValue` + i.
QByteArray goodReply(const QByteArray& request, int firstValue = 0);
QByteArray exceptionTo(const QByteArray& request, int code);

// A read of `count` words from address 16 on.
QByteArray wordRequest(int transactionId, int count = 1);

// A port on which nobody listens.
int closedPort();

} // namespace tavmir::host

#endif
