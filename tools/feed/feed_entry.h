// What the feed carries: everything that happens between host and controller, in its order.
#ifndef TAVMIR_FEED_FEED_ENTRY_H
#define TAVMIR_FEED_FEED_ENTRY_H

#include "exchange.h"
#include "outcome.h"
#include "plan/polled_plan.h"
#include "wire/connect_attempt.h"

#include <memory>
#include <vector>

namespace tavmir::host
{

enum class FeedKind : quint8 {
    exchange,
    gaveUp,          // the driver gave the last exchange's request up
    connected,       // attempts: the last one is the connection
    connectFailed,   // text: why; attempts
    connectionLost,  // text: why; closedBy
    closed,          // by the host, which needs it no longer
    strayBytes,      // stray, received; told before the exchange during which they came
    framesDropped,   // unasked, while nothing was in flight
    operationEnded,  // text: why it was not done
    planChanged,     // another list is polled from now on
    elementSetAside, // the controller refuses it alone, it is not polled; variable, text: why
    elementBack      // one of those answers again; variable
};

// Who ended a connection.
enum class ClosedBy : quint8 {
    controller, // it closed
    reset,      // it reset the connection
    host,       // it closed: what came made no sense, or nothing could be sent
    network     // an error of the system's; nothing came that said so
};

// What bytes are that answered nothing.
enum class Stray : quint8 {
    late,      // a frame that answers a request which was waited for in vain
    duplicate, // a frame that answers one that was answered before
    foreign,   // any other frame
    remainder  // no frame, or part of one: what was left when the connection ended
};

struct OperationEnd {
    OperationKind kind = OperationKind::write;
    OutcomeState state = OutcomeState::done;
    quint64 key = 0;
    int elements = 0;
    int acknowledged = 0;
    int station = 0;
    qint32 firstAddress = 0; // of its elements
    int bitsApart = 0;       // from one element to the next; 0: the place is not told
};

// One of the polled variables that the controller refuses: it is only tried now and then.
struct SetAside {
    size_t place = 0; // in the list
    QString why;      // "refused, code 2 (illegal data address)"
};

// A polled list under its generation, which counts the lists that the driver was given.
struct PolledGeneration {
    quint32 generation = 0;
    std::vector<PolledElement> polled; // all that the host asked for, also what is set aside
    std::vector<SetAside> setAside{};
};

struct FeedEntry {
    FeedKind kind = FeedKind::exchange;
    bool standing = false; // happened before the reader came, which is told how things stand
    Clock::time_point at;  // of an exchange its end
    WallClock::time_point wall;
    Exchange exchange;         // FeedKind::exchange only
    QString text;              // see FeedKind
    QString variable;          // its name; see FeedKind
    OperationEnd operation;    // FeedKind::operationEnded only
    bool brokenStream = false; // FeedKind::connectionLost: what came was no frame, or half of one
    quint32 frames = 0;        // FeedKind::framesDropped only
    quint32 bytes = 0;         // the same
    std::shared_ptr<const PolledGeneration> plan; // FeedKind::planChanged only
    // FeedKind::connected and connectFailed: each address tried. Without any: no address was found.
    std::shared_ptr<const std::vector<wire::ConnectAttempt>> attempts;
    ClosedBy closedBy = ClosedBy::controller; // FeedKind::connectionLost only
    Stray stray = Stray::foreign;             // FeedKind::strayBytes only
    Clock::time_point askedAt; // the same, late or duplicate: when what it answers was sent
    // The bytes of FeedKind::strayBytes; of an exchange the whole reply, when it is longer than
    // what the exchange keeps.
    std::vector<unsigned char> received;
};

// An entry that happens now.
FeedEntry entryNow(FeedKind kind, const QString& text = QString());

// The wall clock at a moment before the entry, as it went at the entry.
WallClock::time_point wallAt(const FeedEntry& entry, Clock::time_point moment);

} // namespace tavmir::host

#endif
