// What the cycle does between requests: with the time of operations, with lists that change, with
// connections that go, with frames that nobody asked for.
#include "running_session.h"

#include "support/driver_file.h"
#include "support/wait_until.h"
#include "wire/loopback_listener.h"

#include <atomic>
#include <thread>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

class Cycle : public RunningSession
{
protected:
    // With a connection that is as the test wants it.
    void openWith(const std::function<void(project::Connection&)>& change)
    {
        prepare(Setting());
        reader_.reset();
        session_.reset();
        change(project_.connection);
        QStringList problems;
        session_ = std::make_unique<HostSession>(
            Driver::load(test::driverFile(TAVMIR_DRIVER), problems), project_, options_);
        ASSERT_EQ("", session_->setUp().toStdString());
        reader_ = session_->feed().subscribe();
        start();
    }
};

} // namespace

TEST_F(Cycle, FramesThatAreDroppedDoNotEndTheConnection)
{
    options_.idleMs = 20;
    controller_.treat("g", Mood::answersTwice);
    open();
    EXPECT_EQ("done", write("M.w", "5").state);
    EXPECT_TRUE(test::waitUntil([&] { return figures().discarded == 1; }));
    EXPECT_TRUE(session_->connection().isConnected());
}

TEST_F(Cycle, WhatIsInFlightIsGivenUpWithoutAConnection)
{
    controller_.treat("g", Mood::losesAndLeaves);
    Setting setting;
    setting.connection = ", \"retryLimit\": 1";
    setting.replyTimeoutMs = kSoonMs;
    open(setting);
    const Ended ended = write("M.w", "5", 20000);
    EXPECT_EQ("unknown", ended.state);
    EXPECT_EQ(1u, figures().giveUps) << ended.reason;
}

TEST_F(Cycle, AWriteWhoseTimeIsOverIsNotSentThoughNobodyAwaitsIt)
{
    controller_.treat("f", Mood::silent);
    Setting setting;
    setting.connection = ", \"retryLimit\": 0";
    setting.replyTimeoutMs = 3000; // the read's, waited through; both writes are queued by then
    open(setting);
    queueRead("M.w");
    ASSERT_TRUE(reaches("f", 1));
    queueWrite("M.d", "7", 1);
    EXPECT_EQ("done", write("M.a[0]", "8").state);
    EXPECT_EQ(0u, controller_.count("m"));
}

TEST_F(Cycle, WhatExpiresWithoutAConnectionMakesRoomForOtherStations)
{
    controller_.unplug();
    Setting setting;
    setting.connection = ", \"stationMode\": \"own\"";
    setting.polled = R"({ "address": "M.d", "station": 2 })";
    options_.polls = false;
    open(setting);
    queueWrite("M.w", "5", 50);
    const Asked second = queueWrite("M.d", "6"); // waits in line for the first one's end
    EXPECT_TRUE(figures().connects == 0);
    controller_.plug();
    EXPECT_EQ("done", await(second).state);
    EXPECT_EQ(0u, controller_.count("g"));
}

TEST_F(Cycle, AReplyToTheListBeforeDoesNotCountForTheNewOne)
{
    std::atomic<bool> replaced{false};
    controller_.judge("f", [&](const QByteArray&, int number) {
        if (number == 1) {
            test::waitUntil([&] { return replaced.load(); });
        }
        return Mood::answers;
    });
    options_.passMs = 100 * kPatientMs;
    Setting setting;
    setting.polled = R"({ "address": "M.w" })";
    open(setting);
    ASSERT_TRUE(reaches("f", 1));
    EXPECT_EQ("", poll({"M.w", "M.d"}));
    replaced = true;
    EXPECT_TRUE(reaches("l", 1)) << "the new list's first pass is whole";
    EXPECT_EQ(2u, controller_.count("f"));
}

