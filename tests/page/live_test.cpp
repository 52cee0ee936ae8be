// Clients that listen: what they are sent, when, and how they are got rid of.
#include "running_page.h"

#include "support/wait_until.h"

#include <vector>

namespace tavmir::page
{

namespace
{

using test::waitUntil;

class Live : public RunningPage
{
protected:
    static void greet(TestClient& client, const std::string& seen = ",\"epoch\":null")
    {
        ASSERT_EQ(client.goLive(), 101);
        client.sendFrame(1, std::string("{\"token\":\"") + kToken + "\"" + seen + "}");
    }
    bool isEverybodyGone()
    {
        return waitUntil([&] { return server->clients() == 0; });
    }
    // The close code that a client is sent for this as its first message.
    int codeFor(int kind, const std::string& payload)
    {
        TestClient client(server->port());
        EXPECT_EQ(client.goLive(), 101);
        client.sendFrame(kind, payload);
        return client.frame().closeCode();
    }
};

TEST_F(Live, SnapshotFirstThenChanges)
{
    TestClient client(start());
    greet(client);
    EXPECT_EQ(client.message(), "snapshot 1");
    content.setSequence(2);
    EXPECT_EQ(client.message(), "changes 1-2");
    content.setSequence(7);
    EXPECT_EQ(client.message(), "changes 2-7");
}

TEST_F(Live, WhoHasSeenSomethingGoesOnFromThere)
{
    content.setSequence(9);
    const unsigned short port = start();
    TestClient client(port);
    greet(client, ",\"epoch\":\"e1\",\"sequence\":4");
    EXPECT_EQ(client.message(), "changes 4-9");
    TestClient upToDate(port);
    greet(upToDate, ",\"epoch\":\"e1\",\"sequence\":9");
    content.setSequence(10);
    EXPECT_EQ(upToDate.message(), "changes 9-10");
    EXPECT_EQ(content.snapshots(), 0);
}

TEST_F(Live, WhoHasSeenAnotherStartGetsEverything)
{
    content.setSequence(9);
    const unsigned short port = start();
    TestClient other(port);
    greet(other, ",\"epoch\":\"e0\",\"sequence\":4");
    EXPECT_EQ(other.message(), "snapshot 9");
    TestClient ahead(port);
    greet(ahead, ",\"epoch\":\"e1\",\"sequence\":10");
    EXPECT_EQ(ahead.message(), "snapshot 9");
}

TEST_F(Live, SlowClientSkipsToTheLatest)
{
    content.setPadding(900000);
    const unsigned short port = start();
    TestClient slow(port, 4096);
    greet(slow);
    ASSERT_TRUE(waitUntil([&] { return content.snapshots() == 1; }));
    TestClient quick(port);
    greet(quick, ",\"epoch\":\"e1\",\"sequence\":1");
    for (std::uint64_t sequence = 2; sequence <= 20; ++sequence) {
        content.setSequence(sequence);
        EXPECT_EQ(quick.message().substr(0, 12), ("changes " + std::to_string(sequence - 1) + "-" +
                                                  std::to_string(sequence) + "....")
                                                     .substr(0, 12));
    }
    EXPECT_EQ(slow.message().substr(0, 11), "snapshot 1.");
    EXPECT_EQ(slow.message().substr(0, 13), "changes 1-20.");
}

TEST_F(Live, TwelveClientsShareOneText)
{
    const unsigned short port = start();
    std::vector<std::unique_ptr<TestClient>> clients;
    for (int i = 0; i < 12; ++i) {
        clients.push_back(std::make_unique<TestClient>(port));
        greet(*clients.back());
        EXPECT_EQ(clients.back()->message(), "snapshot 1");
    }
    content.setSequence(2);
    for (const auto& client : clients) {
        EXPECT_EQ(client->message(), "changes 1-2");
    }
    EXPECT_EQ(content.changesMade(), 1);
}

TEST_F(Live, LongMessageComesInPiecesAndWhole)
{
    content.setPadding(5000000);
    TestClient client(start());
    greet(client);
    EXPECT_EQ(client.message().size(), 5000010U);
}

TEST_F(Live, GreetingMayComeWithTheRequest)
{
    TestClient client(start());
    client.send("GET /api/v1/live HTTP/1.1\r\nHost: " + client.host() +
                "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
                "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n" +
                frameBytes(1, kGreeting));
    EXPECT_EQ(client.reply().status, 101);
    EXPECT_EQ(client.message(), "snapshot 1");
}

TEST_F(Live, WebSocketThatIsNoneIsRefused)
{
    const unsigned short port = start();
    const std::string upgrade = "Upgrade: websocket\r\nConnection: Upgrade\r\n";
    for (const std::string& lines :
         {std::string("Sec-WebSocket-Version: 12\r\nSec-WebSocket-Key: "
                      "dGhlIHNhbXBsZSBub25jZQ==\r\n"),
          std::string("Sec-WebSocket-Version: 13\r\n"),
          "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: " + std::string(2000, 'x') + "\r\n"}) {
        TestClient client(port);
        EXPECT_GE(client.get("/api/v1/live", upgrade + lines).status, 400) << lines;
        EXPECT_TRUE(client.isEnded());
    }
}

TEST_F(Live, WrongTokenIsToldByItsCode)
{
    start();
    EXPECT_EQ(codeFor(1, "{\"token\":\"0123456789abcdef0123456789abcdee\"}"), 4401);
    EXPECT_EQ(codeFor(1, "{\"token\":\"x\"}"), 4401);
    EXPECT_TRUE(isEverybodyGone());
    EXPECT_EQ(content.snapshots(), 0);
}

TEST_F(Live, FirstMessageIsAGreeting)
{
    start();
    EXPECT_EQ(codeFor(1, "hello"), 1008);
    EXPECT_EQ(codeFor(1, ""), 1008);
    EXPECT_EQ(codeFor(2, kGreeting), 1003);
    EXPECT_EQ(codeFor(1, "\xff\xfe"), 1007);
    EXPECT_EQ(codeFor(0, kGreeting), 1002);
    EXPECT_EQ(codeFor(3, kGreeting), 1002);
    EXPECT_EQ(codeFor(9, std::string(126, 'x')), 1002);
    EXPECT_TRUE(isEverybodyGone());
    EXPECT_EQ(content.snapshots(), 0);
}

TEST_F(Live, GreetingMayComeInPieces)
{
    TestClient client(start());
    ASSERT_EQ(client.goLive(), 101);
    const std::string greeting = kGreeting;
    client.sendFrame(1, greeting.substr(0, 10), false);
    client.sendFrame(9, "between");
    client.sendFrame(0, greeting.substr(10));
    EXPECT_EQ(client.frame().kind, 10);
    EXPECT_EQ(client.message(), "snapshot 1");
}

TEST_F(Live, MessageTooLong)
{
    start();
    EXPECT_EQ(codeFor(1, std::string(64 * 1024, ' ')), 1008); // read, and no greeting
    EXPECT_EQ(codeFor(1, std::string(64 * 1024 + 1, ' ')), 1009);
    EXPECT_EQ(codeFor(2, std::string(1000000, ' ')), 1009);
}

TEST_F(Live, MessageTooLongInPieces)
{
    TestClient client(start());
    ASSERT_EQ(client.goLive(), 101);
    client.sendFrame(1, std::string(40000, ' '), false);
    client.sendFrame(0, std::string(40000, ' '), false);
    EXPECT_EQ(client.frame().closeCode(), 1009);
    EXPECT_TRUE(isEverybodyGone());
}

TEST_F(Live, GreetingThatDoesNotCome)
{
    limits().helloTime = kSoon;
    TestClient client(start());
    ASSERT_EQ(client.goLive(), 101);
    const Frame last = client.frame();
    EXPECT_EQ(last.closeCode(), 1008);
    client.sendFrame(8, last.payload);
    EXPECT_TRUE(client.isEnded());
}

TEST_F(Live, NothingIsSaidAfterTheGreeting)
{
    const unsigned short port = start();
    TestClient text(port);
    greet(text);
    EXPECT_EQ(text.message(), "snapshot 1");
    text.sendFrame(1, kGreeting);
    EXPECT_EQ(text.frame().closeCode(), 1008);
    TestClient binary(port);
    greet(binary);
    EXPECT_EQ(binary.message(), "snapshot 1");
    binary.sendFrame(2, "x");
    EXPECT_EQ(binary.frame().closeCode(), 1003);
}

TEST_F(Live, FrameWithoutMaskIsRefused)
{
    TestClient client(start());
    ASSERT_EQ(client.goLive(), 101);
    client.send(std::string("\x81\x02{}", 4));
    EXPECT_EQ(client.frame().closeCode(), 1002);
}

TEST_F(Live, WhoSaysGoodbyeIsAnswered)
{
    TestClient client(start());
    greet(client);
    EXPECT_EQ(client.message(), "snapshot 1");
    client.sendFrame(8, std::string("\x03\xe8", 2));
    EXPECT_EQ(client.frame().closeCode(), 1000);
    EXPECT_TRUE(client.isEnded());
    EXPECT_TRUE(isEverybodyGone());
}

TEST_F(Live, ForeignPageDoesNotListen)
{
    const unsigned short port = start();
    for (const char* origin : {"http://evil.example", "null"}) {
        TestClient client(port);
        EXPECT_EQ(client.goLive(std::string("Origin: ") + origin + "\r\n"), 403);
    }
    TestClient own(port);
    EXPECT_EQ(own.goLive("Origin: http://" + own.host() + "\r\n"), 101);
}

TEST_F(Live, ReboundHostDoesNotListen)
{
    TestClient client(start());
    client.send("GET /api/v1/live HTTP/1.1\r\nHost: evil.example\r\nUpgrade: websocket\r\n"
                "Connection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
                "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n");
    EXPECT_EQ(client.reply().status, 421);
}

TEST_F(Live, SilentClientIsPingedAndThenDropped)
{
    limits().silence = std::chrono::milliseconds(500); // the greeting is there before it is over
    TestClient client(start());
    greet(client);
    EXPECT_EQ(client.message(), "snapshot 1");
    EXPECT_EQ(client.frame().kind, 9);
    EXPECT_TRUE(isEverybodyGone());
}

TEST_F(Live, ClientThatAnswersPingsStays)
{
    limits().silence = std::chrono::milliseconds(1500); // three times: gone
    TestClient client(start());
    greet(client);
    EXPECT_EQ(client.message(), "snapshot 1");
    for (int i = 0; i < 4; ++i) {
        const Frame ping = client.frame();
        ASSERT_EQ(ping.kind, 9);
        client.sendFrame(10, ping.payload);
    }
    content.setSequence(2);
    EXPECT_EQ(client.message(), "changes 1-2");
}

TEST_F(Live, ClientThatStopsReadingIsDropped)
{
    limits().unreadTime = kSoon;
    content.setPadding(3000000);
    const unsigned short port = start();
    TestClient deaf(port, 4096);
    greet(deaf);
    EXPECT_TRUE(waitUntil([&] { return content.snapshots() == 1; }));
    EXPECT_TRUE(isEverybodyGone());
}

TEST_F(Live, ClientThatStopsReadingLittleIsDroppedInTheEnd)
{
    limits().sendTime = kSoon;
    content.setPadding(900000);
    TestClient deaf(start(), 4096);
    greet(deaf);
    EXPECT_TRUE(waitUntil([&] { return content.snapshots() == 1; }));
    EXPECT_TRUE(isEverybodyGone());
}

TEST_F(Live, ClientThatStopsReadingSlowsNobody)
{
    content.setPadding(900000);
    const unsigned short port = start();
    TestClient deaf(port, 4096);
    greet(deaf);
    TestClient other(port);
    greet(other);
    EXPECT_EQ(other.message().substr(0, 11), "snapshot 1.");
    for (std::uint64_t sequence = 2; sequence < 10; ++sequence) {
        content.setSequence(sequence);
        EXPECT_EQ(other.message().substr(0, 9), "changes " + std::to_string(sequence - 1));
    }
}

TEST_F(Live, ClientsThatVanishHarmNobody)
{
    content.setPadding(200000);
    const unsigned short port = start();
    for (int i = 0; i < 40; ++i) {
        TestClient client(port, 4096);
        greet(client);
        client.vanish();
    }
    TestClient other(port);
    greet(other);
    EXPECT_EQ(other.message().substr(0, 11), "snapshot 1.");
    EXPECT_TRUE(waitUntil([&] { return server->clients() == 1; }));
}

} // namespace

} // namespace tavmir::page
