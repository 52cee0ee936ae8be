// The link over real loopback sockets: matching, framing, time-outs, reconnecting.
#include "link/tcp_link.h"

#include "support/wait_until.h"
#include "test_server.h"
#include "watched_link.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

constexpr int kPatientMs = 20000; // never reached when the test passes
constexpr int kShortMs = 60;      // always waited through

// Listens on the loopback, puts its address into `address`, and accepts nobody. The caller closes
// it.
int deafListener(int waiting, sockaddr_in& address)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(0, ::bind(listener, reinterpret_cast<sockaddr*>(&address), size));
    EXPECT_EQ(0, ::listen(listener, waiting));
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    return listener;
}

class Link : public testing::Test
{
protected:
    TcpLink& linkTo(int port, int replyTimeoutMs = kPatientMs)
    {
        LinkOptions options;
        options.host = "127.0.0.1";
        options.port = port;
        options.connectTimeoutMs = kPatientMs;
        options.replyTimeoutMs = replyTimeoutMs;
        options.reconnectMinMs = 1;
        options.reconnectMaxMs = 4;
        watched_ = std::make_unique<WatchedLink>(options);
        link_ = &watched_->link;
        return *link_;
    }

    // Sends and returns the end; the reply is in reply_.
    ExchangeEnd exchange(const QByteArray& request)
    {
        reply_.clear();
        return watched_->exchange(request, reply_);
    }

    const LineFigures& figures() const { return watched_->figures; }

    // As a driver does: again and again until it is answered.
    ExchangeEnd exchangeUntilAnswered(const QByteArray& request)
    {
        ExchangeEnd result = ExchangeEnd::notSent;
        test::waitUntil([&] { return (result = exchange(request)) == ExchangeEnd::reply; });
        return result;
    }

    std::unique_ptr<WatchedLink> watched_;
    TcpLink* link_ = nullptr; // the watched one
    QByteArray reply_;
};

} // namespace

TEST_F(Link, ReplyOfTheRequestIsHandedOver)
{
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request, 7)); });
    linkTo(server.port());
    const QByteArray request = wordRequest(1, 2);
    EXPECT_EQ(ExchangeEnd::reply, exchange(request));
    EXPECT_EQ(goodReply(request, 7), reply_);
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(2)));
    EXPECT_EQ(1, server.connections());
    EXPECT_EQ(2u, figures().roundTrip.count());
    EXPECT_EQ(0u, figures().discarded);
    ASSERT_EQ(1u, watched_->told.size());
    EXPECT_EQ(FeedKind::connected, watched_->told[0].kind);
}

TEST_F(Link, BytesOneByOneMakeAReply)
{
    TestServer server([](auto& client, const QByteArray& request, int) {
        client.sendSlowly(goodReply(request));
    });
    linkTo(server.port());
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1, 38)));
    EXPECT_EQ(9 + 6 * 38, reply_.size());
}

TEST_F(Link, LateReplyIsDiscardedAndTheRightOneFollows)
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
    EXPECT_EQ(ExchangeEnd::timeout, exchange(wordRequest(1)));
    EXPECT_EQ(ExchangeEnd::reply, exchangeUntilAnswered(wordRequest(2)));
    EXPECT_EQ(goodReply(wordRequest(2), 2), reply_);
    EXPECT_GE(figures().discarded, 1u);
    EXPECT_GE(figures().timeouts, 1u);
    EXPECT_EQ(1, server.connections());
}

TEST_F(Link, DuplicateReplyIsDiscarded)
{
    TestServer server([](auto& client, const QByteArray& request, int number) {
        client.send(goodReply(request, number) + goodReply(request, number));
    });
    linkTo(server.port());
    for (int id = 1; id <= 5; ++id) {
        EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(id)));
        EXPECT_EQ(goodReply(wordRequest(id), id), reply_);
    }
    EXPECT_EQ(4u, figures().discarded);
}

TEST_F(Link, ReplyToAnotherTransactionStationOrFunctionIsDiscarded)
{
    TestServer server([](auto& client, const QByteArray& request, int) {
        for (const int place : {0, 1, 6, 7}) {
            QByteArray foreign = goodReply(request, 99);
            foreign[place] = static_cast<char>(foreign.at(place) + 1);
            client.send(foreign);
        }
        client.send(goodReply(request, 1));
    });
    linkTo(server.port());
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    EXPECT_EQ(goodReply(wordRequest(1), 1), reply_);
    EXPECT_EQ(4u, figures().discarded);
}

