// Lets the judge at the line: what a client sends becomes the judge's events, what the judge plays
// goes out. One host is judged, whichever connections it opens.
//
//   constructed → begin(server) → finished is called once → verdicts
//
// Everything happens on the server's thread.
#ifndef TAVMIR_CONTROLLER_HOST_CHECK_H
#define TAVMIR_CONTROLLER_HOST_CHECK_H

#include "line_director.h"

#include "judge/course.h"
#include "judge/judge.h"
#include "judge/report.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <functional>
#include <set>

namespace tavmir::controller
{

class Server;

class HostCheck final : public LineDirector
{
public:
    // say       told what is played, a line at a time
    // finished  nothing more is played
    HostCheck(const judge::Script& script, std::function<void(const QString&)> say,
              std::function<void()> finished);
    HostCheck(const HostCheck&) = delete;
    HostCheck& operator=(const HostCheck&) = delete;

    // The server's settings name this as the director; it must not outlive it.
    void begin(Server& server);
    // The server goes: connections that end now are nobody's mistake.
    void end();

    const judge::Judge& judge() const { return judge_; }
    judge::Played played() const;

    void connected(ClientSession& session) override;
    void received(ClientSession& session, const QByteArray& bytes) override;
    void asked(ClientSession& session, const QByteArray& request,
               const Simulation::Outcome& outcome) override;
    void ended(ClientSession& session, bool byClient) override;

private:
    judge::Event event(judge::Event::Kind kind) const;
    void take(const judge::Event& event);
    void follow(const judge::Event& made);
    void setDoor();
    void tick();
    void sendNow(ClientSession& session, const judge::Say& say);
    void tell(const judge::Event& made);

    const judge::Script& script_;
    std::function<void(const QString&)> say_;
    std::function<void()> finished_;
    judge::Judge judge_;
    judge::Course course_;
    Server* server_ = nullptr;
    std::set<const ClientSession*> open_;
    judge::Course::Door door_ = judge::Course::Door::open;
    QElapsedTimer clock_;
    QTimer tick_;
    judge::Us lastTick_ = 0;
    judge::Us tickBefore_ = 0; // whatever comes now had not come when it began
    qint64 phaseSinceMs_ = 0;
};

} // namespace tavmir::controller

#endif
