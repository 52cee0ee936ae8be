// The server over real connections: many clients, any division of the stream, and its limits.
#include "server_fixture.h"

#include <sys/resource.h>
#include <unistd.h>
#include <vector>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

class ControllerServer : public ServerFixture
{
};

// The process can open one more descriptor and no second one while this lives.
class AllDescriptorsButOneTaken
{
public:
    AllDescriptorsButOneTaken()
    {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit small = before_;
        taken_.push_back(dup(STDERR_FILENO));
        small.rlim_cur = static_cast<rlim_t>(taken_.back()) + 64;
        setrlimit(RLIMIT_NOFILE, &small);
        for (int descriptor = dup(STDERR_FILENO); descriptor >= 0;
             descriptor = dup(STDERR_FILENO)) {
            taken_.push_back(descriptor);
        }
        close(taken_.back());
        taken_.pop_back();
    }

    ~AllDescriptorsButOneTaken()
    {
        for (const int descriptor : taken_) {
            close(descriptor);
        }
        setrlimit(RLIMIT_NOFILE, &before_);
    }

private:
    rlimit before_ = {};
    std::vector<int> taken_;
};

} // namespace

TEST_F(ControllerServer, AnswersReadsAndWrites)
{
    start();
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    EXPECT_EQ(client.exchange(writeFrame(1, 1, 103, {{3000, hex("3412")}}), 9),
              frame(1, 1, 103, 1));
    EXPECT_EQ(client.exchange(readFrame(2, 1, 102, {3000}), 15),
              frame(2, 1, 102, 1, hex("00000BB8 1234")));
    EXPECT_EQ(client.exchange(readFrame(3, 1, 100, {3002}), 14),
              frame(3, 1, 100, 1, hex("00000BBA 01")));
}

TEST_F(ControllerServer, AnswersAFrameThatComesByteByByte)
{
    start();
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    const QByteArray request = readFrame(2, 1, 108, {64});
    for (int i = 0; i < request.size(); ++i) {
        ASSERT_EQ(client.waiting(), 0);
        client.send(request.mid(i, 1));
        ASSERT_TRUE(turnUntil([&] { return statistics().bytesReceived == std::uint64_t(i) + 1; }));
    }
    EXPECT_EQ(client.receive(17), frame(2, 1, 108, 1, hex("00000040 00000000")));
}

TEST_F(ControllerServer, AnswersJoinedFramesInOrder)
{
    start();
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    QByteArray requests;
    QByteArray replies;
    for (int i = 0; i < 300; ++i) {
        requests += readFrame(i, i % 256, 102, {16});
        replies += frame(i, i % 256, 102, 1, hex("00000010 0000"));
    }
    client.send(requests);
    EXPECT_EQ(client.receive(replies.size()), replies);
}

TEST_F(ControllerServer, ServesManyClientsAndStationsOnOneMemory)
{
    start();
    std::vector<TestClient> clients(40);
    for (std::size_t i = 0; i < clients.size(); ++i) {
        ASSERT_TRUE(clients[i].connectTo(server->port()));
        const int station = static_cast<int>(i);
        const QByteArray value = bigEndian(std::uint32_t(i) + 1, 1) + hex("00");
        clients[i].send(writeFrame(station, station, 103, {{160, value}}));
    }
    for (std::size_t i = 0; i < clients.size(); ++i) {
        ASSERT_EQ(clients[i].receive(9), frame(int(i), int(i), 103, 1));
    }
    for (std::size_t i = 0; i < clients.size(); ++i) {
        const std::size_t other = (i + 1) % clients.size();
        EXPECT_EQ(
            clients[i].exchange(readFrame(1, int(other), 102, {160}), 15),
            frame(1, int(other), 102, 1, hex("000000A0") + bigEndian(std::uint32_t(other) + 1, 2)));
    }
    EXPECT_EQ(server->clientCount(), 40);
    EXPECT_EQ(statistics().clients, 40u);
    EXPECT_EQ(statistics().clientsAtOnce, 40u);
}

TEST_F(ControllerServer, GivesExceptionsAndKeepsTheConnection)
{
    start();
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    EXPECT_EQ(client.exchange(frame(1, 5, 7, 1), 9), hex("0001 0000 0003 05 87 01"));
    EXPECT_EQ(client.exchange(frame(2, 5, 103, 4, hex("00000010 0100")), 9),
              hex("0002 0000 0003 05 E7 03"));
    EXPECT_EQ(client.exchange(readFrame(3, 5, 102, {16}), 15),
              frame(3, 5, 102, 1, hex("00000010 0000")));
    EXPECT_TRUE(log.isEmpty());
}