TEST_F(Link, ForeignFramesDoNotProlongTheWait)
{
    TestServer server([](auto& client, const QByteArray&, int) {
        for (int i = 0; i < 100; ++i) {
            client.send(goodReply(wordRequest(500 + i)));
        }
    });
    linkTo(server.port(), kShortMs);
    EXPECT_EQ(ExchangeEnd::timeout, exchange(wordRequest(1)));
    EXPECT_TRUE(link_->connected());
}

TEST_F(Link, ExceptionReplyIsNoReply)
{
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(exceptionTo(request, 3)); });
    linkTo(server.port());
    EXPECT_EQ(ExchangeEnd::exception, exchange(wordRequest(1)));
    QByteArray write = wordRequest(2);
    write[7] = 'g';
    EXPECT_EQ(ExchangeEnd::exception, exchange(write)); // as long as a write's acknowledgement
    EXPECT_EQ(exceptionTo(write, 3), reply_) << "for whoever shows frames";
    EXPECT_EQ(2u, figures().exceptions);
    EXPECT_TRUE(link_->connected());
}

TEST_F(Link, WrongLengthIsLeftToTheDriver)
{
    TestServer server([](auto& client, const QByteArray& request, int number) {
        const QByteArray right = goodReply(request).mid(9);
        client.send(replyTo(request, number == 1 ? right.left(1) : right + QByteArray(994, 'x')));
    });
    linkTo(server.port());
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    EXPECT_EQ(10, reply_.size());
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(2)));
    EXPECT_EQ(1009, reply_.size());
}

TEST_F(Link, StreamThatIsNoFrameIsClosedAndReplaced)
{
    TestServer server([](auto& client, const QByteArray& request, int number) {
        QByteArray reply = goodReply(request);
        reply[number == 1 ? 2 : 4] = '\x7f'; // protocol id, then length
        client.send(number <= 2 ? reply : goodReply(request));
    });
    linkTo(server.port());
    EXPECT_EQ(ExchangeEnd::broken, exchange(wordRequest(1)));
    EXPECT_EQ(ExchangeEnd::broken, exchange(wordRequest(1)));
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    EXPECT_EQ(2u, figures().brokenStreams);
    EXPECT_EQ(3, server.connections());
}

// The repeated request has the same transaction id: joined to the rest of the cut reply, the
// second reply's bytes would make a frame of the right length with wrong values.
TEST_F(Link, CutReplyIsNeverCompletedByTheNextOne)
{
    TestServer server([](auto& client, const QByteArray& request, int number) {
        const QByteArray reply = goodReply(request, 0x1234);
        client.send(number == 1 ? reply.left(15) : reply);
    });
    linkTo(server.port(), kShortMs);
    const QByteArray request = wordRequest(1, 2);
    EXPECT_EQ(ExchangeEnd::cut, exchange(request));
    EXPECT_FALSE(link_->connected());
    EXPECT_EQ(ExchangeEnd::reply, exchangeUntilAnswered(request));
    EXPECT_EQ(goodReply(request, 0x1234), reply_);
    EXPECT_EQ(2, server.connections());
    EXPECT_EQ(1u, figures().brokenStreams);
}

TEST_F(Link, ConnectionClosedInsteadOfAReplyComesBack)
{
    TestServer server([](auto& client, const QByteArray& request, int number) {
        if (number == 1) {
            client.close();
            return;
        }
        client.send(goodReply(request));
    });
    linkTo(server.port());
    EXPECT_EQ(ExchangeEnd::lost, exchange(wordRequest(1)));
    EXPECT_EQ("the controller closed the connection", link_->problem().toStdString());
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    EXPECT_EQ(1u, figures().lostConnections);
    ASSERT_EQ(3u, watched_->told.size());
    EXPECT_EQ(FeedKind::connectionLost, watched_->told[1].kind);
    EXPECT_EQ("the controller closed the connection", watched_->told[1].text.toStdString());
    EXPECT_EQ(FeedKind::connected, watched_->told[2].kind);
}

TEST_F(Link, AbsentControllerIsToldEachTimeAndTriedAgain)
{
    const int port = closedPort();
    linkTo(port);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(ExchangeEnd::notSent, exchange(wordRequest(1)));
    }
    EXPECT_EQ(5u, figures().connectFailures);
    ASSERT_EQ(5u, watched_->told.size());
    EXPECT_EQ(FeedKind::connectFailed, watched_->told[0].kind);
    const std::string why = "127.0.0.1:" + std::to_string(port) + ": Connection refused";
    EXPECT_EQ(why, watched_->told[0].text.toStdString());
    EXPECT_EQ(why, link_->problem().toStdString());
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); },
        port);
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    EXPECT_EQ(6u, watched_->told.size());
}

