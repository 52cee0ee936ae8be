// What the feed carries, as packets: connections with their ends, each request and each byte that
// came, in the order in which it happened; where something was wrong the packet says so.
//
// For a list of entries of any length: begin it with the connection's standing entry, as a reader
// of the feed is told it, and end it with end(). The feed tells of an exchange when it ends, and of
// what came meanwhile before that: such entries are held back until their exchange has come.
#ifndef TAVMIR_CAPTURE_FEED_CAPTURE_H
#define TAVMIR_CAPTURE_FEED_CAPTURE_H

#include "tcp_conversation.h"

#include "feed/feed_entry.h"

#include <optional>
#include <vector>

namespace tavmir::capture
{

class FeedCapture
{
public:
    // sink  outlives it
    explicit FeedCapture(PacketSink& sink) : sink_(sink) {}

    void take(const host::FeedEntry& entry);
    // So many entries are missing here; the next packet says it.
    void gap(quint64 missed);
    // Nothing has been told for a moment: a connection's end that was held back is written.
    void quiet();
    // Nothing comes any more.
    void end();

private:
    // Waits for the exchange during which it may have happened.
    struct Held {
        host::FeedKind kind = host::FeedKind::strayBytes;
        host::ClosedBy closedBy = host::ClosedBy::host;
        host::Clock::time_point at;
        std::int64_t wallNs = 0;
        std::vector<unsigned char> bytes;
        std::string comment;
    };

    void takeAttempts(const host::FeedEntry& entry);
    void takeStanding(const host::FeedEntry& entry);
    void takeExchange(const host::FeedEntry& entry);
    void hold(const host::FeedEntry& entry);
    void release();
    void releaseUntil(host::Clock::time_point moment);
    void write(const Held& held);
    void writeRequest(const host::FeedEntry& entry);
    void writeReply(const host::FeedEntry& entry);
    TcpConversation& conversation(std::int64_t wallNs);
    std::string noted(const std::string& comment);

    PacketSink& sink_;
    std::optional<TcpConversation> conversation_;
    std::vector<Held> held_;
    QString linkProblem_;
    quint64 missed_ = 0; // not said yet
};

} // namespace tavmir::capture

#endif
