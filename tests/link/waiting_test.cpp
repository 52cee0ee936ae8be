// How long the link waits, counted in attempts and requests: a wait that is left out or ends too
// early shows as too many of them, one that is too long runs into the test's patience.
#include "watched_link.h"

#include "support/wait_until.h"
#include "test_server.h"
#include "wire/loopback_listener.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

constexpr int kPatientMs = 20000; // never reached when the test passes
constexpr int kShortMs = 60;      // always waited through

using std::chrono::milliseconds;

class LinkWaits : public testing::Test
{
protected:
    void linkTo(int port, int replyTimeoutMs, int pauseMinMs, int pauseMaxMs)
    {
        LinkOptions options;
        options.host = "127.0.0.1";
        options.port = port;
        options.connectTimeoutMs = kPatientMs;
        options.replyTimeoutMs = replyTimeoutMs;
        options.reconnectMinMs = pauseMinMs;
        options.reconnectMaxMs = pauseMaxMs;
        link_ = std::make_unique<WatchedLink>(options);
    }

    ExchangeEnd exchange(const QByteArray& request)
    {
        reply_.clear();
        return link_->exchange(request, reply_);
    }

    // An attempt to connect without a request.
    bool reconnects() { return link_->link.reconnect(); }

    const LineFigures& figures() const { return link_->figures; }

    static Clock::duration since(Clock::time_point start) { return Clock::now() - start; }

    std::unique_ptr<WatchedLink> link_;
    QByteArray reply_;
};

} // namespace

TEST_F(LinkWaits, AttemptsToConnectKeepTheirPauses)
{
    constexpr int kPauseMs = 40;
    linkTo(closedPort(), kPatientMs, kPauseMs, kPauseMs);
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(ExchangeEnd::notSent, exchange(wordRequest(1)));
    }
    EXPECT_EQ(6u, figures().connectFailures);
    EXPECT_GE(since(start), milliseconds(5 * kPauseMs * 3 / 4)); // three quarters is the shortest
}

TEST_F(LinkWaits, PausesGrowFromLossToLoss)
{
    // A pause of 20, 40, 80 and then 160 ms, each three quarters of it at least.
    linkTo(closedPort(), kPatientMs, 20, 160);
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(ExchangeEnd::notSent, exchange(wordRequest(1)));
    }
    EXPECT_GE(since(start), milliseconds((20 + 40 + 80 + 160 + 160) * 3 / 4));
}

TEST_F(LinkWaits, PausesAreShortAgainOnlyAfterAReply)
{
    // Each connection is closed before it has carried a reply, so the pauses grow all the same.
    TestServer server([](auto& client, const QByteArray&, int) { client.close(); });
    linkTo(server.port(), kPatientMs, 20, 160);
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(ExchangeEnd::lost, exchange(wordRequest(1)));
    }
    EXPECT_EQ(6, server.connections());
    EXPECT_GE(since(start), milliseconds((20 + 40 + 80 + 160 + 160) * 3 / 4));
}

TEST_F(LinkWaits, AReplyMakesThePausesShort)
{
    // The second request of each connection ends it: with pauses that grew, twenty losses would
    // take longer than anybody waits.
    TestServer server([](auto& client, const QByteArray& request, int number) {
        if (number % 2 == 0) {
            client.close();
            return;
        }
        client.send(goodReply(request));
    });
    linkTo(server.port(), 1000 * kPatientMs, 1, 1000 * kPatientMs);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(2 * i)));
        EXPECT_EQ(ExchangeEnd::lost, exchange(wordRequest(2 * i + 1)));
    }
    EXPECT_EQ(20, server.connections());
    EXPECT_EQ(20u, figures().lostConnections);
}

TEST_F(LinkWaits, ReconnectWaitsOutThePauseAndMakesOneAttempt)
{
    constexpr int kPauseMs = 40;
    const int port = closedPort();
    linkTo(port, kPatientMs, kPauseMs, kPauseMs);
    const Clock::time_point start = Clock::now();
    for (int i = 1; i <= 4; ++i) {
        EXPECT_FALSE(reconnects());
        EXPECT_EQ(static_cast<quint64>(i), figures().connectFailures);
    }
    EXPECT_GE(since(start), milliseconds(3 * kPauseMs * 3 / 4));
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); },
        port);
    EXPECT_TRUE(reconnects());
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    EXPECT_EQ(1, server.connections());
}

TEST_F(LinkWaits, NewWorkDoesNotShortenThePauseBeforeAnAttempt)
{
    constexpr int kPauseMs = 80;
    linkTo(closedPort(), kPatientMs, kPauseMs, kPauseMs);
    EXPECT_FALSE(reconnects());
    const Clock::time_point start = Clock::now();
    link_->link.wake();
    EXPECT_FALSE(reconnects());
    EXPECT_GE(since(start),
              milliseconds(kPauseMs / 2)); // three quarters of it, but for what had passed
    EXPECT_EQ(2u, figures().connectFailures);
}