TEST_F(ControllerServer, ClosesAStreamOfAnotherProtocolWithALogLine)
{
    start();
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    client.send("GET / HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(client.seesTheEnd());
    EXPECT_EQ(client.waiting(), 0);
    ASSERT_EQ(log.size(), 1);
    EXPECT_TRUE(log[0].startsWith("client 1 (127.0.0.1 port "));
    EXPECT_TRUE(log[0].endsWith(" closed: protocol id 21536 instead of 0"));
    EXPECT_EQ(statistics().brokenStreams, 1u);
    EXPECT_TRUE(servesANewClient());
}

TEST_F(ControllerServer, ClosesAStreamWithABadLengthAfterAnsweringWhatWasGood)
{
    start();
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    client.send(readFrame(1, 1, 102, {16}));
    EXPECT_EQ(client.receive(15).size(), 15);
    client.send(hex("0002 0000 0001"));
    EXPECT_TRUE(client.seesTheEnd());
    ASSERT_EQ(log.size(), 1);
    EXPECT_TRUE(log[0].contains("length 1 is not from 2 to 254"));
}

TEST_F(ControllerServer, SilentAndHalfwayClientsKeepNobodyWaiting)
{
    start();
    TestClient silent;
    TestClient halfway;
    ASSERT_TRUE(silent.connectTo(server->port()));
    ASSERT_TRUE(halfway.connectTo(server->port()));
    halfway.send(readFrame(1, 1, 102, {16}).left(11));
    EXPECT_TRUE(servesANewClient());
    EXPECT_TRUE(silent.isConnected());
    EXPECT_EQ(halfway.exchange(readFrame(1, 1, 102, {16}).mid(11), 15).size(), 15);
}

TEST_F(ControllerServer, ForgetsClientsThatLeave)
{
    start();
    for (int i = 0; i < 20; ++i) {
        TestClient client;
        ASSERT_TRUE(client.connectTo(server->port()));
        client.send(readFrame(1, 1, 102, {16}).left(i));
    }
    EXPECT_TRUE(
        turnUntil([&] { return statistics().clients == 20 && server->clientCount() == 0; }));
    EXPECT_TRUE(server->findChildren<ClientSession*>().isEmpty());
}

TEST_F(ControllerServer, RefusesMoreClientsThanItsLimitUntilOneLeaves)
{
    settings.mostClients = 2;
    start();
    TestClient first;
    TestClient third;
    {
        TestClient second;
        ASSERT_TRUE(first.connectTo(server->port()));
        ASSERT_TRUE(second.connectTo(server->port()));
        ASSERT_TRUE(turnUntil([&] { return server->clientCount() == 2; }));
        third.connectTo(server->port());
        EXPECT_TRUE(third.seesTheEnd());
        ASSERT_EQ(log.size(), 1);
        EXPECT_TRUE(log[0].endsWith("is refused: 2 are connected"));
        EXPECT_EQ(statistics().clientsRefused, 1u);
        EXPECT_EQ(second.exchange(readFrame(1, 1, 102, {16}), 15).size(), 15);
    }
    ASSERT_TRUE(turnUntil([&] { return server->clientCount() == 1; }));
    EXPECT_TRUE(servesANewClient());
}

TEST_F(ControllerServer, WaitsForDescriptorsAndThenTakesTheClient)
{
    start();
    TestClient client;
    turnUntil([] { return true; }); // the event loop has its own descriptors now
    // A sanitizer looks at a type once, and needs a descriptor for that.
    ASSERT_EQ(client.socket().state(), QAbstractSocket::UnconnectedState);
    {
        const AllDescriptorsButOneTaken taken;
        client.socket().connectToHost(QHostAddress(QHostAddress::LocalHost), server->port());
        ASSERT_TRUE(turnUntil([&] { return !log.isEmpty(); }));
        EXPECT_TRUE(log[0].startsWith("cannot take a client: "));
        EXPECT_EQ(server->clientCount(), 0);
    }
    EXPECT_TRUE(turnUntil([&] { return server->clientCount() == 1; }));
    EXPECT_EQ(client.exchange(readFrame(1, 1, 102, {16}), 15).size(), 15);
}

TEST_F(ControllerServer, ClosesAClientThatNeverReadsAndServesTheOthersMeanwhile)
{
    settings.mostUnsentBytes = 20000;
    start();
    TestClient deaf;
    deaf.socket().setReadBufferSize(1);
    ASSERT_TRUE(deaf.connectTo(server->port()));
    deaf.socket().setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4096);
    QByteArray requests;
    for (int i = 0; i < 200; ++i) {
        requests += readFrame(i, 1, 102, std::vector<std::uint32_t>(41, 16));
    }
    ASSERT_TRUE(turnUntil([&] {
        if (deaf.isConnected() && deaf.socket().bytesToWrite() == 0)
            deaf.send(requests);
        return statistics().clientsTooSlow == 1;
    }));
    ASSERT_EQ(log.size(), 1);
    EXPECT_TRUE(log[0].contains("closed: it does not read its replies"));
    EXPECT_EQ(server->clientCount(), 0);
    EXPECT_TRUE(servesANewClient());
}

