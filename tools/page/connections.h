// All clients of the server: how many there may be, what time does to them, and what they share.
// The server's thread, but for count().
#ifndef TAVMIR_PAGE_CONNECTIONS_H
#define TAVMIR_PAGE_CONNECTIONS_H

#include "access_rules.h"
#include "built_in_assets.h"
#include "live_messages.h"
#include "page_limits.h"
#include "return_path.h"
#include "session.h"

#include <boost/asio/ip/tcp.hpp>

#include <atomic>

namespace tavmir::page
{

using Socket = boost::asio::ip::tcp::socket;

// What is served, to whom, within which limits. What it refers to outlives the connections.
struct Service {
    PageContent& content;
    const Assets& assets;
    AccessRules rules;
    PageLimits limits;
};

class Connections
{
public:
    Connections(boost::asio::io_context& context, Service service);
    ~Connections();
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    // A new client. When there are too many, one that is idle goes; when none is, the new one is
    // told so.
    void take(Socket socket);
    // The same client goes on as a live one.
    void replace(const Session& old, std::shared_ptr<Session> fresh);
    void remove(const Session& session);

    // To be called each `limits.lookEvery`.
    void tick();
    void goAway();
    void dropAll();
    bool isEmpty() const { return sessions_.empty() && turnedAway_.empty(); }
    // Any thread.
    int count() const { return count_; }

    // What sessions need.
    const Service& service() const { return service_; }
    const PageLimits& limits() const { return service_.limits; }
    LiveMessages& messages() { return messages_; }
    const std::shared_ptr<ReturnPath>& returnPath() const { return returnPath_; }
    // A live client has greeted: what it is told is to be fresh.
    void lookIfOld();

private:
    using List = std::vector<std::shared_ptr<Session>>;

    bool makeRoom();
    bool isAnybodyListening() const;
    void look();

    Service service_;
    LiveMessages messages_;
    std::shared_ptr<ReturnPath> returnPath_;
    List sessions_;   // the oldest first
    List turnedAway_; // are only told that there are too many
    Clock::time_point lastLook_;
    std::atomic<int> count_{0};
};

} // namespace tavmir::page

#endif
