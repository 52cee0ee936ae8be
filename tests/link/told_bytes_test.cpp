// The link tells each byte that came, when it came, and between which ends: who keeps what the feed
// carries can show the whole conversation.
#include "support/wait_until.h"
#include "test_server.h"
#include "watched_link.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr int kPatientMs = 20000; // never reached when the test passes
constexpr int kShortMs = 60;      // always waited through

class ToldBytes : public testing::Test
{
protected:
    void linkTo(int port, int replyTimeoutMs = kPatientMs)
    {
        LinkOptions options;
        options.host = "127.0.0.1";
        options.port = port;
        options.connectTimeoutMs = kPatientMs;
        options.replyTimeoutMs = replyTimeoutMs;
        options.reconnectMinMs = 1;
        options.reconnectMaxMs = 4;
        watched_ = std::make_unique<WatchedLink>(options);
    }

    ExchangeEnd exchange(const QByteArray& request)
    {
        QByteArray reply;
        return watched_->exchange(request, reply);
    }

    std::vector<FeedEntry> toldOf(FeedKind kind) const
    {
        std::vector<FeedEntry> found;
        for (const FeedEntry& entry : watched_->told) {
            if (entry.kind == kind) {
                found.push_back(entry);
            }
        }
        return found;
    }

    std::vector<FeedEntry> strays() const { return toldOf(FeedKind::strayBytes); }

    std::unique_ptr<WatchedLink> watched_;
};

QByteArray bytesOf(const FeedEntry& entry)
{
    return QByteArray(reinterpret_cast<const char*>(entry.received.data()),
                      static_cast<int>(entry.received.size()));
}

} // namespace

TEST_F(ToldBytes, AConnectionsEndsAreNamed)
{
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); });
    linkTo(server.port());
    ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    ASSERT_EQ(1u, watched_->told.size());
    const FeedEntry& entry = watched_->told[0];
    ASSERT_TRUE(entry.attempts);
    ASSERT_EQ(1u, entry.attempts->size());
    const wire::ConnectAttempt& attempt = entry.attempts->back();
    EXPECT_EQ(0, attempt.error);
    EXPECT_EQ("127.0.0.1", attempt.local.host);
    EXPECT_GT(attempt.local.port, 0);
    EXPECT_EQ("127.0.0.1", attempt.peer.host);
    EXPECT_EQ(server.port(), attempt.peer.port);
    EXPECT_LE(attempt.began, attempt.ended);
    EXPECT_LE(attempt.ended, entry.at);
}

TEST_F(ToldBytes, AFailedAttemptNamesWhomItTriedAndWhy)
{
    const int port = closedPort();
    linkTo(port);
    ASSERT_EQ(ExchangeEnd::notSent, exchange(wordRequest(1)));
    ASSERT_EQ(1u, watched_->told.size());
    ASSERT_TRUE(watched_->told[0].attempts);
    const wire::ConnectAttempt& attempt = watched_->told[0].attempts->back();
    EXPECT_EQ(ECONNREFUSED, attempt.error);
    EXPECT_EQ("127.0.0.1", attempt.peer.host);
    EXPECT_EQ(port, attempt.peer.port);
}

TEST_F(ToldBytes, ALateReplyIsToldAsLateBeforeTheExchangeThatItDisturbs)
{
    QByteArray late;
    TestServer server([&](auto& client, const QByteArray& request, int number) {
        if (number == 1) {
            late = goodReply(request, 1);
            return;
        }
        client.send(late + goodReply(request, 2));
    });
    linkTo(server.port(), kShortMs);
    ASSERT_EQ(ExchangeEnd::timeout, exchange(wordRequest(1)));
    const Clock::time_point firstSentAt = watched_->last.sentAt;
    test::waitUntil([&] { return exchange(wordRequest(2)) == ExchangeEnd::reply; });
    ASSERT_FALSE(strays().empty());
    const FeedEntry stray = strays().front();
    EXPECT_EQ(Stray::late, stray.stray);
    EXPECT_EQ(goodReply(wordRequest(1), 1), bytesOf(stray));
    EXPECT_EQ(firstSentAt, stray.askedAt);
    EXPECT_GT(stray.at, firstSentAt);
}

TEST_F(ToldBytes, ADuplicateThatCameWithItsReplyIsStampedThen)
{
    TestServer server([](auto& client, const QByteArray& request, int number) {
        client.send(goodReply(request, number) +
                    (number == 1 ? goodReply(request, number) : QByteArray()));
    });
    linkTo(server.port());
    ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    const Clock::time_point endedAt = watched_->last.endedAt;
    const WallClock::time_point endedWall = watched_->last.endedWall;
    EXPECT_TRUE(strays().empty()) << "nobody has looked at it yet";
    ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(2)));
    ASSERT_EQ(1u, strays().size());
    const FeedEntry stray = strays().front();
    EXPECT_EQ(Stray::duplicate, stray.stray);
    EXPECT_EQ(goodReply(wordRequest(1), 1), bytesOf(stray));
    EXPECT_EQ(endedAt, stray.at);
    EXPECT_EQ(endedWall, stray.wall);
    EXPECT_LE(stray.at, watched_->last.sentAt);
}