TEST_F(ControllerServer, CountsTheBytesOfBothDirections)
{
    start();
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    client.exchange(readFrame(1, 1, 102, {16, 32}), 21);
    EXPECT_EQ(statistics().bytesReceived, 17u);
    EXPECT_TRUE(turnUntil([&] { return statistics().bytesSent == 21; }));
}

TEST_F(ControllerServer, TracesBothDirectionsWithTimeAndTheClientsNumber)
{
    settings.now = [] {
        return std::chrono::system_clock::time_point(std::chrono::milliseconds(1000000000007));
    };
    QStringList trace;
    settings.trace = [&trace](const QString& line) { trace.append(line); };
    start({"drop@2"});
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    client.exchange(readFrame(1, 1, 102, {16}), 15);
    client.send(readFrame(2, 1, 100, {16}));
    ASSERT_TRUE(turnUntil([&] { return statistics().requests == 2; }));
    const QString time = "2001-09-09T01:46:40.007Z ";
    EXPECT_EQ(trace, (QStringList{time + "client 1 > #1 station 1 read words: 16",
                                  time + "client 1 < #1 station 1 read words: 16=0",
                                  time + "client 1 > #2 station 1 read bits: 16 [drop]"}));
}

TEST_F(ControllerServer, TracesWhyARequestIsNotServed)
{
    QStringList trace;
    settings.trace = [&trace](const QString& line) { trace.append(line.section(' ', 1)); };
    settings.nowUs = [] { return std::int64_t{1}; };
    start();
    AdmissionRules rules;
    rules.stations = parseStations("1");
    rules.refused = {{16, 16, std::nullopt, 2}};
    rules.mostRequestsPerSecond = 20; // two of them at once
    simulation->admit(rules);
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    client.send(readFrame(1, 1, 102, {16}) + readFrame(2, 9, 102, {16}) +
                readFrame(3, 1, 102, {16}));
    client.receive(27);
    EXPECT_EQ(trace,
              (QStringList{"client 1 > #1 station 1 read words: 16 [refused address]",
                           "client 1 < #1 station 1 read words: exception 2 (illegal data address)",
                           "client 1 > #2 station 9 read words: 16 [unknown station]",
                           "client 1 < #2 station 9 read words: exception 11 (station does not "
                           "answer the gateway)",
                           "client 1 > #3 station 1 read words: 16 [above the rate]",
                           "client 1 < #3 station 1 read words: exception 6 (device busy)"}));
}

TEST_F(ControllerServer, SaysWhyItCannotListen)
{
    start();
    Server second(settings, *simulation);
    EXPECT_FALSE(second.listen(QHostAddress(QHostAddress::LocalHost), server->port()));
    EXPECT_FALSE(second.errorText().isEmpty());
    EXPECT_EQ(second.port(), 0);
}

TEST_F(ControllerServer, EndsWithItsConnections)
{
    start({"late=1"});
    TestClient client;
    ASSERT_TRUE(client.connectTo(server->port()));
    client.send(readFrame(1, 1, 102, {16}));
    ASSERT_TRUE(turnUntil([&] { return statistics().requests == 1; }));
    server.reset();
    EXPECT_TRUE(client.seesTheEnd());
}

// Bytes at random, from clients that come and go: the controller is there afterwards.
TEST_F(ControllerServer, SurvivesWhateverClientsSend)
{
    start();
    SeededRandom random(2024);
    for (int round = 0; round < 60; ++round) {
        TestClient client;
        ASSERT_TRUE(client.connectTo(server->port()));
        QByteArray bytes;
        for (int i = random.between(0, 20); i > 0; --i) {
            bytes += readFrame(i, 1, random.between(99, 110), {16, 32});
        }
        for (int i = random.between(0, 4); i > 0 && !bytes.isEmpty(); --i) {
            bytes[random.between(0, bytes.size() - 1)] = static_cast<char>(random.between(0, 255));
        }
        client.send(bytes.left(random.between(0, bytes.size())));
        if (random.between(0, 1)) {
            turnUntil([&] { return client.socket().bytesToWrite() == 0; });
        }
    }
    EXPECT_TRUE(servesANewClient());
    EXPECT_TRUE(turnUntil([&] { return server->clientCount() == 0; }));
}