TEST_F(Link, DisconnectedRequestsAreAnsweredWithinTheReplyTimeout)
{
    LinkOptions options;
    options.host = "127.0.0.1";
    options.port = closedPort();
    options.replyTimeoutMs = kShortMs;
    options.reconnectMinMs = kPatientMs;
    options.reconnectMaxMs = kPatientMs;
    watched_ = std::make_unique<WatchedLink>(options);
    exchange(wordRequest(1)); // the first attempt comes at once, the second after the pause
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(ExchangeEnd::notSent, exchange(wordRequest(1)));
    const auto took = Clock::now() - start;
    EXPECT_GE(took, std::chrono::milliseconds(kShortMs)); // it must not spin
    EXPECT_LT(took, std::chrono::milliseconds(kPatientMs / 2)) << "nor wait for the next attempt";
    EXPECT_EQ(1u, figures().connectFailures);
}

TEST_F(Link, StopEndsEveryWait)
{
    TestServer server([](auto&, const QByteArray&, int) {});
    linkTo(server.port());
    std::thread stopper([&] {
        test::waitUntil([&] { return server.requests() > 0; });
        link_->stop();
    });
    EXPECT_EQ(ExchangeEnd::stopped, exchange(wordRequest(1)));
    stopper.join();
    EXPECT_EQ(ExchangeEnd::stopped, exchange(wordRequest(1)));
    link_->idle(kPatientMs);
    link_->close();
    EXPECT_EQ(ExchangeEnd::stopped, exchange(wordRequest(1)));
    link_->idle(kPatientMs);
}

TEST_F(Link, WakeEndsIdlingButNoRequest)
{
    TestServer server(
        [](auto& client, const QByteArray& request, int) { client.send(goodReply(request)); });
    linkTo(server.port());
    link_->wake();
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    link_->idle(kPatientMs); // the wake is still there
    link_->wake();
    link_->idle(kPatientMs);
    link_->close();
    link_->wake();
    link_->idle(kPatientMs);
    EXPECT_EQ(1, server.requests());
}

TEST_F(Link, AFloodOfFramesDoesNotProlongIdling)
{
    const int kFrames = 2000;
    std::atomic<bool> sent{false};
    TestServer server([&](auto& client, const QByteArray& request, int) {
        client.send(goodReply(request) + goodReply(wordRequest(7)).repeated(kFrames));
        sent = true;
    });
    linkTo(server.port());
    ASSERT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    ASSERT_TRUE(test::waitUntil([&] { return sent.load(); }));
    link_->idle(0); // no time at all: what has come is looked at once
    EXPECT_GT(figures().discarded, 0u);
    EXPECT_LT(figures().discarded, static_cast<uint64_t>(kFrames));
    EXPECT_TRUE(link_->connected());
}

TEST_F(Link, StopEndsAWaitForRoomToSend)
{
    // Nothing is taken off the line, so that at last a request finds no room.
    sockaddr_in address = {};
    const int listener = deafListener(1, address);
    linkTo(ntohs(address.sin_port), 1000 * kPatientMs);
    std::thread stopper([&] {
        test::waitUntil([&] { return watched_->connects > 0; });
        link_->stop();
    });
    // More than a socket's buffers hold.
    EXPECT_EQ(ExchangeEnd::stopped, exchange(wordRequest(1) + QByteArray(64 << 20, '\0')));
    stopper.join();
    ::close(listener);
}

TEST_F(Link, IdlingNoticesThatTheControllerIsGone)
{
    TestServer server([](auto& client, const QByteArray& request, int) {
        client.send(goodReply(request) + goodReply(request)); // the second is for nobody
        client.close();
    });
    linkTo(server.port());
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    EXPECT_TRUE(test::waitUntil([&] {
        link_->idle(kShortMs);
        return !link_->connected();
    }));
    EXPECT_EQ(1u, figures().discarded);
}

TEST_F(Link, IdlingDropsABrokenStream)
{
    TestServer server([](auto& client, const QByteArray& request, int) {
        client.send(goodReply(request) + QByteArray(20, '\x55'));
    });
    linkTo(server.port());
    EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(1)));
    EXPECT_TRUE(test::waitUntil([&] {
        link_->idle(kShortMs);
        return !link_->connected();
    }));
    EXPECT_EQ(1u, figures().brokenStreams);
}

TEST_F(Link, TransactionIdsMayWrap)
{
    TestServer server([](auto& client, const QByteArray& request, int number) {
        client.send(goodReply(request, number & 0xFF));
    });
    linkTo(server.port());
    for (const int id : {65534, 65535, 0, 1}) {
        EXPECT_EQ(ExchangeEnd::reply, exchange(wordRequest(id)));
    }
    EXPECT_EQ(0u, figures().discarded);
}

} // namespace tavmir::host