TEST_F(Cycle, AReplyThatTheDriverRefusesBringsNoValue)
{
    controller_.set('f', kWordAt, 0x1234);
    controller_.treat("f", Mood::addsAByte);
    Setting setting;
    setting.connection = ", \"retryLimit\": 0";
    open(setting);
    const Outcome outcome = session_->await(queueRead("M.w").id);
    EXPECT_EQ("unknown", std::string(outcomeWord(outcome.state)));
    EXPECT_EQ(QByteArray(2, '\0'), outcome.bytes);
}

TEST_F(Cycle, StoppingEndsTheWaitForTheConnection)
{
    prepare(Setting());
    const Clock::time_point start = Clock::now();
    std::thread waiting(
        [&] { EXPECT_FALSE(session_->connection().awaitAttempt(Deadline(kPatientMs))); });
    session_->stop();
    waiting.join();
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(kPatientMs / 2));
}

TEST_F(Cycle, AWriteThatCannotWaitForABitsEndIsNotSent)
{
    controller_.treat("f", Mood::silent);
    open();
    Ended bit;
    std::thread writing([&] { bit = write("M.w.b[0]", "1"); });
    ASSERT_TRUE(reaches("f", 1));
    const Ended ended = await(queueWrite("M.d", "5", 20));
    EXPECT_EQ("not sent", ended.state);
    EXPECT_EQ("earlier writes did not end in time", ended.reason);
    session_->stop();
    writing.join();
    EXPECT_EQ("not sent", bit.state);
}

TEST_F(Cycle, AReadInFlightStaysInTheDriversListWhenItsTimeIsOver)
{
    std::atomic<bool> over{false};
    controller_.judge("f", [&](const QByteArray&, int) {
        test::waitUntil([&] { return over.load(); });
        return Mood::answers;
    });
    open();
    const Asked first = queueRead("M.w", kSentByThenMs);
    ASSERT_TRUE(reaches("f", 1));
    const Asked second = queueRead("M.d"); // another class: a request of its own
    EXPECT_EQ("unknown", await(first).state);
    over = true;
    EXPECT_EQ("done", await(second).state);
}

TEST_F(Cycle, AWriteThatWaitedInLineForTooLongIsNeverSent)
{
    std::atomic<bool> over{false};
    controller_.judge("g", [&](const QByteArray&, int) {
        test::waitUntil([&] { return over.load(); });
        return Mood::answers;
    });
    Setting setting;
    setting.connection = ", \"stationMode\": \"own\"";
    setting.polled = R"({ "address": "M.d", "station": 2 })";
    options_.polls = false;
    open(setting);
    const Asked first = queueWrite("M.w", "5");
    EXPECT_EQ("not sent", write("M.d", "6", 20).state);
    over = true;
    EXPECT_EQ("done", await(first).state);
    EXPECT_EQ("done", write("M.a[0]", "8").state);
    EXPECT_EQ(0u, controller_.count("m"));
}

TEST_F(Cycle, AListThatIsPolledLaterSaysWhichStation)
{
    Setting setting;
    setting.connection = ", \"stationMode\": \"own\"";
    open(setting);
    EXPECT_EQ("", poll({"M.w"}, 2));
    EXPECT_EQ("done", write("M.w", "5").state);
    EXPECT_EQ(5u, controller_.getAt(2, 'f', kWordAt));
    EXPECT_EQ(2, session_->polled().at(0).station);
}

