// What the feed tells, as packets in the order in which it happened.
#include "capture/feed_capture.h"

#include "capture/feed_capture_thread.h"
#include "feed/made_exchange.h"
#include "read_capture.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tavmir::capture
{

namespace
{

using namespace tavmir::host;
using namespace tavmir::test;

constexpr quint8 kReadWords = 102;

// Wall and steady clock go together, the one a thousand seconds ahead.
WallClock::time_point wallAtMs(int ms)
{
    return WallClock::time_point(std::chrono::seconds(1000) + std::chrono::milliseconds(ms));
}

std::int64_t msOf(std::int64_t wallNs)
{
    return wallNs / 1000000 - 1000000;
}

FeedEntry entryAt(FeedKind kind, int ms)
{
    FeedEntry entry;
    entry.kind = kind;
    entry.at = momentAt(ms);
    entry.wall = wallAtMs(ms);
    return entry;
}

wire::ConnectAttempt attemptTo(const std::string& peer, int began, int ended, int error)
{
    wire::ConnectAttempt attempt;
    attempt.local.host = "10.0.0.1";
    attempt.local.port = 40000;
    attempt.peer.host = peer;
    attempt.peer.port = 5020;
    attempt.began = momentAt(began);
    attempt.ended = momentAt(ended);
    attempt.error = error;
    return attempt;
}

FeedEntry attemptsAt(FeedKind kind, int ms, const std::vector<wire::ConnectAttempt>& attempts)
{
    FeedEntry entry = entryAt(kind, ms);
    entry.attempts = std::make_shared<const std::vector<wire::ConnectAttempt>>(attempts);
    return entry;
}

FeedEntry connectedAt(int ms)
{
    return attemptsAt(FeedKind::connected, ms, {attemptTo("10.0.0.2", ms - 2, ms, 0)});
}

Exchange exchangeAt(int sent, int ended, ExchangeEnd end = ExchangeEnd::reply)
{
    Exchange exchange = madeRead(kReadWords, 1, {{16, 1}}, momentAt(ended));
    exchange.sentAt = momentAt(sent);
    exchange.endedWall = wallAtMs(ended);
    exchange.replyTimeoutMs = 500;
    exchange.end = end;
    if (end != ExchangeEnd::reply) {
        exchange.replySize = 0;
    }
    return exchange;
}

FeedEntry strayAt(Stray stray, int ms, const std::string& bytes, int asked = 0)
{
    FeedEntry entry = entryAt(FeedKind::strayBytes, ms);
    entry.stray = stray;
    entry.askedAt = momentAt(asked);
    entry.received.assign(bytes.begin(), bytes.end());
    return entry;
}

FeedEntry lostAt(int ms, ClosedBy closedBy, const QString& why)
{
    FeedEntry entry = entryAt(FeedKind::connectionLost, ms);
    entry.closedBy = closedBy;
    entry.text = why;
    return entry;
}

// One line a packet: time in ms, direction, flags, payload's size, comment.
std::vector<std::string> linesOf(const Bytes& file)
{
    std::vector<std::string> lines;
    for (const ReadPacket& packet : packetsOf(file)) {
        std::string line =
            std::to_string(msOf(packet.wallNs)) + (packet.isOutbound ? " >" : " <") + packet.flags;
        if (!packet.payload.empty()) {
            line += " " + std::to_string(packet.payload.size());
        }
        lines.push_back(line + (packet.comment.empty() ? "" : " " + packet.comment));
    }
    return lines;
}

using Lines = std::vector<std::string>;

class OfFeed : public testing::Test
{
protected:
    OfFeed() : memory_(Origin()), writer_(memory_), fold_(writer_) {}

    void take(const FeedEntry& entry) { fold_.take(entry); }
    void take(const Exchange& exchange) { fold_.take(entryOf(exchange)); }

    // What has been written since the last call.
    Lines lines()
    {
        const Lines all = linesOf(memory_.bytes());
        const Lines fresh(all.begin() + static_cast<std::ptrdiff_t>(seen_), all.end());
        seen_ = all.size();
        return fresh;
    }

    MemoryCapture memory_;
    PcapngWriter writer_;
    FeedCapture fold_;

private:
    size_t seen_ = 0;
};

} // namespace

TEST_F(OfFeed, AConnectionAndAnExchangeWithTheirTimes)
{
    take(connectedAt(10));
    take(exchangeAt(20, 25));
    EXPECT_EQ((Lines{"8 >S", "10 <SA", "10 >A", "20 >AP 13", "25 <AP 15"}), lines());
    const std::vector<ReadPacket> packets = packetsOf(memory_.bytes());
    EXPECT_EQ("10.0.0.1", packets[3].from);
    EXPECT_EQ(40000, packets[3].fromPort);
    EXPECT_EQ("10.0.0.2", packets[3].to);
    EXPECT_EQ(5020, packets[3].toPort);
    const Exchange exchange = exchangeAt(20, 25);
    EXPECT_EQ(std::string(exchange.request, exchange.request + 13), packets[3].payload);
    EXPECT_EQ(std::string(exchange.reply, exchange.reply + 15), packets[4].payload);
}

TEST_F(OfFeed, EachAddressThatWasTriedIsShown)
{
    take(attemptsAt(
        FeedKind::connectFailed, 30,
        {attemptTo("10.0.0.2", 10, 20, ECONNREFUSED), attemptTo("10.0.0.3", 20, 30, ETIMEDOUT)}));
    EXPECT_EQ((Lines{"10 >S no connection: Connection refused", "20 <AR",
                     "20 >S no connection: Connection timed out"}),
              lines());
    EXPECT_EQ("10.0.0.3", packetsOf(memory_.bytes())[2].to);
}

TEST_F(OfFeed, ARequestWithoutAnAnswerSaysWhy)
{
    take(connectedAt(0));
    lines();
    take(exchangeAt(10, 510, ExchangeEnd::timeout));
    Exchange again = exchangeAt(520, 1020, ExchangeEnd::timeout);
    again.attempt = 2;
    take(again);
    EXPECT_EQ((Lines{"10 >AP 13 the controller did not answer within 500 ms",
                     "520 >AP 13 attempt 2; the controller did not answer within 500 ms"}),
              lines());
}

TEST_F(OfFeed, AnExceptionIsNamedAtTheReply)
{
    take(connectedAt(0));
    lines();
    Exchange exchange = exchangeAt(10, 12, ExchangeEnd::exception);
    exchange.replySize = 9;
    exchange.exceptionCode = 2;
    take(exchange);
    EXPECT_EQ((Lines{"10 >AP 13", "12 <AP 9 the controller refused the request: exception 2 "
                                  "(illegal data address)"}),
              lines());
}

TEST_F(OfFeed, AReplyOfTheWrongLengthSaysSo)
{
    take(connectedAt(0));
    lines();
    Exchange exchange = exchangeAt(10, 12);
    exchange.expectedReply = 21;
    take(exchange);
    EXPECT_EQ((Lines{"10 >AP 13", "12 <AP 15 the controller's reply has 15 bytes instead of 21"}),
              lines());
}

TEST_F(OfFeed, AReplyLongerThanAnExchangeKeepsIsWhole)
{
    take(connectedAt(0));
    lines();
    FeedEntry entry = entryOf(exchangeAt(10, 12));
    entry.exchange.replySize = 1009;
    entry.exchange.expectedReply = 1009;
    entry.received.assign(1009, 'x');
    take(entry);
    EXPECT_EQ((Lines{"10 >AP 13", "12 <AP 1009"}), lines());
}

TEST_F(OfFeed, OnlyBytesThatLeftAreShown)
{
    take(connectedAt(0));
    lines();
    Exchange exchange = exchangeAt(10, 12, ExchangeEnd::notSent);
    exchange.sentBytes = 0;
    take(exchange);
    EXPECT_EQ(Lines(), lines());
    exchange.end = ExchangeEnd::lost;
    exchange.sentBytes = 5;
    take(exchange);
    const Lines told = lines();
    ASSERT_EQ(1u, told.size());
    EXPECT_EQ(0u, told[0].find("10 >AP 5 5 of 13 bytes were sent; the connection was lost"));
}

TEST_F(OfFeed, WhatCameDuringAnExchangeStandsBetweenItsTwoPackets)
{
    take(connectedAt(0));
    lines();
    const std::string frame = std::string("\0\x07\0\0\0\x03\x01\x66\x01", 9);
    take(strayAt(Stray::duplicate, 9, frame, 6)); // came before it was sent
    take(strayAt(Stray::late, 15, frame, 5));
    take(strayAt(Stray::foreign, 16, frame));
    EXPECT_EQ(Lines(), lines()) << "its exchange is still to come";
    take(exchangeAt(10, 20));
    EXPECT_EQ((Lines{"9 <AP 9 duplicate: request #7, sent 3 ms before, was answered already",
                     "10 >AP 13", "15 <AP 9 late: answers request #7, sent 10 ms before",
                     "16 <AP 9 foreign: answers no request of this connection", "20 <AP 15"}),
              lines());
}

TEST_F(OfFeed, WhatCameWhileNothingWasAskedIsShownWhenItIsCounted)
{
    take(connectedAt(0));
    lines();
    take(strayAt(Stray::foreign, 5, "xxxxxxxxx"));
    take(entryAt(FeedKind::framesDropped, 6));
    EXPECT_EQ(Lines{"5 <AP 9 foreign: answers no request of this connection"}, lines());
}

TEST_F(OfFeed, ACutReplyIsShownAsFarAsItCameAndThenTheHostCloses)
{
    take(connectedAt(0));
    lines();
    take(strayAt(Stray::remainder, 12, "abc"));
    take(lostAt(510, ClosedBy::host, "a reply was cut off"));
    take(exchangeAt(10, 510, ExchangeEnd::cut));
    EXPECT_EQ((Lines{"10 >AP 13 the controller's reply was cut off",
                     "12 <AP 3 no whole frame: what had come when the connection ended",
                     "510 >AF a reply was cut off", "510 <A"}),
              lines());
}

TEST_F(OfFeed, EachEndOfAConnection)
{
    const std::vector<std::pair<ClosedBy, Lines>> ends = {
        {ClosedBy::controller, {"5 <AF why", "5 >AF", "5 <A"}},
        {ClosedBy::reset, {"5 <AR why"}},
        {ClosedBy::host, {"5 >AF why", "5 <A"}},
        {ClosedBy::network, {"5 >AF why", "5 <A"}},
    };
    for (const auto& [closedBy, expected] : ends) {
        take(connectedAt(0));
        lines();
        take(lostAt(5, closedBy, "why"));
        fold_.quiet();
        EXPECT_EQ(expected, lines());
    }
    take(connectedAt(0));
    lines();
    take(entryAt(FeedKind::closed, 6));
    fold_.end();
    EXPECT_EQ((Lines{"6 >AF", "6 <A"}), lines());
}

TEST_F(OfFeed, AMomentOfSilenceDoesNotShowWhatCameBeforeItsRequest)
{
    take(connectedAt(0));
    lines();
    take(strayAt(Stray::foreign, 15, "xxxxxxxxx"));
    fold_.quiet();
    EXPECT_EQ(Lines(), lines());
    take(exchangeAt(10, 20));
    EXPECT_EQ(3u, lines().size());
}

TEST_F(OfFeed, MissedEntriesAreSaidAtTheNextPacket)
{
    take(connectedAt(0));
    lines();
    fold_.gap(7);
    fold_.gap(3);
    take(exchangeAt(10, 510, ExchangeEnd::timeout));
    take(exchangeAt(520, 521));
    EXPECT_EQ((Lines{"10 >AP 13 10 events before this packet were missed by the capture; the "
                     "controller did not answer within 500 ms",
                     "520 >AP 13", "521 <AP 15"}),
              lines());
}

TEST_F(OfFeed, AStandingConnectionGoesOnWithoutBeingMade)
{
    FeedEntry standing = connectedAt(0);
    standing.standing = true;
    take(standing);
    take(exchangeAt(10, 20));
    EXPECT_EQ((Lines{"10 >AP 13", "20 <AP 15"}), lines());
    take(standing); // behind a gap
    take(exchangeAt(30, 40));
    const std::vector<ReadPacket> packets = packetsOf(memory_.bytes());
    EXPECT_EQ("10.0.0.2", packets[0].to);
    EXPECT_EQ(packets[0].sequence + 13, packets[2].sequence) << "still the same connection";
}

TEST_F(OfFeed, WithoutAnyWordOfTheConnectionTheBytesAreShownAllTheSame)
{
    take(exchangeAt(10, 20));
    EXPECT_EQ((Lines{"10 >AP 13", "20 <AP 15"}), lines());
}

TEST_F(OfFeed, AFloodIsNotHeldForEver)
{
    take(connectedAt(0));
    lines();
    for (int i = 0; i < 10000; ++i) {
        take(strayAt(Stray::foreign, 5, "xxxxxxxxx"));
    }
    EXPECT_GT(lines().size(), 5000u);
}

TEST(FeedCaptureThread, WritesWhatHappenedUntilItsEnd)
{
    TemporaryFolder folder;
    CaptureOptions options;
    options.file = folder.pathOf("line.pcapng");
    auto files = std::make_unique<CaptureFiles>(options, Origin(), [](const std::string&) {});
    ASSERT_EQ("", files->open());
    Feed feed;
    feed.publish(connectedAt(0));
    {
        const FeedCaptureThread thread(feed, std::move(files));
        for (int i = 0; i < 1000; ++i) {
            feed.publish(exchangeAt(10 * i, 10 * i + 5));
        }
        feed.publish(entryAt(FeedKind::closed, 20000));
    }
    const Lines lines = linesOf(fileBytes(options.file));
    ASSERT_EQ(2002u, lines.size());
    EXPECT_EQ("0 >AP 13", lines.front());
    EXPECT_EQ("20000 >AF", lines[2000]);
    EXPECT_FALSE(feed.isRead());
}

} // namespace tavmir::capture
