// Every fault as a client meets it on a real connection.
#include "server_fixture.h"

#include "controller/fault_effects.h"

#include <QtCore/QElapsedTimer>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

constexpr int kHourMs = 3600000;

class ControllerFaults : public ServerFixture
{
protected:
    // Starts with the rules and connects the client.
    void startWith(const QStringList& rules, std::uint64_t seed = 1)
    {
        start(rules, seed);
        ASSERT_TRUE(client.connectTo(server->port()));
    }

    static QByteArray request(int transactionId) { return readFrame(transactionId, 1, 102, {16}); }
    static QByteArray goodReply(int transactionId)
    {
        return frame(transactionId, 1, 102, 1, hex("00000010 0000"));
    }
    QByteArray receiveReply() { return client.receive(15); }
    std::uint64_t faults(FaultKind kind) { return statistics().faultsOf(kind); }

    TestClient client;
};

} // namespace

TEST_F(ControllerFaults, LoseNeitherAnswersNorCarriesTheRequestOut)
{
    startWith({"lose@1", "lose@3"});
    client.send(writeFrame(1, 1, 103, {{16, hex("0700")}}));
    client.send(readFrame(2, 1, 102, {16}));
    client.send(frame(3, 1, 66, 1)); // nor is it refused
    client.send(readFrame(4, 1, 102, {16}));
    EXPECT_EQ(client.receive(30), frame(2, 1, 102, 1, hex("00000010 0000")) +
                                      frame(4, 1, 102, 1, hex("00000010 0000")));
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(client.waiting(), 0);
    EXPECT_EQ(faults(FaultKind::Lose), 2u);
}

TEST_F(ControllerFaults, DropGivesNoReplyButCarriesTheRequestOut)
{
    startWith({"drop@1"});
    client.send(writeFrame(1, 1, 103, {{16, hex("0700")}}));
    client.send(readFrame(2, 1, 102, {16}));
    EXPECT_EQ(receiveReply(), frame(2, 1, 102, 1, hex("00000010 0007")));
    EXPECT_EQ(faults(FaultKind::Drop), 1u);
}

TEST_F(ControllerFaults, GarbleChangesWhatIsStoredAndWhatIsRead)
{
    startWith({"garble%2"});
    client.send(writeFrame(1, 1, 103, {{16, hex("0700")}}));
    client.send(readFrame(2, 1, 102, {16}));
    client.send(readFrame(3, 1, 102, {16}));
    client.send(writeFrame(4, 1, 103, {{16, hex("0900")}}));
    client.send(readFrame(5, 1, 102, {16}));
    EXPECT_EQ(client.receive(9), frame(1, 1, 103, 1));
    const QByteArray garbledReply = receiveReply();
    EXPECT_EQ(garbledReply.left(13), frame(2, 1, 102, 1, hex("00000010 0007")).left(13));
    EXPECT_NE(garbledReply.right(2), hex("0007"));
    EXPECT_EQ(receiveReply(), frame(3, 1, 102, 1, hex("00000010 0007")));
    EXPECT_EQ(client.receive(9), frame(4, 1, 103, 1));
    EXPECT_NE(receiveReply().right(2), hex("0009"));
    EXPECT_EQ(faults(FaultKind::Garble), 2u);
}

TEST_F(ControllerFaults, AStationThatIsNotThereStaysSilentWhileOthersAreServed)
{
    start({"truncate@1"});
    AdmissionRules rules;
    rules.stations = parseStations("1");
    rules.silentForOthers = true;
    simulation->admit(rules);
    ASSERT_TRUE(client.connectTo(server->port()));
    client.send(readFrame(1, 2, 102, {16}) + request(2));
    EXPECT_EQ(receiveReply(), goodReply(2));
    EXPECT_EQ(client.waiting(), 0);
    EXPECT_EQ(statistics().unanswered, 1u);
}

TEST_F(ControllerFaults, RequestsAboveTheRateAreBusyUntilTheTimeComes)
{
    std::int64_t nowUs = 1;
    settings.nowUs = [&nowUs] { return nowUs; };
    start();
    AdmissionRules rules;
    rules.mostRequestsPerSecond = 1;
    simulation->admit(rules);
    ASSERT_TRUE(client.connectTo(server->port()));
    client.send(request(1) + request(2));
    EXPECT_EQ(receiveReply(), goodReply(1));
    EXPECT_EQ(client.receive(9), frame(2, 1, 102 | 0x80, 6));
    nowUs += 1000000;
    EXPECT_EQ(client.exchange(request(3), 15), goodReply(3));
    EXPECT_EQ(statistics().aboveRate, 1u);
}

