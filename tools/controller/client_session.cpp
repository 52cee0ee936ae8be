#include "client_session.h"

#include "frame_bytes.h"
#include "line_director.h"
#include "trace.h"

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
std::vector<std::string> remarksOn(const Simulation::Outcome& outcome)
{
    std::vector<std::string> remarks;
    if (outcome.fault != FaultKind::None) {
        remarks.emplace_back(faultRow(outcome.fault).name);
    }
    if (outcome.verdict.aboveRate) {
        remarks.emplace_back("above the rate");
    }
    if (outcome.verdict.unknownStation) {
        remarks.emplace_back("unknown station");
    }
    if (outcome.verdict.refusedAddress) {
        remarks.emplace_back("refused address");
    }
    return remarks;
}
} // namespace

ClientSession::ClientSession(QTcpSocket* socket, int number, const ServerSettings& settings,
                             Simulation& simulation, Events events, QObject* parent)
    : QObject(parent), socket_(socket), number_(number), settings_(settings),
      simulation_(simulation), events_(std::move(events)), decoder_(kRequestLengths),
      outbox_(new Outbox(
          *socket,
          [this](const QByteArray& reply, const std::string& remark) {
              capture_.queued(reply, remark);
              traceSent(reply);
          },
          this)),
      capture_(*socket, settings)
{
    socket_->setParent(this);
    socket_->setReadBufferSize(kBytesAtATime);
    socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(socket_, &QTcpSocket::readyRead, this, [this] { takeBytes(); });
    connect(socket_, &QTcpSocket::disconnected, this, [this] {
        captureRest();
        capture_.closedByClient();
        finish();
    });
    connect(socket_, &QTcpSocket::bytesWritten, this, [this](qint64 bytes) {
        simulation_.statistics().bytesSent += static_cast<std::uint64_t>(bytes);
        capture_.left(bytes);
    });
}

void ClientSession::start()
{
    if (settings_.director) {
        settings_.director->connected(*this);
    }
    if (finished_) {
        return;
    }
    if (socket_->bytesAvailable() > 0) {
        takeBytes();
    } else if (socket_->state() != QAbstractSocket::ConnectedState) {
        finish();
    }
}

void ClientSession::close()
{
    closeBecause(remark_);
}

void ClientSession::closeBecause(const std::string& why)
{
    if (finished_) {
        return;
    }
    captureRest();
    capture_.closed(why);
    closesItself_ = true;
    socket_->abort();
    finish();
}

void ClientSession::say(const QByteArray& bytes)
{
    if (!finished_) {
        send(bytes);
        socket_->flush();
    }
}

void ClientSession::takeBytes()
{
    if (finished_) {
        return;
    }
    const QByteArray bytes = socket_->readAll(); // kBytesAtATime at most
    simulation_.statistics().bytesReceived += static_cast<std::uint64_t>(bytes.size());
    if (settings_.director) {
        settings_.director->received(*this, bytes);
    }
    if (finished_) {
        return;
    }
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
    remark_.clear();
    if (capture_.isOn()) {
        capture(request, outcome);
    }
    if (settings_.trace) {
        trace(wire::TraceWay::toController,
              requestInWords(bytes, outcome.request, simulation_.names()), remarksOn(outcome));
    }
    if (settings_.director) {
        settings_.director->asked(*this, bytes, outcome);
        return;
    }
    if (!outcome.verdict.isAnswered) {
        return;
    }
    waitMs_ = millisecondsOf(outcome.verdict.waitUs);
    faultRow(outcome.fault).answer(*this, outcome.reply);
    remark_.clear();
}

// The request with what happens to it; the reply's remark is kept until it is sent.
void ClientSession::capture(const wire::FrameView& request, const Simulation::Outcome& outcome)
{
    std::vector<std::string> remarks = remarksOn(outcome);
    if (outcome.fault != FaultKind::None) {
        remarks.front() = "fault " + remarks.front();
        remark_ = remarks.front();
    }
    std::string words;
    for (const std::string& remark : remarks) {
        words += (words.empty() ? "" : ", ") + remark;
    }
    capture_.received(request.bytes, request.size, words);
    const int code = outcome.reply.size() > static_cast<int>(wire::kCountOffset) &&
                             (byteAt(outcome.reply, wire::kFunctionOffset) & wire::kExceptionBit)
                         ? byteAt(outcome.reply, wire::kCountOffset)
                         : -1;
    if (code >= 0) {
        remark_ += (remark_.empty() ? "" : ", ") +
                   ("exception " + wire::exceptionInWords(static_cast<std::uint8_t>(code)));
    }
}

// What came and is no whole request.
void ClientSession::captureRest()
{
    if (decoder_.hasPartialFrame()) {
        capture_.received(decoder_.rest(), decoder_.restSize(), "no whole request");
    }
}

void ClientSession::send(const QByteArray& reply)
{
    outbox_->hold(reply, waitMs_, remark_);
}

void ClientSession::sendDelayed(const QByteArray& reply)
{
    outbox_->hold(reply, settings_.delayMs + waitMs_, remark_);
}

void ClientSession::sendLate(const QByteArray& reply)
{
    outbox_->sendLate(reply, settings_.lateMs + waitMs_, remark_);
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
    closeBecause(why.toStdString());
}

void ClientSession::trace(wire::TraceWay way, const QString& words,
                          const std::vector<std::string>& remarks)
{
    wire::TraceLine line;
    line.at = settings_.now();
    line.who = "client " + std::to_string(number_);
    line.way = way;
    line.words = words.toStdString();
    line.remarks = remarks;
    settings_.trace(QString::fromStdString(wire::traceLine(line)));
}

void ClientSession::traceSent(const QByteArray& reply)
{
    if (settings_.trace) {
        trace(wire::TraceWay::fromController, replyInWords(reply, simulation_.names()), {});
    }
}

void ClientSession::finish()
{
    if (finished_) {
        return;
    }
    finished_ = true;
    if (settings_.director) {
        settings_.director->ended(*this, !closesItself_);
    }
    events_.finished(this);
}

} // namespace tavmir::controller
