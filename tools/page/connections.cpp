// Keeps the list of sessions. Whoever goes through it goes through a copy: a session may remove
// itself, or another, meanwhile.
#include "connections.h"

#include "http_session.h"

#include <algorithm>

namespace tavmir::page
{

namespace
{

constexpr std::size_t kMostTurnedAway = 8; // at a time; more are closed without a word

void removeFrom(std::vector<std::shared_ptr<Session>>& list, const Session& session)
{
    list.erase(std::remove_if(list.begin(), list.end(),
                              [&](const auto& other) { return other.get() == &session; }),
               list.end());
}

void prepare(Socket& socket, const PageLimits& limits)
{
    boost::system::error_code ignored;
    socket.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
    // What lies in the system's buffer is old when a slow client comes to read it.
    socket.set_option(boost::asio::socket_base::send_buffer_size(limits.sendBufferBytes), ignored);
}

} // namespace

Connections::Connections(boost::asio::io_context& context, Service service)
    : service_(std::move(service)), messages_(service_.content),
      returnPath_(std::make_shared<ReturnPath>(context))
{
}

Connections::~Connections()
{
    returnPath_->close();
}

void Connections::take(Socket socket)
{
    prepare(socket, limits());
    const bool hasRoom = static_cast<int>(sessions_.size()) < limits().clients || makeRoom();
    List& list = hasRoom ? sessions_ : turnedAway_;
    if (!hasRoom && list.size() >= kMostTurnedAway) {
        return; // closes it
    }
    const auto session = std::make_shared<HttpSession>(*this, std::move(socket));
    list.push_back(session);
    count_ = static_cast<int>(sessions_.size());
    if (hasRoom) {
        session->start();
    } else {
        session->turnAway();
    }
}

bool Connections::makeRoom()
{
    for (const auto& session : sessions_) {
        if (session->isIdle()) {
            const auto idle = session;
            idle->drop();
            return true;
        }
    }
    return false;
}

void Connections::replace(const Session& old, std::shared_ptr<Session> fresh)
{
    for (auto& session : sessions_) {
        if (session.get() == &old) {
            session = std::move(fresh);
            return;
        }
    }
}

void Connections::remove(const Session& session)
{
    removeFrom(sessions_, session);
    removeFrom(turnedAway_, session);
    count_ = static_cast<int>(sessions_.size());
}

bool Connections::isAnybodyListening() const
{
    return std::any_of(sessions_.begin(), sessions_.end(),
                       [](const auto& session) { return session->isListening(); });
}

void Connections::look()
{
    lastLook_ = Clock::now();
    messages_.look();
}

void Connections::lookIfOld()
{
    if (Clock::now() - lastLook_ >= limits().lookEvery) {
        look();
    }
}

void Connections::tick()
{
    const Clock::time_point now = Clock::now();
    if (isAnybodyListening() || now - lastLook_ >= limits().lookUnheard) {
        look();
    }
    for (const List& list : {List(sessions_), List(turnedAway_)}) {
        for (const auto& session : list) {
            session->tick(now);
        }
    }
}

void Connections::goAway()
{
    returnPath_->close();
    for (const auto& session : List(sessions_)) {
        session->goAway();
    }
    for (const auto& session : List(turnedAway_)) {
        session->drop();
    }
}

void Connections::dropAll()
{
    for (const List& list : {List(sessions_), List(turnedAway_)}) {
        for (const auto& session : list) {
            session->drop();
        }
    }
}

} // namespace tavmir::page
