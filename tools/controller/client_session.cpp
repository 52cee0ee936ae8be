#include "client_session.h"

#include "frame_bytes.h"
#include "trace.h"

#include "wire/time_words.h"

#include <QtCore/QStringList>
#include <QtNetwork/QHostAddress>

#include <algorithm>
#include <utility>

namespace tavmir::controller
{

namespace
{
// How much of a client's bytes is taken at a time; the rest waits in its connection, so that a
// client that floods the controller neither fills its memory nor keeps it from the others.
constexpr int kBytesAtATime = 16384;

// Rounded up: nothing goes out before its time.
int millisecondsOf(std::int64_t us)
{
    constexpr std::int64_t kMostMs = 3600000;
    return static_cast<int>(std::min(kMostMs, (us + 999) / 1000));
}

// Why a request is not simply carried out, for its trace line.
QString remarksOn(const Simulation::Outcome& outcome)
{
    QStringList remarks;
    if (outcome.fault != FaultKind::None) {
        remarks.append(faultRow(outcome.fault).name);
    }
    if (outcome.verdict.aboveRate) {
        remarks.append("above the rate");
    }
    if (outcome.verdict.unknownStation) {
        remarks.append("unknown station");
    }
    if (outcome.verdict.refusedAddress) {
        remarks.append("refused address");
    }
    return remarks.isEmpty() ? QString() : QString(" [%1]").arg(remarks.join(", "));
}
} // namespace

ClientSession::ClientSession(QTcpSocket* socket, int number, const ServerSettings& settings,
                             Simulation& simulation, Events events, QObject* parent)
    : QObject(parent), socket_(socket), number_(number), settings_(settings),
      simulation_(simulation), events_(std::move(events)), decoder_(kRequestLengths),
      outbox_(new Outbox(
          *socket, [this](const QByteArray& reply) { traceSent(reply); }, this))
{
    socket_->setParent(this);
    socket_->setReadBufferSize(kBytesAtATime);
    socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(socket_, &QTcpSocket::readyRead, this, [this] { takeBytes(); });
    connect(socket_, &QTcpSocket::disconnected, this, [this] { finish(); });
    connect(socket_, &QTcpSocket::bytesWritten, this, [this](qint64 bytes) {
        simulation_.statistics().bytesSent += static_cast<std::uint64_t>(bytes);
    });
}

void ClientSession::start()
{
    if (socket_->bytesAvailable() > 0) {
        takeBytes();
    } else if (socket_->state() != QAbstractSocket::ConnectedState) {
        finish();
    }
}

void ClientSession::close()
{
    socket_->abort();
    finish();
}

void ClientSession::takeBytes()
{
    if (finished_) {
        return;
    }
    const QByteArray bytes = socket_->readAll(); // kBytesAtATime at most
    simulation_.statistics().bytesReceived += static_cast<std::uint64_t>(bytes.size());
    takeFrames(bytes);
    if (finished_) {
        return;
    }
    if (!decoder_.reason().empty()) {
        ++simulation_.statistics().brokenStreams;
        closeForItsFault(QString::fromStdString(decoder_.reason()));
        return;
    }
    socket_->flush();
}

void ClientSession::takeFrames(const QByteArray& bytes)
{
    using State = wire::FrameDecoder::State;
    State state = State::needMore;
    for (std::size_t taken = 0; taken < sizeOf(bytes) && state != State::broken;) {
        taken += decoder_.append(bytesOf(bytes) + taken, sizeOf(bytes) - taken);
        wire::FrameView frame;
        while ((state = decoder_.next(frame)) == State::frame) {
            answer(frame);
            closeIfTooSlow();
            if (finished_) {
                return;
            }
        }
    }
}

void ClientSession::answer(const wire::FrameView& request)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(request.bytes),
                                                     static_cast<int>(request.size));
    const Simulation::Outcome outcome = simulation_.take(bytes, settings_.nowUs());
    if (settings_.trace) {
        trace(">",
              requestInWords(bytes, outcome.request, simulation_.names()) + remarksOn(outcome));
    }
    if (!outcome.verdict.isAnswered) {
        return;
    }
    waitMs_ = millisecondsOf(outcome.verdict.waitUs);
    faultRow(outcome.fault).answer(*this, outcome.reply);
}

void ClientSession::send(const QByteArray& reply)
{
    outbox_->hold(reply, waitMs_);
}

void ClientSession::sendDelayed(const QByteArray& reply)
{
    outbox_->hold(reply, settings_.delayMs + waitMs_);
}

void ClientSession::sendLate(const QByteArray& reply)
{
    outbox_->sendLate(reply, settings_.lateMs + waitMs_);
}

void ClientSession::closeAllAndRefuse()
{
    events_.refuse();
}

SeededRandom& ClientSession::random()
{
    return simulation_.faults().detail();
}

void ClientSession::closeIfTooSlow()
{
    if (finished_ || outbox_->unsentBytes() <= settings_.mostUnsentBytes) {
        return;
    }
    socket_->flush(); // what the connection still takes is not the client's delay
    if (finished_ || outbox_->unsentBytes() <= settings_.mostUnsentBytes) {
        return;
    }
    ++simulation_.statistics().clientsTooSlow;
    closeForItsFault(
        QString("it does not read its replies, %1 bytes are waiting").arg(outbox_->unsentBytes()));
}

void ClientSession::closeForItsFault(const QString& why)
{
    settings_.log(QString("client %1 (%2 port %3) closed: %4")
                      .arg(number_)
                      .arg(socket_->peerAddress().toString())
                      .arg(socket_->peerPort())
                      .arg(why));
    close();
}

void ClientSession::trace(const char* way, const QString& words)
{
    settings_.trace(QString("%1 client %2 %3 ")
                        .arg(QString::fromStdString(wire::utcInWords(settings_.now())))
                        .arg(number_)
                        .arg(way) +
                    words);
}

void ClientSession::traceSent(const QByteArray& reply)
{
    if (settings_.trace) {
        trace("<", replyInWords(reply, simulation_.names()));
    }
}

void ClientSession::finish()
{
    if (finished_) {
        return;
    }
    finished_ = true;
    events_.finished(this);
}

} // namespace tavmir::controller
