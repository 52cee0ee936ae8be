// Each kind of line, out of entries as the session publishes them.
#include "feed/made_exchange.h"
#include "project/project_reader.h"
#include "trace/feed_trace.h"
#include "wire/frame_layout.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using std::chrono::milliseconds;

const char kPlant[] = R"({
  "connection": { "host": "127.0.0.1", "port": 5020 },
  "labels": [ { "name": "Main", "variables": [
    { "name": "W", "type": "word", "address": 3000, "format": "signed" },
    { "name": "Temp", "type": "real", "address": 5000 } ] } ],
  "polled": [ { "address": "Main.W" } ]
})";

// What both clocks say at momentAt(0).
const WallClock::time_point kWall = WallClock::time_point(milliseconds(1000000000000));

class FeedTraceTest : public testing::Test
{
protected:
    FeedTraceTest() : names_(*project::readProject(kPlant, "plant").project) { show(false); }

    void show(bool withBytes)
    {
        trace_ = std::make_unique<FeedTrace>(
            names_, withBytes, [this](const std::string& line) { lines_.push_back(line); });
    }

    // Sent at `ms`; the reply comes 2 ms later.
    static Exchange exchangeAt(int ms, const std::vector<ReadElement>& elements = {{3000, 65535}})
    {
        Exchange exchange = madeRead(kReadWords, 1, elements, momentAt(ms + 2));
        exchange.sentAt = momentAt(ms);
        exchange.replyTimeoutMs = 500;
        return exchange;
    }

    static Exchange unansweredAt(int ms, ExchangeEnd end)
    {
        Exchange exchange = exchangeAt(ms);
        exchange.end = end;
        exchange.replySize = 0;
        return exchange;
    }

    void take(const Exchange& exchange)
    {
        FeedEntry entry = entryOf(exchange);
        entry.at = exchange.endedAt;
        setWall(entry);
        trace_->take(entry);
    }

    FeedEntry entryAt(int ms, FeedKind kind, const QString& text = QString())
    {
        FeedEntry entry;
        entry.kind = kind;
        entry.at = momentAt(ms);
        entry.text = text;
        setWall(entry);
        return entry;
    }

    void take(int ms, FeedKind kind, const QString& text = QString())
    {
        trace_->take(entryAt(ms, kind, text));
    }

    void takeStray(int ms, Stray stray, const std::vector<unsigned char>& bytes, int askedAtMs = 0)
    {
        FeedEntry entry = entryAt(ms, FeedKind::strayBytes);
        entry.stray = stray;
        entry.received = bytes;
        entry.askedAt = momentAt(askedAtMs);
        trace_->take(entry);
    }

    // The lines so far, without the day.
    std::string lines()
    {
        std::string text;
        for (const std::string& line : lines_) {
            text += line.substr(line.find(':') + 4) + "\n"; // from the seconds on
        }
        lines_.clear();
        return text;
    }

private:
    static void setWall(FeedEntry& entry)
    {
        entry.wall =
            kWall + std::chrono::duration_cast<WallClock::duration>(entry.at - momentAt(0));
    }

protected:
    project::ElementNames names_;
    std::unique_ptr<FeedTrace> trace_;
    std::vector<std::string> lines_;
};

std::vector<unsigned char> replyBytes()
{
    const Exchange made = madeRead(kReadWords, 1, {{3000, 7}}, momentAt(0));
    return {made.reply, made.reply + made.replyKept()};
}

} // namespace

TEST_F(FeedTraceTest, ARequestAndItsReplyEachHaveTheirTime)
{
    take(exchangeAt(10));
    EXPECT_EQ("40.010Z connection 0 > #4660 station 1 read words: Main.W\n"
              "40.012Z connection 0 < #4660 station 1 read words: Main.W=-1 (+2.000 ms)\n",
              lines());
}

TEST_F(FeedTraceTest, BytesStandBehindWhereTheyAreWanted)
{
    show(true);
    take(exchangeAt(10));
    EXPECT_EQ("40.010Z connection 0 > #4660 station 1 read words: Main.W | 12 34 00 00 00 07 01 66 "
              "01 00 00 0b b8\n"
              "40.012Z connection 0 < #4660 station 1 read words: Main.W=-1 (+2.000 ms) | 12 34 00 "
              "00 00 09 01 66 01 00 00 0b b8 ff ff\n",
              lines());
}

