// Replies on their way to one client: in order, held back, or late. Bounded: what waits here and
// in the socket is never more than a limit by more than one reply.
//
// Lives on the server's thread, as a child of the socket's owner.
#ifndef TAVMIR_CONTROLLER_OUTBOX_H
#define TAVMIR_CONTROLLER_OUTBOX_H

#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpSocket>

#include <deque>
#include <functional>
#include <string>

namespace tavmir::controller
{

class Outbox : public QObject
{
public:
    // `onSent` is called with each reply as it is handed to the socket. The socket must outlive
    // the outbox.
    using OnSent = std::function<void(const QByteArray& reply, const std::string& remark)>;
    Outbox(QTcpSocket& socket, OnSent onSent, QObject* parent);

    // `ms` milliseconds from now, 0 at once, but behind the replies that are held back already.
    //   remark  goes with the reply, for onSent
    void hold(const QByteArray& reply, int ms, const std::string& remark);

    // `ms` milliseconds from now, wherever other replies are then.
    void sendLate(const QByteArray& reply, int ms, const std::string& remark);

    // Waiting here or in the socket.
    qint64 unsentBytes() const { return waitingBytes_ + socket_.bytesToWrite(); }

private:
    struct Held {
        QByteArray reply;
        qint64 dueMs;
        std::string remark;
    };

    void write(const QByteArray& reply, const std::string& remark);
    void sendDue();

    QTcpSocket& socket_;
    OnSent onSent_;
    std::deque<Held> held_;
    qint64 waitingBytes_ = 0; // held back or late
    QElapsedTimer clock_;
    QTimer timer_; // for the first of held_
};

} // namespace tavmir::controller

#endif
