// The feed as lines: each request, what came of it, what came unasked, and what became of the
// connection, in the order in which it happened, each with its own time.
//
//   connection 1 > #7 station 1 read words: Main.W
//   connection 1 < #7 station 1 read words: Main.W=4660 (+0.412 ms)
//   connection 1 > #8 station 1 read words: Main.W
//   connection 1 - #8 station 1 read words: the controller did not answer within 500 ms (+500.1 ms)
//   connection 1 < #8 station 1 read words: Main.W=4660 [late] (+812.345 ms)
//
// The feed tells of an exchange when it ends, and of what came meanwhile before that: such entries
// are held back until their exchange has come.
#ifndef TAVMIR_FEED_FEED_LINES_H
#define TAVMIR_FEED_FEED_LINES_H

#include "feed_entry.h"
#include "project/element_names.h"
#include "wire/trace_line.h"

#include <functional>
#include <string>
#include <vector>

namespace tavmir::host
{

// What a line tells of.
enum class LineKind : quint8 {
    request,
    reply,
    exception,
    wrongReply, // of another length than is expected
    nothing,    // no answer came
    unsent,     // no byte of the request left
    late,       // these and the next: what came unasked
    duplicate,
    foreign,
    cut, // bytes that are no whole frame
    gaveUp,
    connected,
    connectFailed,
    lost,
    closed,
    missed // entries are missing here
};

// Its bytes are those that it speaks of; none of what is no frame.
struct FeedLine : wire::TraceLine {
    LineKind kind = LineKind::request;
};

class FeedLines
{
public:
    // The line and its bytes are valid during the call.
    using Show = std::function<void(const FeedLine& line)>;

    // names  outlive it
    FeedLines(const project::ElementNames& names, Show show);

    void take(const FeedEntry& entry);
    // So many entries are missing here.
    void gap(quint64 missed);
    // The feed has told nothing for a moment: what a lost connection held back is shown.
    void quiet();
    // Nothing comes any more.
    void end();

private:
    // A line that waits for the exchange during which it may have happened.
    struct Held {
        Clock::time_point at;
        FeedLine line;
        std::vector<unsigned char> bytes;
        bool endsConnection;
    };

    void takeExchange(const FeedEntry& entry);
    void showRequest(const FeedEntry& entry);
    void showAnswer(const FeedEntry& entry);
    void showUnsent(const FeedEntry& entry);
    void takeConnected(const FeedEntry& entry);
    void holdLost(const FeedEntry& entry);
    void holdStray(const FeedEntry& entry);
    void say(const FeedEntry& entry, LineKind kind, const std::string& words);
    void release(); // what is held
    void releaseUntil(Clock::time_point moment);
    void show(FeedLine& line, const unsigned char* bytes, size_t size);
    FeedLine lineAt(WallClock::time_point at, wire::TraceWay way, LineKind kind) const;
    std::string requestWords(const Exchange& exchange) const;
    std::string replyWords(const unsigned char* bytes, size_t size) const;

    const project::ElementNames& names_;
    const Show show_;
    wire::DescribeElements describe_;
    std::vector<Held> held_;
    quint64 connections_ = 0;
    std::shared_ptr<const std::vector<wire::ConnectAttempt>> attempts_; // to connect, the last ones
    QString linkProblem_;
    quint32 attempt_ = 0; // of the last exchange
};

} // namespace tavmir::host

#endif