TEST_F(FeedTraceTest, ARepetitionSaysWhichAttemptItIs)
{
    Exchange exchange = exchangeAt(10);
    exchange.attempt = 3;
    take(exchange);
    EXPECT_NE(std::string::npos, lines().find("Main.W [attempt 3]\n"));
}

TEST_F(FeedTraceTest, AnExceptionIsToldInWords)
{
    Exchange exchange = exchangeAt(10);
    exchange.end = ExchangeEnd::exception;
    exchange.reply[wire::kFunctionOffset] |= wire::kExceptionBit;
    exchange.reply[wire::kCountOffset] = 2;
    exchange.replySize = wire::kHeaderBytes;
    take(exchange);
    EXPECT_NE(std::string::npos,
              lines().find("< #4660 station 1 read words: exception 2 (illegal data address) "
                           "(+2.000 ms)\n"));
}

TEST_F(FeedTraceTest, AReplyOfAnotherLengthIsMarked)
{
    Exchange exchange = exchangeAt(10);
    exchange.replySize -= 1;
    take(exchange);
    EXPECT_NE(std::string::npos, lines().find("read words: and 5 bytes [wrong length: 14 bytes "
                                              "instead of 15] (+2.000 ms)\n"));
}

TEST_F(FeedTraceTest, AReplyLongerThanWhatAnExchangeKeepsIsShownWhole)
{
    show(true);
    Exchange exchange = exchangeAt(10);
    FeedEntry entry = entryOf(exchange);
    entry.received.assign(300, 0xAB);
    entry.exchange.replySize = 300;
    trace_->take(entry);
    std::string bytes = " |";
    for (int i = 0; i < 300; ++i) {
        bytes += " ab";
    }
    EXPECT_NE(std::string::npos, lines().find(bytes + "\n"));
}

TEST_F(FeedTraceTest, NothingCame)
{
    take(unansweredAt(10, ExchangeEnd::timeout));
    EXPECT_EQ("40.010Z connection 0 > #4660 station 1 read words: Main.W\n"
              "40.012Z connection 0 - #4660 station 1 read words: the controller did not answer "
              "within 500 ms (+2.000 ms)\n",
              lines());
    take(20, FeedKind::gaveUp);
    EXPECT_EQ("40.020Z connection 0 - given up after 1 attempt\n", lines());
}

TEST_F(FeedTraceTest, WhatNeverLeftSaysWhy)
{
    take(5, FeedKind::connectFailed, "Connection refused");
    Exchange exchange = unansweredAt(10, ExchangeEnd::notSent);
    exchange.sentBytes = 0;
    take(exchange);
    exchange.end = ExchangeEnd::suppressed;
    take(exchange);
    EXPECT_EQ(
        "40.005Z connection 0 - cannot connect: Connection refused\n"
        "40.012Z connection 0 - #4660 station 1 read words: Main.W [not sent: no connection to "
        "the controller: Connection refused]\n"
        "40.012Z connection 0 - #4660 station 1 read words: Main.W [not sent: the station is "
        "switched off]\n",
        lines());
}

TEST_F(FeedTraceTest, PartOfARequestSaysHowMuchWasSent)
{
    Exchange exchange = unansweredAt(10, ExchangeEnd::lost);
    exchange.sentBytes = 4;
    show(true);
    take(exchange);
    EXPECT_NE(std::string::npos, lines().find("[4 bytes of it sent] | 12 34 00 00\n"));
}

TEST_F(FeedTraceTest, ConnectionsAreCountedAndSayTheirEnds)
{
    FeedEntry connected = entryAt(5, FeedKind::connected);
    wire::ConnectAttempt attempt;
    attempt.peer.host = "127.0.0.1";
    attempt.peer.port = 5020;
    attempt.local.host = "127.0.0.2";
    attempt.local.port = 40000;
    connected.attempts = std::make_shared<const std::vector<wire::ConnectAttempt>>(1, attempt);
    trace_->take(connected);
    take(exchangeAt(10));
    take(30, FeedKind::closed);
    EXPECT_EQ("40.005Z connection 1 - connected to 127.0.0.1:5020 from 127.0.0.2:40000\n"
              "40.010Z connection 1 > #4660 station 1 read words: Main.W\n"
              "40.012Z connection 1 < #4660 station 1 read words: Main.W=-1 (+2.000 ms)\n"
              "40.030Z connection 1 - the host closed the connection\n",
              lines());
    take(40, FeedKind::connected);
    EXPECT_EQ("40.040Z connection 2 - connected\n", lines());
}

