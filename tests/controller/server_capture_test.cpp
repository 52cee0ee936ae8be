// What the controller's capture shows of its clients: each byte that came or went, and the faults.
#include "capture/read_capture.h"
#include "server_fixture.h"

#include "controller/fault_effects.h"

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

// Takes packets apart, which fails where one is wrong.
struct Taken : tavmir::capture::PacketSink {
    void take(const tavmir::capture::Packet& packet) override
    {
        const ReadPacket read = packetOf(Bytes(packet.bytes, packet.bytes + packet.size));
        std::string line = (packet.isOutbound ? ">" : "<") + read.flags;
        if (!read.payload.empty()) {
            line += " " + std::to_string(read.payload.size());
        }
        lines.push_back(line + (packet.comment.empty() ? "" : " " + packet.comment));
        sent += packet.isOutbound ? read.payload : std::string();
        fromPort = packet.isOutbound ? read.fromPort : read.toPort;
        wallNs = packet.wallNs;
    }

    std::vector<std::string> lines;
    std::string sent;
    int fromPort = 0;
    std::int64_t wallNs = 0;
};

using Lines = std::vector<std::string>;

class ControllerCapture : public ServerFixture
{
protected:
    ControllerCapture() { settings.capture = &taken; }
    ~ControllerCapture() override { server.reset(); } // it shows how its connections end

    // Starts with the rules and connects the client.
    void startWith(const QStringList& rules)
    {
        start(rules);
        ASSERT_TRUE(client.connectTo(server->port()));
    }

    static QByteArray request(int transactionId) { return readFrame(transactionId, 1, 102, {16}); }

    // Waits until so many packets are there; gives those behind the connection's first three.
    Lines packets(std::size_t count)
    {
        EXPECT_TRUE(turnUntil([&] { return taken.lines.size() >= count + 3; }));
        EXPECT_EQ((Lines{"<S", ">SA", "<A"}), Lines(taken.lines.begin(), taken.lines.begin() + 3));
        return Lines(taken.lines.begin() + 3, taken.lines.end());
    }

    Taken taken;
    TestClient client;
};

} // namespace

TEST_F(ControllerCapture, ARequestAndItsReply)
{
    const auto now = std::chrono::system_clock::time_point(std::chrono::seconds(12));
    settings.now = [now] { return now; };
    startWith({});
    const QByteArray reply = client.exchange(request(1), 15);
    EXPECT_EQ((Lines{"<AP 13", ">AP 15"}), packets(2));
    EXPECT_EQ(reply.toStdString(), taken.sent);
    EXPECT_EQ(server->port(), taken.fromPort);
    EXPECT_EQ(12000000000, taken.wallNs);
}

TEST_F(ControllerCapture, RequestsThatComeTogetherAreAPacketEach)
{
    startWith({});
    client.exchange(request(1) + request(2) + request(3).left(5), 30);
    EXPECT_EQ((Lines{"<AP 13", "<AP 13", ">AP 15", ">AP 15"}), packets(4));
    client.exchange(request(3).mid(5), 15);
    EXPECT_EQ((Lines{"<AP 13", "<AP 13", ">AP 15", ">AP 15", "<AP 13", ">AP 15"}), packets(6));
}

TEST_F(ControllerCapture, AFaultIsNamedAtTheRequestAndAtItsReply)
{
    settings.lateMs = 1;
    startWith({"truncate@2", "drop@3", "late@4"});
    client.exchange(request(1) + request(2), 15 + 9);
    client.send(request(3) + request(4));
    client.receive(15);
    const Lines lines = packets(7);
    EXPECT_EQ("<AP 13 fault truncate", lines[1]);
    EXPECT_EQ(">AP 15", lines[2]);
    EXPECT_NE(std::string::npos, lines[3].find("fault truncate"));
    EXPECT_EQ("<AP 13 fault drop", lines[4]);
    EXPECT_EQ("<AP 13 fault late", lines[5]);
    EXPECT_EQ(">AP 15 fault late", lines[6]);
}

TEST_F(ControllerCapture, ARefusalIsNamedAtBoth)
{
    AdmissionRules rules;
    rules.stations = Stations();
    start();
    simulation->admit(rules);
    ASSERT_TRUE(client.connectTo(server->port()));
    client.exchange(request(1), 9);
    EXPECT_EQ((Lines{"<AP 13 unknown station",
                     ">AP 9 exception 11 (station does not answer the gateway)"}),
              packets(2));
}

TEST_F(ControllerCapture, AConnectionThatAFaultClosesSaysSo)
{
    startWith({"disconnect@1"});
    client.send(request(1));
    EXPECT_EQ((Lines{"<AP 13 fault disconnect", ">AF fault disconnect", "<A"}), packets(3));
}

TEST_F(ControllerCapture, WhatIsNoWholeRequestIsShownWhenTheClientLeaves)
{
    startWith({});
    client.send(request(1).left(7));
    ASSERT_TRUE(turnUntil([&] { return statistics().bytesReceived == 7; }));
    client.socket().disconnectFromHost();
    EXPECT_EQ((Lines{"<AP 7 no whole request", "<AF", ">AF", "<A"}), packets(4));
}

TEST_F(ControllerCapture, AStreamThatIsBrokenIsShownWithTheReason)
{
    startWith({});
    client.send(QByteArray(20, 'x'));
    EXPECT_EQ((Lines{"<AP 20 no whole request",
                     ">AF protocol id " + std::to_string('x' * 257) + " instead of 0", "<A"}),
              packets(3));
}

TEST_F(ControllerCapture, AClientTooManyIsShown)
{
    settings.mostClients = 1;
    startWith({});
    TestClient second;
    second.connectTo(server->port());
    EXPECT_EQ((Lines{"<S", ">SA", "<A", ">AF refused: too many clients are connected", "<A"}),
              packets(5));
}

TEST_F(ControllerCapture, OnlyBytesThatLeftAreShown)
{
    settings.mostUnsentBytes = 20000;
    client.socket().setReadBufferSize(1);
    startWith({});
    client.socket().setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4096);
    const QByteArray many = readFrame(1, 1, 102, std::vector<std::uint32_t>(41, 16)).repeated(200);
    ASSERT_TRUE(turnUntil([&] {
        if (client.isConnected() && client.socket().bytesToWrite() == 0) {
            client.send(many);
        }
        return statistics().clientsTooSlow == 1;
    })) << "it is closed for reading nothing";
    EXPECT_EQ(statistics().bytesSent, taken.sent.size());
}
