// What one client may take: bytes, time and room, each with its end.
#include "running_page.h"

#include "support/wait_until.h"

#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <thread>
#include <vector>

namespace tavmir::page
{

namespace
{

using test::waitUntil;

// Waited through by a client that must have sent something by then.
constexpr std::chrono::milliseconds kSentByThen(2000);

class Limits : public RunningPage
{
protected:
    // Time in which every limit of kSoon has passed on the server, or one of `limit`.
    void letTimePass(std::chrono::milliseconds limit = kSoon)
    {
        std::this_thread::sleep_for(limit - kSoon);
        const int looks = content.looks();
        EXPECT_TRUE(waitUntil([&] { return content.looks() > looks + 30; }));
    }

    static bool hasReply(TestClient& client)
    {
        pollfd waiting = {client.descriptor(), POLLIN, 0};
        return ::poll(&waiting, 1, 5) > 0;
    }

    static std::string orderHead(const TestClient& client)
    {
        return "POST /api/v1/write HTTP/1.1\r\nHost: " + client.host() + "\r\n" + kBearerJson;
    }
};

TEST_F(Limits, ThirtyThirdClientIsTurnedAway)
{
    const unsigned short port = start();
    std::vector<std::unique_ptr<TestClient>> clients;
    for (int i = 0; i < 32; ++i) {
        clients.push_back(std::make_unique<TestClient>(port));
    }
    ASSERT_TRUE(waitUntil([&] { return server->clients() == 32; }));
    TestClient more(port);
    Reply reply = more.get("/");
    EXPECT_EQ(reply.status, 503);
    EXPECT_EQ(reply.headers["connection"], "close");
    EXPECT_TRUE(more.isEnded());
    EXPECT_EQ(clients.front()->get("/").status, 200);
    EXPECT_EQ(server->clients(), 32);
}

TEST_F(Limits, ClientThatGoesMakesRoom)
{
    limits().clients = 1;
    const unsigned short port = start();
    {
        TestClient first(port);
        ASSERT_TRUE(waitUntil([&] { return server->clients() == 1; }));
    }
    ASSERT_TRUE(waitUntil([&] { return server->clients() == 0; }));
    TestClient second(port);
    EXPECT_EQ(second.get("/").status, 200);
}

TEST_F(Limits, IdleClientMakesRoom)
{
    limits().clients = 2;
    const unsigned short port = start();
    TestClient busy(port);
    busy.send("GET / HTTP");
    TestClient idle(port);
    EXPECT_EQ(idle.get("/").status, 200);
    TestClient next(port);
    EXPECT_EQ(next.get("/").status, 200);
    EXPECT_TRUE(idle.isEnded());
    busy.send("/1.1\r\nHost: " + busy.host() + "\r\n\r\n");
    EXPECT_EQ(busy.reply().status, 200);
}

TEST_F(Limits, ManyMoreThanThirtyTwoAreTurnedAwayWithoutHarm)
{
    limits().clients = 2;
    const unsigned short port = start();
    std::vector<std::unique_ptr<TestClient>> clients;
    for (int i = 0; i < 100; ++i) {
        clients.push_back(std::make_unique<TestClient>(port));
    }
    ASSERT_TRUE(waitUntil([&] { return server->clients() == 2; }));
    EXPECT_TRUE(clients.back()->isEnded());
    EXPECT_EQ(clients.front()->get("/").status, 200);
}

TEST_F(Limits, HeaderTooLong)
{
    const unsigned short port = start();
    TestClient fits(port);
    EXPECT_EQ(fits.get("/", "X-Long: " + std::string(8000, 'x') + "\r\n").status, 200);
    for (const std::size_t length : {8192, 20000, 1000000}) {
        TestClient client(port);
        EXPECT_EQ(client.get("/", "X-Long: " + std::string(length, 'x') + "\r\n").status, 431);
    }
    TestClient target(port);
    EXPECT_EQ(target.get("/" + std::string(10000, 'x')).status, 431);
}

TEST_F(Limits, ManyHeaderLinesAreTooLongToo)
{
    TestClient client(start());
    std::string lines;
    for (int i = 0; i < 3000; ++i) {
        lines += "A: b\r\n";
    }
    EXPECT_EQ(client.get("/", lines).status, 431);
}

TEST_F(Limits, BodyTooLong)
{
    const unsigned short port = start();
    TestClient fits(port);
    const std::string most(64 * 1024, ' ');
    EXPECT_EQ(fits.post("/api/v1/write", most, kBearerJson).body, most);
    TestClient client(port);
    EXPECT_EQ(client.post("/api/v1/write", most + " ", kBearerJson).status, 413);
    EXPECT_TRUE(client.isEnded());
}

TEST_F(Limits, AnnouncedLengthIsEnough)
{
    TestClient client(start());
    client.send(orderHead(client) + "Content-Length: 99999999999\r\n\r\n");
    EXPECT_EQ(client.reply().status, 413);
}

TEST_F(Limits, BodyInChunksTooLong)
{
    TestClient client(start());
    client.send(orderHead(client) + "Transfer-Encoding: chunked\r\n\r\n");
    const std::string chunk = "4000\r\n" + std::string(0x4000, ' ') + "\r\n";
    for (int i = 0; i < 5; ++i) {
        client.send(chunk);
    }
    EXPECT_EQ(client.reply().status, 413);
    EXPECT_TRUE(client.isEnded());
}

TEST_F(Limits, BodyOfAForeignNameIsNotLookedAt)
{
    TestClient client(start());
    client.send("POST /api/v1/write HTTP/1.1\r\nHost: evil.example\r\nContent-Length: "
                "99999999999\r\n\r\n");
    EXPECT_EQ(client.reply().status, 421);
}

TEST_F(Limits, HeaderThatDoesNotComeInTime)
{
    limits().headerTime = kSentByThen;
    TestClient client(start());
    client.send("GET / HTTP/1.1\r\nHo");
    EXPECT_EQ(client.reply().status, 408);
    EXPECT_TRUE(client.isEnded());
}

TEST_F(Limits, HeaderThatComesInDropsHasNoMoreTime)
{
    limits().headerTime = kSentByThen;
    TestClient client(start());
    client.send("GET / HTTP/1.1\r\nX: ");
    while (!hasReply(client)) {
        client.send("x");
    }
    EXPECT_EQ(client.reply().status, 408);
}

TEST_F(Limits, WhoSaysNothingIsDropped)
{
    limits().headerTime = kSoon;
    TestClient client(start());
    EXPECT_TRUE(client.isEnded());
    EXPECT_TRUE(waitUntil([&] { return server->clients() == 0; }));
}

TEST_F(Limits, SecondHeaderHasAsMuchTimeAsTheFirst)
{
    limits().headerTime = kSentByThen;
    limits().lookUnheard = limits().lookEvery;
    TestClient client(start());
    EXPECT_EQ(client.get("/").status, 200);
    letTimePass(kSentByThen); // idle is not late
    client.send("G");
    EXPECT_EQ(client.reply().status, 408);
}

TEST_F(Limits, BodyThatDoesNotComeInTime)
{
    limits().bodyTime = kSoon;
    TestClient client(start());
    client.send(orderHead(client) + "Content-Length: 10\r\n\r\n{");
    EXPECT_EQ(client.reply().status, 408);
    EXPECT_TRUE(client.isEnded());
}

TEST_F(Limits, IdleConnectionIsEnded)
{
    limits().idleTime = kSoon;
    TestClient client(start());
    EXPECT_EQ(client.get("/").status, 200);
    EXPECT_TRUE(client.isEnded());
}

TEST_F(Limits, OrderThatIsNeverAnswered)
{
    limits().answerTime = kSoon;
    TestClient client(start());
    EXPECT_EQ(client.post("/api/v1/later", "{}", kBearerJson).status, 504);
    content.takeWaiting()(Answer()); // too late
    EXPECT_TRUE(client.isEnded());
}

TEST_F(Limits, SlowReaderOfTooMuchIsDropped)
{
    limits().unreadTime = kSoon;
    const unsigned short port = start();
    TestClient client(port, 4096);
    client.send("GET /api/v1/long?bytes=4000000 HTTP/1.1\r\nHost: " + client.host() + "\r\n" +
                kBearer + "\r\n");
    TestClient other(port);
    EXPECT_EQ(other.get("/api/v1/status", kBearer).status, 200);
    EXPECT_TRUE(waitUntil([&] { return server->clients() == 1; }));
}

TEST_F(Limits, SlowReaderOfLittleHasMoreTime)
{
    limits().unreadTime = kSoon;
    limits().lookUnheard = limits().lookEvery;
    TestClient client(start(), 4096);
    client.send("GET /api/v1/long?bytes=1000000 HTTP/1.1\r\nHost: " + client.host() + "\r\n" +
                kBearer + "\r\n");
    letTimePass();
    EXPECT_EQ(client.reply().body.size(), 1000000U);
}

TEST_F(Limits, ReaderThatGetsOnIsNotDroppedHoweverMuchThereIs)
{
    limits().unreadTime = std::chrono::milliseconds(5000); // no pause of this test is that long
    TestClient client(start(), 65536);
    client.send("GET /api/v1/long?bytes=20000000 HTTP/1.1\r\nHost: " + client.host() +
                "\r\nConnection: close\r\n" + kBearer + "\r\n");
    const auto begin = std::chrono::steady_clock::now();
    std::vector<char> piece(1 << 20);
    std::size_t came = 0;
    for (;;) {
        const ssize_t count = ::recv(client.descriptor(), piece.data(), piece.size(), MSG_WAITALL);
        if (count <= 0) {
            break;
        }
        came += static_cast<std::size_t>(count);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
    }
    EXPECT_GT(came, 20000000U);
    EXPECT_GT(std::chrono::steady_clock::now() - begin, limits().unreadTime);
}

TEST_F(Limits, SlowReaderOfLittleIsDroppedInTheEnd)
{
    limits().sendTime = kSoon;
    TestClient client(start(), 4096);
    client.send("GET /api/v1/long?bytes=1000000 HTTP/1.1\r\nHost: " + client.host() + "\r\n" +
                kBearer + "\r\n");
    EXPECT_TRUE(waitUntil([&] { return content.looks() > 0 && server->clients() == 0; }));
}

TEST_F(Limits, RequestsAheadOfAnswersDoNotPileUp)
{
    const unsigned short port = start();
    TestClient client(port, 4096);
    const std::string request = "GET /api/v1/long?bytes=900000 HTTP/1.1\r\nHost: " + client.host() +
                                "\r\n" + kBearer + "\r\n";
    for (int i = 0; i < 20; ++i) {
        client.send(request);
    }
    TestClient other(port);
    EXPECT_EQ(other.get("/api/v1/status", kBearer).status, 200);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(client.reply().body.size(), 900000U);
    }
}

TEST_F(Limits, HalfOpenConnectionEnds)
{
    const unsigned short port = start();
    TestClient client(port);
    client.send("GET / HTTP/1.1\r\n");
    client.endSending();
    EXPECT_TRUE(client.isEnded());
    TestClient asked(port);
    asked.send("GET / HTTP/1.1\r\nHost: " + asked.host() + "\r\n\r\n");
    asked.endSending();
    EXPECT_EQ(asked.reply().status, 200);
    EXPECT_TRUE(asked.isEnded());
    EXPECT_TRUE(waitUntil([&] { return server->clients() == 0; }));
}

TEST_F(Limits, WhoIsRefusedWhileItSendsCanReadWhy)
{
    TestClient client(start());
    EXPECT_TRUE(client.send(orderHead(client) + "Content-Length: 200000\r\n\r\n" +
                            std::string(200000, ' ')));
    EXPECT_EQ(client.reply().status, 413);
    EXPECT_TRUE(client.isEndedInOrder()) << "a reset would throw the answer away";
}

TEST_F(Limits, WhoIsRefusedAndGoesOnSendingIsLeftAlone)
{
    limits().closeTime = kSoon;
    TestClient client(start());
    client.send("GET / HTTP/1.1\r\nHost: evil.example\r\n\r\n");
    EXPECT_EQ(client.reply().status, 421);
    while (client.send("GET / HTTP/1.1\r\n")) {
    }
    EXPECT_TRUE(waitUntil([&] { return server->clients() == 0; }));
}

TEST_F(Limits, WhoVanishesHarmsNobody)
{
    const unsigned short port = start();
    for (int i = 0; i < 50; ++i) {
        TestClient client(port, 4096);
        client.send("GET /api/v1/long?bytes=500000 HTTP/1.1\r\nHost: " + client.host() + "\r\n" +
                    kBearer + "\r\n");
        client.vanish();
    }
    TestClient other(port);
    EXPECT_EQ(other.get("/").status, 200);
    EXPECT_TRUE(waitUntil([&] { return server->clients() == 1; }));
}

} // namespace

} // namespace tavmir::page