TEST_F(Cycle, PausesGrowUpToTheProjectsBound)
{
    controller_.unplug();
    openWith([](project::Connection& connection) {
        connection.reconnectMinMs = 10;
        connection.reconnectMaxMs = 600000;
    });
    ASSERT_TRUE(test::waitUntil([&] { return connectFailures() > 0; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(1000));
    EXPECT_GT(12u, connectFailures()) << "10, 20, 40 ... ms";
}

TEST_F(Cycle, ConnectingHasATimeOfItsOwn)
{
    controller_.unplug();
    test::LoopbackListener deaf("127.0.0.1", controller_.port());
    deaf.goDeaf();
    openWith([](project::Connection& connection) { connection.connectTimeoutMs = 50; });
    EXPECT_TRUE(test::waitUntil([&] { return connectFailures() > 0; }));
}

TEST_F(Cycle, ARecordsWriteWaitsForThoseOfOtherStations)
{
    Setting setting;
    setting.connection = ", \"stationMode\": \"own\"";
    prepare(setting);
    RW_VAR record;
    record.dataType = 4;
    record.elementAddress = static_cast<qint32>(kWordAt);
    record.station = 2;
    record.hostData2 = 1;
    record.value = QByteArray::fromHex("0500");
    record.count = 1;
    const OperationId first = session_->queueRecord(record, Deadline(kPatientMs));
    record.station = 3;
    record.value = QByteArray::fromHex("0700");
    OperationId second;
    std::thread writing([&] { second = session_->queueRecord(record, Deadline(kPatientMs)); });
    std::this_thread::sleep_for(
        std::chrono::milliseconds(100)); // until it has been given, or waits
    start();
    writing.join();
    EXPECT_TRUE(session_->await(first).ok());
    EXPECT_TRUE(session_->await(second).ok());
    EXPECT_EQ(5u, controller_.getAt(2, 'f', kWordAt));
    EXPECT_EQ(7u, controller_.getAt(3, 'f', kWordAt));
}

TEST_F(Cycle, NothingIsCountedForAStationThatIsSwitchedOff)
{
    Setting setting;
    setting.connection = ", \"retryLimit\": 0";
    open(setting);
    EXPECT_EQ("done", write("M.w", "5").state);
    const quint64 received = figures().bytesReceived;
    const quint64 sent = figures().bytesSent;
    session_->enableStation(1, false);
    EXPECT_EQ("not sent", write("M.w", "6").state);
    EXPECT_EQ(1u, figures().suppressed);
    EXPECT_EQ(received, figures().bytesReceived);
    EXPECT_EQ(sent, figures().bytesSent);
}

TEST_F(Cycle, ARepetitionBelongsToTheListThatItsRequestWasBuiltFrom)
{
    controller_.judge("f", untilNumber(2, Mood::silent));
    Setting setting;
    setting.polled = R"({ "address": "M.w" })";
    setting.replyTimeoutMs = kSoonMs;
    prepare(setting);
    const std::unique_ptr<FeedReader> reader = session_->feed().subscribe();
    start();
    ASSERT_TRUE(reaches("f", 1));
    EXPECT_EQ("", poll({"M.d"}));
    ASSERT_TRUE(reaches("l", 1));
    std::vector<quint32> generations;
    reader->read([&](const FeedEntry& entry) {
        if (entry.kind == FeedKind::exchange && generations.size() < 2) {
            generations.push_back(entry.exchange.generation);
        }
    });
    EXPECT_EQ((std::vector<quint32>{1, 1}), generations);
}

TEST_F(Cycle, ARepetitionIsCountedAsOneAndNotAsARequest)
{
    controller_.judge("g", untilNumber(3, Mood::silent));
    Setting setting;
    setting.connection = ", \"retryLimit\": 5";
    setting.replyTimeoutMs = 2000; // time enough for the third reply, as attempts are counted
    open(setting);
    EXPECT_EQ("done", write("M.w", "5").state);
    EXPECT_EQ(1u, figures().requests);
    EXPECT_EQ(2u, figures().retries);
    EXPECT_EQ(2u, figures().timeouts);
}

TEST_F(Cycle, ReadsThatTheDriverDroppedBehindOneThatItGaveUpEnd)
{
    controller_.treat("f", Mood::silent);
    Setting setting;
    setting.connection = ", \"retryLimit\": 0";
    setting.replyTimeoutMs = 2 * kSoonMs;
    prepare(setting);
    const Asked first = queueRead("M.w");
    const Asked second = queueRead("M.d", 20000); // another class: a request of its own
    start();                                      // both wait by then
    EXPECT_EQ("unknown", await(first).state);
    const Ended ended = await(second);
    EXPECT_EQ("not sent", ended.state);
    EXPECT_EQ(0u, ended.reason.find("dropped behind one that was given up: ")) << ended.reason;
}

} // namespace tavmir::host
