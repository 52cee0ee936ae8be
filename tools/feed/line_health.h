// Whether the line to the controller lives, folded out of the feed: there is a connection, and
// what is asked is answered. One thread.
#ifndef TAVMIR_FEED_LINE_HEALTH_H
#define TAVMIR_FEED_LINE_HEALTH_H

#include "feed_entry.h"

#include <optional>

namespace tavmir::host
{

class LineHealth
{
public:
    // controller  "127.0.0.1:502", for words
    explicit LineHealth(const QString& controller = QString());

    void take(const FeedEntry& entry);

    bool isConnected() const { return connected_; }
    // Connected once at least.
    bool wasConnected() const { return wasConnected_; }
    // Connected, and the last request was not answered.
    bool isSilent() const { return connected_ && !silence_.isNull(); }
    // Connected, and nothing but refusals came of late.
    bool isRefusing() const;
    // Connected, and nobody waits in vain.
    bool isAlive() const { return connected_ && silence_.isNull(); }

    // How long nothing has been heard of it: since the last answer, or the connection.
    Clock::duration quietFor(Clock::time_point now) const { return now - heardAt_; }

    // Why there is no connection, or why the last request was not answered; names the address
    // tried.
    QString problem() const { return connected_ ? silence_ : disconnection_; }

    // "connected to 127.0.0.1:502"; of a dead line why, without that word:
    // "not connected to 127.0.0.1:502: Connection refused", "no reply from 127.0.0.1:502 for 3.2 s:
    // the controller did not answer within 500 ms".
    QString words(Clock::time_point now) const;

private:
    void takeExchange(const Exchange& exchange);
    void takeSilence(const Exchange& exchange);
    QString withController(const QString& why) const;

    QString controller_;
    QString disconnection_ = "not tried yet";
    QString silence_;         // null: the last request was answered, or none was sent
    quint8 refusal_ = 0;      // exception code since the last good reply; 0: none
    bool heard_ = false;      // something was answered on this connection
    bool goodOnThis_ = false; // and one of the answers was good
    bool connected_ = false;
    bool wasConnected_ = false;
    Clock::time_point heardAt_;
    // The first refusal since the last good reply, and the last one.
    Clock::time_point refusedSince_;
    Clock::time_point refusedAt_;
};

// "850 ms", "3.2 s", "5 min".
QString durationText(Clock::duration duration);

} // namespace tavmir::host

#endif
