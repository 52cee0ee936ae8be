// The course sees an event first: a request that it makes the first one of a situation is judged
// as one of it.
#include "host_check.h"

#include "client_session.h"
#include "frame_bytes.h"
#include "server.h"

#include <utility>

namespace tavmir::controller
{

namespace
{

constexpr int kTickMs = 10;

judge::Bytes bytesFrom(const QByteArray& bytes)
{
    return judge::Bytes(bytesOf(bytes), bytesOf(bytes) + bytes.size());
}

QByteArray arrayFrom(const judge::Bytes& bytes)
{
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

} // namespace

HostCheck::HostCheck(const judge::Script& script, std::function<void(const QString&)> say,
                     std::function<void()> finished)
    : script_(script), say_(std::move(say)), finished_(std::move(finished)), judge_(script.host),
      course_(script)
{
    clock_.start();
    tick_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&tick_, &QTimer::timeout, [this] { tick(); });
}

void HostCheck::begin(Server& server)
{
    server_ = &server;
    say_("waiting for a host");
    tick_.start(kTickMs);
}

void HostCheck::tick()
{
    const judge::Event now = event(judge::Event::Kind::tick);
    tickBefore_ = lastTick_;
    lastTick_ = now.at;
    take(now);
}

void HostCheck::end()
{
    server_ = nullptr;
    tick_.stop();
}

judge::Played HostCheck::played() const
{
    judge::Played played;
    played.begun = course_.begun();
    played.situations = script_.situations.size();
    played.hostCame = course_.hostCame();
    played.isComplete = course_.isComplete();
    return played;
}

judge::Event HostCheck::event(judge::Event::Kind kind) const
{
    judge::Event event;
    event.kind = kind;
    event.at = clock_.nsecsElapsed() / 1000;
    return event;
}

void HostCheck::take(const judge::Event& event)
{
    if (server_ == nullptr) {
        return;
    }
    for (const judge::Event& made : course_.take(event)) {
        follow(made);
    }
    const bool isOfOpen = event.kind != judge::Event::Kind::received || !open_.empty();
    if (server_ != nullptr && isOfOpen) {
        judge_.take(event);
    }
}

void HostCheck::follow(const judge::Event& made)
{
    judge_.take(made);
    tell(made);
    setDoor();
    if (made.kind == judge::Event::Kind::over) {
        end();
        finished_();
    }
}

void HostCheck::setDoor()
{
    const judge::Course::Door door = course_.door();
    if (door == door_) {
        return;
    }
    door_ = door;
    switch (door) {
    case judge::Course::Door::open:
        server_->admit();
        return;
    case judge::Course::Door::shut:
        server_->refuse();
        return;
    case judge::Course::Door::turnsAway:
        server_->admit();
        server_->closeAll();
        return;
    }
}

void HostCheck::tell(const judge::Event& made)
{
    const double seconds = static_cast<double>(clock_.elapsed() - phaseSinceMs_) / 1000;
    const QString text = QString::fromStdString(made.situation.text);
    switch (made.kind) {
    case judge::Event::Kind::begins:
        say_(QString("[%1/%2] %3").arg(course_.begun()).arg(script_.situations.size()).arg(text));
        break;
    case judge::Event::Kind::ends:
        say_(
            QString("    over after %1 s; waiting until the host goes on").arg(seconds, 0, 'f', 1));
        break;
    case judge::Event::Kind::recovered:
        say_(QString("    it went on after %1 s").arg(seconds, 0, 'f', 1));
        break;
    case judge::Event::Kind::notRecovered:
        say_(QString("    it did not go on within %1 s; the rest is not played")
                 .arg(seconds, 0, 'f', 1));
        break;
    default:
        return;
    }
    phaseSinceMs_ = clock_.elapsed();
}

void HostCheck::connected(ClientSession& session)
{
    open_.insert(&session);
    judge::Event came = event(judge::Event::Kind::connected);
    came.client = session.number();
    take(came);
    if (door_ == judge::Course::Door::turnsAway) {
        session.close();
    }
}

void HostCheck::received(ClientSession& session, const QByteArray& bytes)
{
    judge::Event came = event(judge::Event::Kind::received);
    came.client = session.number();
    came.bytes = bytesFrom(bytes);
    came.busySince = tickBefore_;
    take(came);
}

void HostCheck::asked(ClientSession& session, const QByteArray& request,
                      const Simulation::Outcome& outcome)
{
    const judge::Act act =
        course_.stage().asked(session.number(), bytesFrom(request), bytesFrom(outcome.reply));
    if (act.close) {
        session.close();
        return;
    }
    for (const judge::Say& say : act.says) {
        if (say.after == 0) {
            sendNow(session, say);
            continue;
        }
        const int ms = static_cast<int>((say.after + 999) / 1000);
        QTimer::singleShot(ms, Qt::PreciseTimer, &session,
                           [this, &session, say] { sendNow(session, say); });
    }
}

void HostCheck::sendNow(ClientSession& session, const judge::Say& say)
{
    if (open_.count(&session) == 0) {
        return;
    }
    session.say(arrayFrom(say.bytes));
    judge::Event sent = event(judge::Event::Kind::sent);
    sent.client = session.number();
    sent.bytes = say.bytes;
    sent.reply = say.reply;
    take(sent);
}

void HostCheck::ended(ClientSession& session, bool byClient)
{
    open_.erase(&session);
    course_.stage().closed(session.number());
    judge::Event gone =
        event(byClient ? judge::Event::Kind::closedByHost : judge::Event::Kind::closedByController);
    gone.client = session.number();
    take(gone);
}

} // namespace tavmir::controller
