// A server and its clients in one thread: the tests turn the event loop themselves.
#ifndef TAVMIR_TESTS_CONTROLLER_TEST_CLIENT_H
#define TAVMIR_TESTS_CONTROLLER_TEST_CLIENT_H

#include <QtCore/QByteArray>
#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QTimer>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QTcpSocket>

#include <functional>

namespace tavmir::test
{

// The application object that event loops and timers need; the same one at every call.
inline void haveApplication()
{
    static int argumentCount = 1;
    static char name[] = "controller_tests";
    static char* arguments[] = {name, nullptr};
    static const QCoreApplication application(argumentCount, arguments);
}

// Lets sockets and timers work until the condition is true; false after a generous deadline.
inline bool turnUntil(const std::function<bool()>& condition)
{
    haveApplication();
    QTimer wake; // a condition may also come true without an event
    wake.start(10);
    const QDeadlineTimer deadline(30000);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

class TestClient
{
public:
    TestClient() { haveApplication(); }

    // False: refused.
    bool connectTo(quint16 port)
    {
        socket_.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
        return turnUntil([this] {
                   return socket_.state() == QAbstractSocket::ConnectedState ||
                          socket_.state() == QAbstractSocket::UnconnectedState;
               }) &&
               isConnected();
    }

    void send(const QByteArray& bytes)
    {
        socket_.write(bytes);
        socket_.flush();
    }

    // The next `size` bytes; what came when the connection ended or the deadline passed before.
    QByteArray receive(int size)
    {
        turnUntil([&] { return socket_.bytesAvailable() >= size || !isConnected(); });
        return socket_.read(size);
    }

    QByteArray exchange(const QByteArray& request, int replySize)
    {
        send(request);
        return receive(replySize);
    }

    bool isConnected() const { return socket_.state() == QAbstractSocket::ConnectedState; }
    bool seesTheEnd()
    {
        return turnUntil([this] { return !isConnected(); });
    }
    qint64 waiting() const { return socket_.bytesAvailable(); }
    QTcpSocket& socket() { return socket_; }

private:
    QTcpSocket socket_;
};

} // namespace tavmir::test

#endif
