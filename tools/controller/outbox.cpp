#include "outbox.h"

#include <algorithm>
#include <utility>

namespace tavmir::controller
{

Outbox::Outbox(QTcpSocket& socket, OnSent onSent, QObject* parent)
    : QObject(parent), socket_(socket), onSent_(std::move(onSent))
{
    clock_.start();
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, [this] { sendDue(); });
}

void Outbox::hold(const QByteArray& reply, int ms, const std::string& remark)
{
    if (held_.empty() && ms <= 0) {
        write(reply, remark);
        return;
    }
    waitingBytes_ += reply.size();
    held_.push_back({reply, clock_.elapsed() + ms, remark});
    if (held_.size() == 1) {
        timer_.start(ms);
    }
}

void Outbox::sendLate(const QByteArray& reply, int ms, const std::string& remark)
{
    waitingBytes_ += reply.size();
    QTimer::singleShot(ms, Qt::PreciseTimer, this, [this, reply, remark] {
        waitingBytes_ -= reply.size();
        write(reply, remark);
        socket_.flush();
    });
}

void Outbox::sendDue()
{
    while (!held_.empty() && held_.front().dueMs <= clock_.elapsed()) {
        const Held due = held_.front();
        held_.pop_front();
        waitingBytes_ -= due.reply.size();
        write(due.reply, due.remark);
    }
    socket_.flush();
    if (!held_.empty()) {
        timer_.start(static_cast<int>(std::max<qint64>(1, held_.front().dueMs - clock_.elapsed())));
    }
}

void Outbox::write(const QByteArray& reply, const std::string& remark)
{
    if (socket_.state() != QAbstractSocket::ConnectedState) {
        return;
    }
    socket_.write(reply);
    onSent_(reply, remark);
}

} // namespace tavmir::controller
