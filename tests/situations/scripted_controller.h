// A controller whose every move is the test's: a loopback TCP server that runs a script for each
// connection, on a thread of its own, one connection after the other.
#ifndef TAVMIR_TESTS_SITUATIONS_SCRIPTED_CONTROLLER_H
#define TAVMIR_TESTS_SITUATIONS_SCRIPTED_CONTROLLER_H

#include <QtCore/QByteArray>

#include <atomic>
#include <functional>
#include <thread>

namespace tavmir::situations
{

// One connected host, as the script sees it.
class Peer
{
public:
    Peer(int socket, const std::atomic<bool>& stopping) : socket_(socket), stopping_(stopping) {}

    // The next request frame; empty when the host left or the test ends.
    QByteArray request();
    void send(const QByteArray& bytes);
    void sendByteByByte(const QByteArray& bytes);

private:
    bool receive(QByteArray& bytes, int count);

    int socket_;
    const std::atomic<bool>& stopping_;
};

class ScriptedController
{
public:
    using Script = std::function<void(Peer&)>;

    // Has a free port of its own from now on, but listens only after start.
    ScriptedController();
    ~ScriptedController();

    ScriptedController(const ScriptedController&) = delete;
    ScriptedController& operator=(const ScriptedController&) = delete;

    int port() const { return port_; }

    // Listens; each connection is closed when `script` returns.
    void start(const Script& script);

    // Closes everything; the port stays this controller's and start may follow.
    void stop();

private:
    void bindTo(int port);
    void run(const Script& script);

    int listener_ = -1;
    int port_ = 0;
    std::atomic<bool> stopping_{false};
    std::thread thread_;
};

// The right reply to a read request: each element has the value `value`.
QByteArray readReply(const QByteArray& request, quint32 value);

// The right reply to a write request.
QByteArray writeReply(const QByteArray& request);

// Whichever of the two the request asks for.
QByteArray rightReply(const QByteArray& request, quint32 value);

QByteArray exceptionReply(const QByteArray& request, int code);

// The same frame with another transaction id.
QByteArray withTransaction(QByteArray frame, int transaction);

int functionOf(const QByteArray& frame);

} // namespace tavmir::situations

#endif