TEST_F(ToldBytes, AFrameThatComesWhileNothingIsAskedIsToldBeforeItIsCounted)
{
    TestServer server([](auto& client, const QByteArray& request, int) {
        client.send(goodReply(request) + goodReply(wordRequest(99)));
    });
    linkTo(server.port());
    ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    ASSERT_TRUE(test::waitUntil([&] {
        watched_->link.idle(1);
        return watched_->figures.discarded == 1;
    }));
    ASSERT_EQ(1u, strays().size());
    EXPECT_EQ(Stray::foreign, strays()[0].stray);
    EXPECT_EQ(goodReply(wordRequest(99)), bytesOf(strays()[0]));
    const auto& told = watched_->told;
    const auto placeOf = [&](FeedKind kind) {
        return std::find_if(told.begin(), told.end(),
                            [&](const FeedEntry& entry) { return entry.kind == kind; });
    };
    EXPECT_LT(placeOf(FeedKind::strayBytes), placeOf(FeedKind::framesDropped));
}

TEST_F(ToldBytes, ACutReplyIsToldAsWhatCameOfItAndTheHostCloses)
{
    TestServer server([](auto& client, const QByteArray& request, int) {
        client.send(goodReply(request, 1).left(12));
    });
    linkTo(server.port(), kShortMs);
    ASSERT_EQ(ExchangeEnd::cut, exchange(wordRequest(1)));
    ASSERT_EQ(1u, strays().size());
    EXPECT_EQ(Stray::remainder, strays()[0].stray);
    EXPECT_EQ(goodReply(wordRequest(1), 1).left(12), bytesOf(strays()[0]));
    ASSERT_EQ(FeedKind::connectionLost, watched_->told.back().kind);
    EXPECT_EQ(ClosedBy::host, watched_->told.back().closedBy);
    const auto before = watched_->told.back().at - strays()[0].at;
    EXPECT_GT(before, std::chrono::milliseconds(kShortMs / 4))
        << "when it came, not when the wait ended";
}

TEST_F(ToldBytes, AStreamThatIsNoFrameIsToldAsItCame)
{
    const QByteArray noise(40, '\x55');
    TestServer server([&](auto& client, const QByteArray&, int) { client.send(noise); });
    linkTo(server.port());
    ASSERT_EQ(ExchangeEnd::broken, exchange(wordRequest(1)));
    ASSERT_EQ(1u, strays().size());
    EXPECT_EQ(Stray::remainder, strays()[0].stray);
    EXPECT_EQ(noise.left(static_cast<int>(strays()[0].received.size())), bytesOf(strays()[0]));
    EXPECT_EQ(watched_->last.receivedBytes, strays()[0].received.size());
}

TEST_F(ToldBytes, HalfAReplyAndAConnectionThatClosesAreBothTold)
{
    TestServer server([](auto& client, const QByteArray& request, int) {
        client.send(goodReply(request).left(3));
        client.close();
    });
    linkTo(server.port());
    ASSERT_EQ(ExchangeEnd::lost, exchange(wordRequest(1)));
    ASSERT_EQ(1u, strays().size());
    EXPECT_EQ(goodReply(wordRequest(1)).left(3), bytesOf(strays()[0]));
    EXPECT_EQ(FeedKind::connectionLost, watched_->told.back().kind);
    EXPECT_EQ(ClosedBy::controller, watched_->told.back().closedBy);
}

TEST_F(ToldBytes, TheHostsOwnCloseIsToldOnce)
{
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); });
    linkTo(server.port());
    watched_->link.close();
    EXPECT_TRUE(watched_->told.empty()) << "there was no connection";
    ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    watched_->link.close();
    watched_->link.close();
    ASSERT_EQ(2u, watched_->told.size());
    EXPECT_EQ(FeedKind::closed, watched_->told.back().kind);
    EXPECT_EQ(0u, watched_->figures.lostConnections);
}

TEST_F(ToldBytes, WhatCameOverAConnectionAddsUpToTheBytesReceived)
{
    TestServer server([](auto& client, const QByteArray& request, int number) {
        const QByteArray good = goodReply(request, number);
        client.send(number % 3 == 0 ? good + good : number % 5 == 0 ? good.left(11) : good);
    });
    linkTo(server.port(), kShortMs);
    size_t inReplies = 0;
    for (int id = 1; id <= 12; ++id) {
        exchange(wordRequest(id));
        inReplies += watched_->last.replySize;
    }
    watched_->link.close();
    size_t inStrays = 0;
    for (const FeedEntry& entry : strays()) {
        inStrays += entry.received.size();
    }
    EXPECT_EQ(watched_->figures.bytesReceived, inReplies + inStrays);
    EXPECT_GT(inStrays, 0u);
}

} // namespace tavmir::host
