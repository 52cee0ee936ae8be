// One connected client: its bytes become requests, its replies go out with their faults.
//
//   constructed → start → takes requests → finished (once): the peer left, its stream was broken,
//   it was too slow, a fault closed it, or close was called. Whoever made it deletes it then,
//   later.
//
// Lives on the server's thread.
#ifndef TAVMIR_CONTROLLER_CLIENT_SESSION_H
#define TAVMIR_CONTROLLER_CLIENT_SESSION_H

#include "client_capture.h"
#include "frame_limits.h"
#include "outbox.h"
#include "server_settings.h"
#include "simulation.h"

#include "wire/frame_decoder.h"
#include "wire/trace_line.h"

#include <QtCore/QObject>
#include <QtNetwork/QTcpSocket>

#include <functional>

namespace tavmir::controller
{

class ClientSession : public QObject, private FaultyLine
{
public:
    struct Events {
        std::function<void(ClientSession*)> finished;
        std::function<void()> refuse; // the fault that closes the whole controller for a while
    };

    // Takes the socket over. `number` is the client's in log and trace lines. Settings and
    // simulation must outlive it.
    ClientSession(QTcpSocket* socket, int number, const ServerSettings& settings,
                  Simulation& simulation, Events events, QObject* parent);

    // Takes what came already and waits for more. May finish the session.
    void start();

    // Drops the connection with whatever waits in it.
    void close() override;

    // For a director: sends bytes at once, whatever they are.
    void say(const QByteArray& bytes);
    int number() const { return number_; }

private:
    void send(const QByteArray& reply) override;
    void sendDelayed(const QByteArray& reply) override;
    void sendLate(const QByteArray& reply) override;
    void closeAllAndRefuse() override;
    SeededRandom& random() override;

    void takeBytes();
    void takeFrames(const QByteArray& bytes);
    void answer(const wire::FrameView& request);
    void capture(const wire::FrameView& request, const Simulation::Outcome& outcome);
    void captureRest();
    void closeBecause(const std::string& why);
    void closeForItsFault(const QString& why);
    void closeIfTooSlow();
    void trace(wire::TraceWay way, const QString& words, const std::vector<std::string>& remarks);
    void traceSent(const QByteArray& reply);
    void finish();

    QTcpSocket* socket_;
    int number_;
    const ServerSettings& settings_;
    Simulation& simulation_;
    Events events_;
    wire::FrameDecoder decoder_;
    Outbox* outbox_;
    ClientCapture capture_;
    std::string remark_; // on the reply that is under way, for the capture
    int waitMs_ = 0;     // how long the reply that is under way is held back for the rate
    bool finished_ = false;
    bool closesItself_ = false;
};

} // namespace tavmir::controller

#endif