TEST_F(LinkWaits, StopEndsALongReconnect)
{
    linkTo(closedPort(), kPatientMs, 900 * kPatientMs, 900 * kPatientMs);
    EXPECT_FALSE(reconnects());
    std::thread stopper([&] { link_->link.stop(); });
    EXPECT_FALSE(reconnects());
    stopper.join();
    EXPECT_EQ(1u, figures().connectFailures);
}

TEST_F(LinkWaits, WakeDoesNotEndTheWaitForAReply)
{
    TestServer server([](auto&, const QByteArray&, int) {});
    linkTo(server.port(), 4 * kShortMs, 1, 1);
    const Clock::time_point start = Clock::now();
    std::thread waker([&] {
        test::waitUntil([&] { return server.requests() > 0; });
        link_->link.wake();
    });
    EXPECT_EQ(ExchangeEnd::timeout, exchange(wordRequest(1)));
    EXPECT_GE(since(start), milliseconds(4 * kShortMs));
    waker.join();
}

TEST_F(LinkWaits, IdlingLastsItsTimeWithAndWithoutAConnection)
{
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); });
    linkTo(server.port(), kPatientMs, 1, 1);
    for (int round = 0; round < 2; ++round) {
        const Clock::time_point start = Clock::now();
        link_->link.idle(kShortMs);
        EXPECT_GE(since(start), milliseconds(kShortMs));
        ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    }
}

TEST_F(LinkWaits, WakeFromAnotherThreadEndsALongIdle)
{
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); });
    linkTo(server.port(), kPatientMs, 1, 1);
    for (int round = 0; round < 50; ++round) {
        std::thread waker([&] { link_->link.wake(); });
        link_->link.idle(1000 * kPatientMs);
        waker.join();
        if (round == 25) {
            ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
        }
    }
}

TEST_F(LinkWaits, StopEndsThePauseBetweenAttempts)
{
    linkTo(closedPort(), 1000 * kPatientMs, 900 * kPatientMs, 900 * kPatientMs);
    EXPECT_EQ(ExchangeEnd::notSent, exchange(wordRequest(1)));
    std::thread stopper([&] { link_->link.stop(); });
    EXPECT_EQ(ExchangeEnd::stopped, exchange(wordRequest(1)));
    stopper.join();
    EXPECT_EQ(1u, figures().connectFailures);
}

TEST_F(LinkWaits, RepliesThatAlwaysComeOneRequestLateAreNeverTaken)
{
    QByteArray late;
    TestServer server([&](auto& client, const QByteArray& request, int) {
        if (!late.isEmpty()) {
            client.send(late);
        }
        late = goodReply(request, 9);
    });
    linkTo(server.port(), 5 * kShortMs, 1, 1);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(ExchangeEnd::timeout, exchange(wordRequest(i)));
    }
    EXPECT_EQ(5u, figures().discarded);
    EXPECT_EQ(6u, figures().timeouts);
    EXPECT_EQ(1, server.connections());
}

TEST_F(LinkWaits, BytesAreCountedOneByOne)
{
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); });
    linkTo(server.port(), kPatientMs, 1, 1);
    uint64_t sent = 0;
    uint64_t received = 0;
    for (const int count : {1, 2, 37, 38}) {
        const QByteArray request = wordRequest(count, count);
        EXPECT_EQ(ExchangeEnd::reply, exchange(request));
        sent += static_cast<uint64_t>(request.size());
        received += static_cast<uint64_t>(reply_.size());
    }
    EXPECT_EQ(sent, figures().bytesSent);
    EXPECT_EQ(received, figures().bytesReceived);
    EXPECT_EQ(4u, figures().roundTrip.count());
}

TEST_F(LinkWaits, AWakeEndsOneIdleWithAndWithoutAConnection)
{
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); });
    linkTo(server.port(), kPatientMs, 1, 1);
    for (int round = 0; round < 2; ++round) {
        link_->link.wake();
        link_->link.idle(1000 * kPatientMs);
        const Clock::time_point start = Clock::now();
        link_->link.idle(kShortMs);
        EXPECT_GE(since(start), milliseconds(kShortMs));
        ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    }
}

TEST_F(LinkWaits, AFloodOfForeignFramesDoesNotHoldARequest)
{
    std::atomic<bool> over{false};
    TestServer server([&](auto& client, const QByteArray&, int) {
        const QByteArray foreign = goodReply(wordRequest(500)).repeated(20000);
        while (!over) {
            client.send(foreign);
        }
    });
    linkTo(server.port(), kShortMs, 1, 1);
    const ExchangeEnd end = exchange(wordRequest(1));
    EXPECT_TRUE(end == ExchangeEnd::timeout || end == ExchangeEnd::cut);
    over = true;
    link_->link.close();
}

