// The connection to the controller: sends a request, waits for the reply that belongs to it,
// and connects again by itself with growing pauses.
//
//   disconnected ──exchange, reconnect; pause over──▶ connecting ──▶ connected
//        ▲                                                │              │
//        └──────────── failed ────────────────────────────┘              │
//        └──────────── peer closed, stream broken, send failed ──────────┘
//
// A stream counts as broken when its bytes are no frame, and when a time-out leaves part of a
// frame behind: a repeated request carries the same transaction id, so the rest of a cut reply
// could be completed by the next reply's bytes into a frame that looks right.
//
// All calls on one thread; only wake() and stop() may come from another.
#ifndef TAVMIR_LINK_TCP_LINK_H
#define TAVMIR_LINK_TCP_LINK_H

#include "asked_requests.h"
#include "feed/feed_entry.h"
#include "reconnect_pause.h"
#include "wake_event.h"
#include "wire/deadline.h"
#include "wire/frame_decoder.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <atomic>
#include <functional>
#include <optional>

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

class TcpLink
{
public:
    // Told of each connected, connectFailed, connectionLost, closed, strayBytes and framesDropped;
    // on the link's thread, must not block.
    using Observer = std::function<void(const FeedEntry& entry)>;

    TcpLink(const LinkOptions& options, Observer observer);
    ~TcpLink();
    TcpLink(const TcpLink&) = delete;
    TcpLink& operator=(const TcpLink&) = delete;

    // Sends `size` bytes and waits for the reply, at most the reply time-out; without a
    // connection it waits for the next attempt within that time, and an attempt may take the
    // connect time-out on top. `reply` is changed only by a reply or an exception: it holds that
    // frame then.
    //   exchange  filled in but for the frames' bytes and generation, attempt, expectedReply, kind
    ExchangeEnd exchange(const char* request, size_t size, QByteArray& reply, Exchange& exchange);

    // Waits until the next attempt to connect is due, and makes it. True when connected; false
    // also when stopped.
    bool reconnect();

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
    // Why there is no connection: the last failed attempt or the loss, in words.
    const QString& problem() const { return problem_; }
    // The host needs the connection no longer.
    void close();

private:
    enum class Received { bytes, nothing, stopped, woken, lost };
    enum class Connecting { connected, failed, stopped };

    Connecting connectWithin(Clock::time_point end);
    Connecting connectNow();
    // The end of the exchange when the request could not be sent whole.
    std::optional<ExchangeEnd> send(const char* bytes, Exchange& exchange);
    // `wakeable`: wake() ends the wait too.
    Received receive(const Deadline& deadline, bool wakeable);
    Received awaitBytes(const Deadline& deadline, bool wakeable);
    // flags  of recv(); without MSG_DONTWAIT it sleeps for a slice
    Received takeBytes(int flags);
    ExchangeEnd awaitReply(const FrameView& request, QByteArray& reply, Exchange& exchange);
    ExchangeEnd takeFrame(const FrameView& frame, bool isException, QByteArray& reply,
                          Exchange& exchange);
    ExchangeEnd giveUpWaiting();
    // What ended the sleep: stop(), wake() when `wakeable`, or the time.
    Received sleepUntil(Clock::time_point end, bool wakeable);
    void dropUntil(const Deadline& deadline);
    void tellDropped();
    void tellStray(const FrameView& frame);
    void tellRemainder();
    void stampPartialFrame();
    void holdSince(Clock::time_point at, WallClock::time_point wall);
    FeedEntry strayEntry(Stray stray, const unsigned char* bytes, size_t size) const;
    void lose(const QString& why, ClosedBy closedBy);
    void loseAfterError(int error);
    void loseBroken(const QString& why); // for what came was no frame, or half of one
    void lose(const FeedEntry& entry);
    void closeSocket();

    LinkOptions options_;
    Observer observer_;
    ReconnectPause pause_;
    Clock::time_point nextAttempt_;
    std::atomic<bool> stopping_{false};
    WakeEvent stop_;
    WakeEvent work_;
    FrameDecoder decoder_;
    AskedRequests asked_; // on this connection
    QString problem_;
    quint32 received_ = 0; // bytes since they were last reported
    quint32 dropped_ = 0;  // frames, the same
    int socket_ = -1;
    bool proven_ = false; // the connection has carried a reply
    // When the newest that the decoder holds came, where somebody stamped it.
    bool isHeld_ = false;
    Clock::time_point heldSince_;
    WallClock::time_point heldSinceWall_;
};

} // namespace tavmir::host

#endif