TEST_F(ControllerFaults, DelayedForTheRateRepliesComeOneAfterTheOther)
{
    std::int64_t nowUs = 1;
    settings.nowUs = [&nowUs] { return nowUs; };
    start();
    AdmissionRules rules;
    rules.mostRequestsPerSecond = 10;
    rules.delaysAboveRate = true;
    simulation->admit(rules);
    ASSERT_TRUE(client.connectTo(server->port()));
    QElapsedTimer clock;
    clock.start();
    client.send(request(1) + request(2) + request(3));
    EXPECT_EQ(client.receive(45), goodReply(1) + goodReply(2) + goodReply(3));
    EXPECT_GE(clock.elapsed(), 200) << "a hundred milliseconds each but the first";
    EXPECT_EQ(statistics().aboveRate, 2u);
}

TEST_F(ControllerFaults, DelayKeepsTheOrderOfOneClientAndNobodyElseWaits)
{
    settings.delayMs = 100;
    startWith({"delay@1"});
    client.send(request(1) + request(2));
    EXPECT_TRUE(servesANewClient());
    EXPECT_EQ(receiveReply(), goodReply(1));
    EXPECT_EQ(receiveReply(), goodReply(2));
    EXPECT_EQ(faults(FaultKind::Delay), 1u);
}

TEST_F(ControllerFaults, DelayHoldsTheReplyBack)
{
    settings.delayMs = kHourMs;
    startWith({"delay@1"});
    client.send(request(1) + request(2));
    ASSERT_TRUE(turnUntil([&] { return statistics().requests == 2; }));
    EXPECT_TRUE(servesANewClient());
    EXPECT_EQ(client.waiting(), 0);
    EXPECT_TRUE(client.isConnected());
}

TEST_F(ControllerFaults, SeveralDelayedRepliesComeInTheirOrder)
{
    settings.delayMs = 40;
    startWith({"delay%1"});
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 3; ++i) {
        client.send(request(i));
        ASSERT_TRUE(turnUntil([&] { return clock.elapsed() >= 10 * (i + 1); }));
    }
    EXPECT_EQ(client.receive(45), goodReply(0) + goodReply(1) + goodReply(2));
}

TEST_F(ControllerFaults, DelayedRepliesCountAgainstTheClientsLimit)
{
    settings.delayMs = kHourMs;
    settings.mostUnsentBytes = 15 * 10;
    startWith({"delay=1"});
    for (int i = 0; i < 11; ++i) {
        client.send(request(i));
    }
    EXPECT_TRUE(client.seesTheEnd());
    EXPECT_EQ(statistics().clientsTooSlow, 1u);
    EXPECT_EQ(statistics().requests, 11u);
}

TEST_F(ControllerFaults, LateRepliesArePassedByLaterOnes)
{
    settings.lateMs = 300;
    startWith({"late@1"});
    client.send(request(1) + request(2) + request(3));
    EXPECT_EQ(receiveReply(), goodReply(2));
    EXPECT_EQ(receiveReply(), goodReply(3));
    EXPECT_EQ(receiveReply(), goodReply(1));
    EXPECT_EQ(faults(FaultKind::Late), 1u);
}

TEST_F(ControllerFaults, LateRepliesCountAgainstTheClientsLimit)
{
    settings.lateMs = kHourMs;
    settings.mostUnsentBytes = 15 * 10;
    startWith({"late=1"});
    for (int i = 0; i < 11; ++i) {
        client.send(request(i));
    }
    EXPECT_TRUE(client.seesTheEnd());
    EXPECT_EQ(statistics().clientsTooSlow, 1u);
}

TEST_F(ControllerFaults, RepliesThatWentOutNoLongerCountAgainstTheLimit)
{
    settings.delayMs = 1;
    settings.lateMs = 1;
    settings.mostUnsentBytes = 20;
    startWith({"delay%2", "late=1"});
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(client.exchange(request(i), 15), goodReply(i));
    }
    EXPECT_EQ(statistics().clientsTooSlow, 0u);
}

TEST_F(ControllerFaults, ALateReplyOfAClientThatLeftIsForgotten)
{
    settings.lateMs = 1;
    start({"late=1"});
    {
        TestClient leaving;
        ASSERT_TRUE(leaving.connectTo(server->port()));
        leaving.send(request(1));
        ASSERT_TRUE(turnUntil([&] { return statistics().requests == 1; }));
    }
    ASSERT_TRUE(turnUntil([&] { return server->clientCount() == 0; }));
    EXPECT_TRUE(servesANewClient());
}

TEST_F(ControllerFaults, TruncateGivesAShorterFrameWithATrueLength)
{
    startWith({"truncate@1"}, 3);
    SeededRandom random(3);
    const QByteArray expected = truncated(goodReply(1), random);
    client.send(request(1));
    EXPECT_EQ(client.receive(expected.size()), expected);
    EXPECT_EQ(client.exchange(request(2), 15), goodReply(2));
    EXPECT_EQ(faults(FaultKind::Truncate), 1u);
}

