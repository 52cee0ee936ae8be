// One exchange with the controller: a request as it was sent, and the reply or what came instead.
#ifndef TAVMIR_FEED_EXCHANGE_H
#define TAVMIR_FEED_EXCHANGE_H

#include "wire/deadline.h"

#include <QtCore/QString>

#include <cstddef>

namespace tavmir::host
{

using wire::Clock;
using wire::Deadline;
using WallClock = std::chrono::system_clock;

enum class RequestKind : quint8 { poll, write, read };

enum class ExchangeEnd : quint8 {
    reply,      // a reply that belongs to the request, of whatever length
    exception,  // the controller refused it, with a code
    timeout,    // nothing that answers it came in time
    cut,        // part of a reply came in time; the connection was closed
    lost,       // the connection went before an answer came
    broken,     // what came was no frame; the connection was closed
    notSent,    // no byte of it left: there is no connection
    suppressed, // no byte of it left: its station is switched off
    stopped     // the host stops
};

struct Exchange {
    // A request has at most 237 bytes and the reply that is expected at most 237: 38 words with
    // their addresses. What is longer is cut here; the sizes are the true ones.
    static constexpr size_t kMostBytes = 240;

    Clock::time_point sentAt;
    Clock::time_point endedAt;
    WallClock::time_point endedWall;
    quint32 generation = 0; // of the polled list that the driver had
    quint32 receivedBytes = 0;
    quint32 replyTimeoutMs = 0;
    quint32 sentBytes = 0;
    quint32 foreignFrames = 0; // late, duplicate or foreign; dropped while it waited
    quint32 expectedReply = 0; // bytes; a reply of another length is refused
    quint32 requestSize = 0;
    quint32 replySize = 0;
    quint32 attempt = 1; // with this very frame; a repetition has the same transaction id
    RequestKind kind = RequestKind::poll;
    ExchangeEnd end = ExchangeEnd::notSent;
    quint8 exceptionCode = 0; // with ExchangeEnd::exception
    unsigned char request[kMostBytes];
    unsigned char reply[kMostBytes]; // also of an exception

    bool answered() const { return end == ExchangeEnd::reply || end == ExchangeEnd::exception; }
    // The reply is the driver's to store.
    bool isGood() const { return end == ExchangeEnd::reply && replySize == expectedReply; }
    // The controller may have carried the request out, and did not say so.
    bool isUncertain() const { return sentBytes > 0 && end != ExchangeEnd::exception && !isGood(); }

    // Bytes of the frames that are kept.
    size_t requestKept() const { return requestSize < kMostBytes ? requestSize : kMostBytes; }
    size_t replyKept() const { return replySize < kMostBytes ? replySize : kMostBytes; }
};

// Copies what is set, not the room behind it.
//   request, reply  bytes in place of those in `from`; null: its own
void copyExchange(const Exchange& from, const char* request, const char* reply, Exchange& to);

// Copies the bytes of a frame. A call on purpose: what compilers put in its place where they know
// that the bytes are few takes longer to begin than to copy.
void copyBytes(void* to, const void* from, size_t bytes);

// "exception 2 (illegal data address)"
QString exceptionInWords(quint8 code);

// Why a bad exchange was bad: "the controller did not answer within 500 ms".
//   linkProblem  why there is no connection, as the link says it
QString endInWords(const Exchange& exchange, const QString& linkProblem);

} // namespace tavmir::host

#endif