TEST_F(LinkWaits, TheTimeOfAnExchangeBeginsWhenConnected)
{
    constexpr int kPauseMs = 1000;
    const int port = closedPort();
    linkTo(port, kPatientMs, kPauseMs, kPauseMs);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(ExchangeEnd::notSent, exchange(wordRequest(1)));
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); },
        port);
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    EXPECT_GE(link_->last.sentAt - start, milliseconds(kPauseMs * 3 / 4));
}

TEST_F(LinkWaits, AStopWhileConnectingIsNoFailure)
{
    test::LoopbackListener deaf;
    deaf.goDeaf();
    linkTo(deaf.port(), kPatientMs, 1, 1);
    std::thread stopper([&] {
        std::this_thread::sleep_for(milliseconds(4 * kShortMs)); // until it connects
        link_->link.stop();
    });
    EXPECT_EQ(ExchangeEnd::stopped, exchange(wordRequest(1)));
    stopper.join();
    EXPECT_EQ(0u, figures().connectFailures);
}

TEST_F(LinkWaits, ARequestThatIsNotTakenWholeIsLostWithItsConnection)
{
    test::LoopbackListener reader; // that never reads
    linkTo(reader.port(), 2 * kShortMs, 1, 1);
    const QByteArray request = wordRequest(1).leftJustified(64 << 20, 'x');
    EXPECT_EQ(ExchangeEnd::lost, exchange(request));
    EXPECT_FALSE(link_->link.connected());
    EXPECT_EQ(1u, figures().lostConnections);
    EXPECT_LT(0u, link_->last.sentBytes);
    EXPECT_GT(static_cast<quint32>(request.size()), link_->last.sentBytes);
}

TEST_F(LinkWaits, ARequestThatIsTakenPieceByPieceComesWhole)
{
    test::LoopbackListener listener;
    QByteArray request = wordRequest(1);
    for (int i = 0; request.size() < 16 << 20; ++i) {
        request.append(static_cast<char>(i % 251));
    }
    QByteArray came;
    std::thread reader([&] {
        const int accepted = listener.accept();
        char piece[65536];
        while (came.size() < request.size()) {
            const ssize_t got = ::read(accepted, piece, sizeof piece);
            if (got <= 0) {
                break;
            }
            came.append(piece, static_cast<int>(got));
        }
        ::close(accepted);
    });
    linkTo(listener.port(), kPatientMs, 1, 1);
    EXPECT_EQ(ExchangeEnd::lost, exchange(request));
    reader.join();
    EXPECT_TRUE(request == came);
}

TEST_F(LinkWaits, BytesOfAReplyInPiecesAreAllCounted)
{
    TestServer server([](auto& client, const QByteArray& request, int) {
        client.sendSlowly(goodReply(request));
    });
    linkTo(server.port(), kPatientMs, 1, 1);
    uint64_t received = 0;
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(i, 38)));
        received += static_cast<uint64_t>(reply_.size());
    }
    EXPECT_EQ(received, figures().bytesReceived);
}

TEST_F(LinkWaits, EachFrameThatComesWhileIdleIsCounted)
{
    constexpr int kStrays = 7;
    TestServer server([](auto& client, const QByteArray& request, int) {
        client.send(goodReply(request) + goodReply(wordRequest(500)).repeated(kStrays));
    });
    linkTo(server.port(), kPatientMs, 1, 1);
    ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    const auto size = static_cast<uint64_t>(reply_.size());
    EXPECT_TRUE(test::waitUntil([&] {
        link_->link.idle(kShortMs);
        return figures().bytesReceived == (1 + kStrays) * size;
    }));
    EXPECT_EQ(static_cast<quint64>(kStrays), figures().discarded);
}

TEST_F(LinkWaits, AnExchangeSaysNothingOfTheOneBefore)
{
    TestServer server([](auto& client, const QByteArray& request, int number) {
        if (number == 1) {
            client.send(goodReply(wordRequest(500)).repeated(3) + goodReply(request));
        }
    });
    linkTo(server.port(), 4 * kShortMs, 1, 1);
    const QByteArray request = wordRequest(1);
    const auto size = static_cast<size_t>(request.size());
    Exchange exchange;
    ASSERT_EQ(ExchangeEnd::reply,
              link_->link.exchange(request.constData(), size, reply_, exchange));
    EXPECT_EQ(3u, exchange.foreignFrames);
    EXPECT_LT(0u, exchange.replySize);
    ASSERT_EQ(ExchangeEnd::timeout,
              link_->link.exchange(request.constData(), size, reply_, exchange));
    EXPECT_EQ(0u, exchange.foreignFrames);
    EXPECT_EQ(0u, exchange.replySize);
    EXPECT_EQ(0u, exchange.receivedBytes);
}

} // namespace tavmir::host
