// What one host and one controller say to each other, over all connections between them that
// follow each other: frames become exchanges, and what is wrong becomes a list of troubles.
#ifndef TAVMIR_DIAGNOSE_CONVERSATION_H
#define TAVMIR_DIAGNOSE_CONVERSATION_H

#include "element_book.h"
#include "exchange.h"
#include "frame_cutter.h"
#include "value_watch.h"

#include <deque>
#include <optional>
#include <unordered_map>

namespace tavmir::diagnose
{

constexpr std::size_t kNoRequest = static_cast<std::size_t>(-1);

// One thing that was wrong.
struct Happening {
    Trouble trouble;
    Nanoseconds at = 0;
    std::uint64_t ordinal = 0; // of the attempt; 0: none
    std::size_t request = kNoRequest;
    std::uint16_t transaction = 0;
    std::uint8_t code = 0;  // of an exception
    Nanoseconds lasted = 0; // until the late or slow reply
    std::string words = {};
    std::optional<PlaceAndValue> place = {};
    std::uint32_t expected = 0; // of the place
};

// A request that was answered well and in time.
struct RoundTrip {
    Nanoseconds at;
    Nanoseconds lasted;
    std::uint64_t ordinal;
    std::size_t request;
    std::uint16_t transaction;
};

struct Counts {
    std::uint64_t connections = 0; // made, or there when the capture begins
    std::uint64_t closedByHost = 0;
    std::uint64_t requests = 0;
    std::uint64_t attempts = 0;
    std::uint64_t replies = 0;  // good ones, late ones too
    std::uint64_t lacking = 0;  // bytes that the capture lacks
    std::uint64_t unread = 0;   // bytes that cannot be judged for that
    std::uint64_t unjudged = 0; // attempts
    std::uint64_t waiting = 0;  // attempts whose answer may still come
};

class Conversation
{
public:
    // The connection that is spoken of in the calls below.
    typedef std::size_t Number;

    void asked(Number connection, Nanoseconds at);
    void connected(Number connection, Nanoseconds at);
    // It was there before the capture began.
    void foundOpen(Number connection);

    void request(Number connection, const Piece& frame);
    void reply(Number connection, const Piece& frame);
    // What is no frame, or part of one.
    void damaged(Number connection, bool byHost, const Piece& piece);
    void lacks(bool byHost, std::uint64_t bytes);
    void unread(std::uint64_t bytes) { counts_.unread += bytes; }
    void closed(Number connection, Nanoseconds at, bool byHost, bool isReset);
    // Nothing more comes on it.
    void over(Number connection, Nanoseconds at);

    // After everything else.
    void finish(Nanoseconds at);

    // A connection is open, as far as the capture shows.
    bool isOpen() const { return isOpen_; }
    // A frame of the protocol was seen, in its direction.
    bool speaks() const { return speaks_; }

    const Counts& counts() const { return counts_; }
    const std::vector<Happening>& happenings() const { return happenings_; }
    const std::vector<RoundTrip>& roundTrips() const { return roundTrips_; }
    // How long the host waited for replies that did not come in time.
    const std::vector<Nanoseconds>& waits() const { return waits_; }
    const ElementBook& book() const { return book_; }
    const RequestTable& requests() const { return table_; }

private:
    struct Opening {
        Number connection = 0;
        Nanoseconds askedAt = 0;
        bool isAsked = false;
        bool isConnected = false;
        bool isClosed = false;
    };

    Exchange* waitingExchange();
    Exchange* exchangeOf(std::uint16_t transaction);
    Attempt* openAttempt(Number connection);
    Attempt* attemptBefore(Number connection, Nanoseconds at);
    void endAttempt(AttemptEnd end, Nanoseconds at, const std::string& words);
    void addAttempt(Exchange& exchange, Number connection, Nanoseconds at);
    void attach(Exchange& exchange, const Piece& frame, const CheckedReply& checked);
    void foldOld(Nanoseconds now);
    void foldFirst();
    void fold(const Exchange& exchange);
    void foldReply(const Exchange& exchange, const Attempt& attempt, const Came& reply,
                   ElementBook::Outcome& outcome, std::uint8_t& code);
    void foldSilence(const Exchange& exchange, const Attempt& attempt);
    void judgeUnfinished(Exchange exchange);
    void tellSilentConnect(Nanoseconds at);
    void tellReconnect(Nanoseconds at);
    void tellValues();
    Happening& happen(Trouble trouble, Nanoseconds at);
    Happening& happen(Trouble trouble, Nanoseconds at, const Exchange& exchange,
                      const Attempt& attempt);

    Counts counts_;
    RequestTable table_;
    ElementBook book_;
    ValueWatch values_;
    std::vector<Happening> happenings_;
    std::vector<RoundTrip> roundTrips_;
    std::vector<Nanoseconds> waits_;

    std::deque<Exchange> exchanges_; // the last one is the host's latest request
    std::uint64_t folded_ = 0;       // exchanges in front of those
    // By transaction: its latest exchange, counted from 1.
    std::unordered_map<std::uint16_t, std::uint64_t> latest_;
    std::vector<Exchange> unfinished_; // ended with the capture or by the host

    Opening opening_;
    bool isOpen_ = false;
    bool isBlind_ = true; // requests may have been sent that the capture lacks
    bool speaks_ = false;
    bool isLost_ = false;        // the latest attempt was, with its connection; not connected since
    Nanoseconds latestSaid_ = 0; // a frame of either side, or an attempt to connect
    std::size_t latestClosing_ = kNoRequest; // among the happenings; waits for the next connect
};

} // namespace tavmir::diagnose

#endif
