// The connection to the controller: sends a request, waits for the reply that belongs to it,
// and connects again by itself with growing pauses.
//
//   disconnected ──exchange, pause over──▶ connecting ──▶ connected
//        ▲                                     │              │
//        └────────── failed ───────────────────┘              │
//        └────────── peer closed, stream broken, send failed ─┘
//
// A stream counts as broken when its bytes are no frame, and when a time-out leaves part of a
// frame behind: a repeated request carries the same transaction id, so the rest of a cut reply
// could be completed by the next reply's bytes into a frame that looks right.
//
// All calls on one thread; only wake() and stop() may come from another.
#ifndef TAVMIR_LINK_TCP_LINK_H
#define TAVMIR_LINK_TCP_LINK_H

#include "feed/link_statistics.h"
#include "reconnect_pause.h"
#include "wake_event.h"
#include "wire/deadline.h"
#include "wire/frame_decoder.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <atomic>
#include <functional>

namespace tavmir::host
{

using wire::Clock;
using wire::Deadline;
using wire::FrameDecoder;
using wire::FrameView;

struct LinkOptions {
    QString host;
    int port = 0;
    int connectTimeoutMs = 1000;
    int replyTimeoutMs = 500;
    int reconnectMinMs = 100;
    int reconnectMaxMs = 5000;
    unsigned jitterSeed = 1;
};

enum class ExchangeResult {
    reply,        // `reply` holds the frame
    timeout,      // nothing that answers the request came in time
    exception,    // the controller refused it
    notConnected, // there is no connection, or it was lost before the reply came
    stopped       // stop() ended the wait
};

class TcpLink
{
public:
    // Told when the connection comes and goes; on the link's thread, must not block.
    //   connected  the new state, or false again for the first failed attempt
    //   why        when not connected
    using Observer = std::function<void(bool connected, const QString& why)>;

    TcpLink(const LinkOptions& options, LinkStatistics& statistics, Observer observer);
    ~TcpLink();
    TcpLink(const TcpLink&) = delete;
    TcpLink& operator=(const TcpLink&) = delete;

    // Sends `size` bytes and waits for the reply, at most the reply time-out; without a
    // connection it waits for the next attempt within that time, and an attempt may take the
    // connect time-out on top. `reply` is changed only when the result is `reply`.
    ExchangeResult exchange(const char* request, size_t size, QByteArray& reply);

    // Waits without a request, at most `ms`; drops what comes, and notices when the peer closes.
    void idle(int ms);

    // Ends idle(), now or when it is called next. Any thread.
    void wake() { work_.wake(); }
    // Ends every wait from now on; the one for a reply within its receive slice. Any thread.
    void stop()
    {
        stopping_ = true;
        stop_.wake();
    }

    bool connected() const { return socket_ >= 0; }
    void close();

private:
    enum class Received { bytes, nothing, stopped, woken, lost };

    enum class Connecting { connected, failed, stopped };

    Connecting connectWithin(const Deadline& deadline);
    bool send(const char* bytes, size_t size, const Deadline& deadline);
    // `wakeable`: wake() ends the wait too.
    Received receive(const Deadline& deadline, bool wakeable);
    Received awaitBytes(const Deadline& deadline, bool wakeable);
    // flags  of recv(); without MSG_DONTWAIT it sleeps for a slice
    Received takeBytes(int flags);
    ExchangeResult awaitReply(const FrameView& request, Clock::time_point sent, QByteArray& reply);
    ExchangeResult giveUpWaiting();
    // What ended the sleep: stop(), wake() when `wakeable`, or the time.
    Received sleepUntil(Clock::time_point end, bool wakeable);
    void lose(const QString& why);

    LinkOptions options_;
    LinkStatistics& statistics_;
    Observer observer_;
    ReconnectPause pause_;
    Clock::time_point nextAttempt_;
    std::atomic<bool> stopping_{false};
    WakeEvent stop_;
    WakeEvent work_;
    FrameDecoder decoder_;
    int socket_ = -1;
    bool proven_ = false; // the connection has carried a reply
    bool failureTold_ = false;
};

} // namespace tavmir::host

#endif