TEST_F(ControllerFaults, OversizeGivesALongerFrameWithATrueLength)
{
    startWith({"oversize@1"}, 3);
    SeededRandom random(3);
    const QByteArray expected = oversized(goodReply(1), random);
    client.send(request(1));
    EXPECT_EQ(client.receive(expected.size()), expected);
    EXPECT_EQ(client.exchange(request(2), 15), goodReply(2));
    EXPECT_EQ(faults(FaultKind::Oversize), 1u);
}

TEST_F(ControllerFaults, CutLeavesTheFrameUnfinished)
{
    startWith({"cut@1"}, 3);
    SeededRandom random(3);
    const QByteArray expected = cutShort(goodReply(1), random);
    client.send(request(1) + request(2));
    EXPECT_EQ(client.receive(expected.size() + 15), expected + goodReply(2));
    EXPECT_EQ(faults(FaultKind::Cut), 1u);
}

TEST_F(ControllerFaults, CorruptFlipsOneBitOfTheHeader)
{
    startWith({"corrupt@1"}, 3);
    SeededRandom random(3);
    EXPECT_EQ(client.exchange(request(1), 15), corrupted(goodReply(1), random));
    EXPECT_EQ(client.exchange(request(2), 15), goodReply(2));
    EXPECT_EQ(faults(FaultKind::Corrupt), 1u);
}

TEST_F(ControllerFaults, DuplicateGivesTheReplyTwice)
{
    startWith({"duplicate@1"});
    client.send(request(1) + request(2));
    EXPECT_EQ(client.receive(45), goodReply(1) + goodReply(1) + goodReply(2));
    EXPECT_EQ(faults(FaultKind::Duplicate), 1u);
}

TEST_F(ControllerFaults, DisconnectClosesThisConnectionOnly)
{
    startWith({"disconnect@2"});
    TestClient other;
    ASSERT_TRUE(other.connectTo(server->port()));
    EXPECT_EQ(client.exchange(request(1), 15), goodReply(1));
    client.send(request(2) + request(3));
    EXPECT_TRUE(client.seesTheEnd());
    EXPECT_EQ(client.waiting(), 0);
    EXPECT_EQ(statistics().requests, 2u) << "what came behind is not carried out";
    EXPECT_EQ(other.exchange(request(4), 15), goodReply(4));
    EXPECT_EQ(faults(FaultKind::Disconnect), 1u);
}

TEST_F(ControllerFaults, RefuseClosesAllConnectionsAndTakesNoNewOnes)
{
    settings.refuseMs = kHourMs;
    startWith({"refuse@1"});
    TestClient other;
    ASSERT_TRUE(other.connectTo(server->port()));
    const quint16 port = server->port();
    client.send(request(1) + request(2));
    EXPECT_TRUE(client.seesTheEnd());
    EXPECT_TRUE(other.seesTheEnd());
    server->refuseForAWhile(); // again: it stays as it is
    EXPECT_TRUE(server->isRefusing());
    EXPECT_EQ(server->port(), port);
    for (int i = 0; i < 3; ++i) {
        TestClient late;
        EXPECT_FALSE(late.connectTo(port));
        EXPECT_EQ(late.socket().error(), QAbstractSocket::ConnectionRefusedError);
    }
    EXPECT_EQ(statistics().requests, 1u);
    EXPECT_EQ(faults(FaultKind::Refuse), 1u);
}

TEST_F(ControllerFaults, RefuseEndsByItselfOnTheSamePort)
{
    settings.refuseMs = 20;
    startWith({"refuse%5"});
    const quint16 port = server->port();
    for (int round = 0; round < 10; ++round) {
        TestClient one;
        ASSERT_TRUE(turnUntil([&] { return !server->isRefusing(); }));
        ASSERT_EQ(server->port(), port);
        ASSERT_TRUE(one.connectTo(port));
        for (int i = 0; i < 4; ++i) {
            ASSERT_EQ(one.exchange(request(i), 15), goodReply(i));
        }
        one.send(request(4));
        ASSERT_TRUE(one.seesTheEnd());
    }
    EXPECT_EQ(faults(FaultKind::Refuse), 10u);
}