TEST_F(FeedTraceTest, WhatCameDuringAnExchangeStandsBetweenRequestAndReply)
{
    takeStray(5, Stray::foreign, replyBytes());
    takeStray(11, Stray::late, replyBytes(), 1);
    takeStray(12, Stray::duplicate, replyBytes(), 2);
    EXPECT_EQ("", lines());
    Exchange exchange = exchangeAt(10);
    exchange.endedAt = momentAt(14);
    take(exchange);
    EXPECT_EQ("40.005Z connection 0 < #4660 station 1 read words: Main.W=7 [foreign]\n"
              "40.010Z connection 0 > #4660 station 1 read words: Main.W\n"
              "40.011Z connection 0 < #4660 station 1 read words: Main.W=7 [late] (+10.000 ms)\n"
              "40.012Z connection 0 < #4660 station 1 read words: Main.W=7 [duplicate] (+10.000 "
              "ms)\n"
              "40.014Z connection 0 < #4660 station 1 read words: Main.W=-1 (+4.000 ms)\n",
              lines());
}

TEST_F(FeedTraceTest, WhatCameBetweenExchangesIsShownWhenTheFeedSaysSo)
{
    takeStray(5, Stray::duplicate, replyBytes(), 2);
    trace_->quiet();
    EXPECT_EQ("", lines()) << "an exchange may be under way";
    take(6, FeedKind::framesDropped);
    EXPECT_EQ("40.005Z connection 0 < #4660 station 1 read words: Main.W=7 [duplicate] (+3.000 "
              "ms)\n",
              lines());
}

TEST_F(FeedTraceTest, ACutReplyIsShownAsFarAsItCame)
{
    std::vector<unsigned char> part = replyBytes();
    part.pop_back();
    takeStray(12, Stray::remainder, part);
    take(12, FeedKind::connectionLost, "a reply was cut off");
    take(unansweredAt(10, ExchangeEnd::cut));
    EXPECT_EQ("40.010Z connection 0 > #4660 station 1 read words: Main.W\n"
              "40.012Z connection 0 < #4660 station 1 read words: and 5 bytes [cut]\n"
              "40.012Z connection 0 - the connection was lost: a reply was cut off\n"
              "40.012Z connection 0 - #4660 station 1 read words: the controller's reply was cut "
              "off (+2.000 ms)\n",
              lines());
}

TEST_F(FeedTraceTest, BytesThatAreNoFrameAreCounted)
{
    takeStray(12, Stray::remainder, {'H', 'T', 'T', 'P', '/', '1', '.', '1', ' ', '4'});
    take(unansweredAt(10, ExchangeEnd::broken));
    EXPECT_EQ("40.010Z connection 0 > #4660 station 1 read words: Main.W\n"
              "40.012Z connection 0 < 10 bytes [no frame]\n"
              "40.012Z connection 0 - #4660 station 1 read words: the stream from the controller "
              "made no sense (+2.000 ms)\n",
              lines());
}

TEST_F(FeedTraceTest, ALostConnectionIsShownAtOnceWhenNothingWasInFlight)
{
    take(12, FeedKind::connectionLost, "the controller closed the connection");
    EXPECT_EQ("", lines());
    trace_->quiet();
    EXPECT_EQ("40.012Z connection 0 - the connection was lost: the controller closed the "
              "connection\n",
              lines());
    take(20, FeedKind::connectionLost, "again");
    trace_->end();
    EXPECT_EQ("40.020Z connection 0 - the connection was lost: again\n", lines());
}

TEST_F(FeedTraceTest, AGapIsALine)
{
    take(12, FeedKind::connectionLost, "x");
    trace_->gap(17);
    const std::string text = lines();
    EXPECT_EQ(0U, text.find("40.012Z connection 0 - the connection was lost: x\n"));
    EXPECT_NE(std::string::npos, text.find("connection 0 - missed 17\n"));
}

TEST_F(FeedTraceTest, HowThingsStandIsToldAgainOnlyWhenItIsNew)
{
    FeedEntry connected = entryAt(5, FeedKind::connected);
    connected.attempts = std::make_shared<const std::vector<wire::ConnectAttempt>>(1);
    trace_->take(connected);
    lines();
    connected.standing = true;
    trace_->take(connected);
    EXPECT_EQ("", lines());
    connected.attempts = std::make_shared<const std::vector<wire::ConnectAttempt>>(1);
    trace_->take(connected);
    EXPECT_EQ(0U, lines().find("40.005Z connection 2 - connected"));
}

} // namespace tavmir::host