TEST_F(ControllerFaults, RefuseComesBackAfterAnotherProgramHeldThePort)
{
    settings.refuseMs = 1;
    startWith({"refuse@1"});
    client.send(request(1));
    ASSERT_TRUE(turnUntil([&] { return server->isRefusing(); }));
    QTcpServer squatter;
    ASSERT_TRUE(squatter.listen(QHostAddress(QHostAddress::LocalHost), server->port()));
    ASSERT_TRUE(turnUntil([&] { return log.join(' ').contains("cannot listen again"); }));
    squatter.close();
    ASSERT_TRUE(turnUntil([&] { return !server->isRefusing(); }));
    EXPECT_TRUE(servesANewClient());
}

TEST_F(ControllerFaults, ExceptionRepliesMeetFaultsToo)
{
    startWith({"duplicate%1"});
    const QByteArray exception = hex("0001 0000 0003 01 E6 03");
    EXPECT_EQ(client.exchange(frame(1, 1, 102, 0), 18), exception + exception);
}

TEST_F(ControllerFaults, RequestsAreCountedOverAllClients)
{
    startWith({"duplicate@3"});
    TestClient other;
    ASSERT_TRUE(other.connectTo(server->port()));
    EXPECT_EQ(client.exchange(request(1), 15), goodReply(1));
    EXPECT_EQ(other.exchange(request(2), 15), goodReply(2));
    EXPECT_EQ(client.exchange(request(3), 30), goodReply(3) + goodReply(3));
    EXPECT_EQ(other.exchange(request(4), 15), goodReply(4));
}

// Each kind with a probability: what the client sees is what the same plan says beforehand.
TEST_F(ControllerFaults, ProbabilitiesFollowTheSeed)
{
    const QStringList rules = {"truncate=0.1", "oversize=0.1", "corrupt=0.1", "duplicate=0.1",
                               "drop=0.1",     "delay=0.1",    "cut=0.1",     "garble=0.1"};
    settings.delayMs = 1;
    startWith(rules, 77);
    QString problem;
    std::vector<FaultRule> parsed;
    for (const QString& rule : rules) {
        parsed.push_back(*parseFaultRule(rule, &problem));
    }
    FaultPlan plan(parsed, 77);
    QByteArray expected;
    constexpr int kRequests = 300;
    for (int i = 0; i < kRequests; ++i) {
        const QByteArray reply = goodReply(i);
        switch (plan.next()) {
        case FaultKind::Drop:
            break;
        case FaultKind::Truncate:
            expected += truncated(reply, plan.detail());
            break;
        case FaultKind::Oversize:
            expected += oversized(reply, plan.detail());
            break;
        case FaultKind::Corrupt:
            expected += corrupted(reply, plan.detail());
            break;
        case FaultKind::Garble:
            expected += garbled(reply, plan.detail());
            break;
        case FaultKind::Cut:
            expected += cutShort(reply, plan.detail());
            break;
        case FaultKind::Duplicate:
            expected += reply + reply;
            break;
        default:
            expected += reply;
        }
        client.send(request(i));
    }
    EXPECT_EQ(client.receive(expected.size()), expected);
    for (const FaultKind kind :
         {FaultKind::Truncate, FaultKind::Oversize, FaultKind::Corrupt, FaultKind::Duplicate,
          FaultKind::Drop, FaultKind::Delay, FaultKind::Cut, FaultKind::Garble}) {
        EXPECT_GT(faults(kind), 5u) << faultRow(kind).name;
    }
}

// The kinds that close connections or reorder replies, with a probability and a fixed seed.
TEST_F(ControllerFaults, ConnectionFaultsFollowTheSeedToo)
{
    settings.lateMs = 1;
    settings.refuseMs = 1;
    const QStringList rules = {"disconnect=0.1", "refuse=0.1", "late=0.2"};
    start(rules, 5);
    QString problem;
    std::vector<FaultRule> parsed;
    for (const QString& rule : rules) {
        parsed.push_back(*parseFaultRule(rule, &problem));
    }
    FaultPlan plan(parsed, 5);
    auto current = std::make_unique<TestClient>();
    ASSERT_TRUE(current->connectTo(server->port()));
    for (int i = 0; i < 120; ++i) {
        const FaultKind kind = plan.next();
        if (kind == FaultKind::Disconnect || kind == FaultKind::Refuse) {
            current->send(request(i));
            ASSERT_TRUE(current->seesTheEnd()) << i;
            ASSERT_EQ(current->waiting(), 0) << i;
            current = std::make_unique<TestClient>();
            ASSERT_TRUE(turnUntil([&] { return !server->isRefusing(); }));
            ASSERT_TRUE(current->connectTo(server->port())) << i;
            continue;
        }
        ASSERT_EQ(current->exchange(request(i), 15), goodReply(i)) << i;
    }
    for (const FaultKind kind : {FaultKind::Disconnect, FaultKind::Refuse, FaultKind::Late}) {
        EXPECT_GT(faults(kind), 3u) << faultRow(kind).name;
    }
}
