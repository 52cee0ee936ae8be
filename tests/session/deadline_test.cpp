// A command lives until its time is over: it waits for the connection that long, and is never
// executed later.
#include "running_session.h"

#include "support/wait_until.h"

#include <thread>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

constexpr int kPauseMs = 20; // between attempts to connect; a write survives a thousand of them

class Deadlines : public RunningSession
{
protected:
    // With a driver that would go on trying for ages.
    void openPatiently(int replyTimeoutMs = kPatientMs)
    {
        Setting setting;
        setting.connection = ", \"retryLimit\": 1000";
        setting.replyTimeoutMs = replyTimeoutMs;
        setting.reconnectMs = kPauseMs;
        open(setting);
    }

    // Whatever the driver still had has been sent when this returns.
    void expectWorkGoesOn()
    {
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ("done", write("M.many[1]", QString::number(i)).state);
        }
    }
};

} // namespace

TEST_F(Deadlines, WriteWaitsForTheConnection)
{
    controller_.unplug();
    Setting setting;
    setting.connection = ", \"retryLimit\": 2";
    open(setting);
    Ended word;
    Ended bit;
    std::thread words([&] { word = write("M.w", "5"); });
    std::thread bits([&] { bit = write("M.d.b[3]", "1"); });
    EXPECT_TRUE(test::waitUntil([&] { return connectFailures() > 20; }));
    controller_.plug();
    words.join();
    bits.join();
    EXPECT_EQ("done", word.state) << word.reason;
    EXPECT_EQ("done", bit.state) << bit.reason;
    EXPECT_EQ(5u, controller_.get('f', kWordAt));
    EXPECT_EQ(8u, controller_.get('l', kDwordAt));
    EXPECT_EQ(1u, controller_.count("g"));
}

TEST_F(Deadlines, ReadWaitsForTheConnection)
{
    controller_.unplug();
    Setting setting;
    setting.connection = ", \"retryLimit\": 2";
    open(setting);
    controller_.set('f', kWordAt, 77);
    Ended ended;
    std::thread reader([&] { ended = read("M.w"); });
    EXPECT_TRUE(test::waitUntil([&] { return connectFailures() > 20; }));
    controller_.plug();
    reader.join();
    EXPECT_EQ("done", ended.state) << ended.reason;
    EXPECT_EQ("77", ended.value);
}

TEST_F(Deadlines, WriteWhoseTimeIsOverIsNotExecutedWhenTheControllerComesBack)
{
    controller_.unplug();
    openPatiently();
    const Ended ended = write("M.w", "5", kSoonMs);
    EXPECT_EQ("not sent", ended.state) << ended.reason;
    controller_.plug();
    expectWorkGoesOn();
    EXPECT_TRUE(controller_.requestsOf("g", kWordAt).empty());
    EXPECT_EQ(0u, controller_.get('f', kWordAt));
}

// Nobody needs to ask for its end: it ends by itself while the controller is away.
TEST_F(Deadlines, WriteThatNobodyAwaitsEndsAndIsNotExecutedLater)
{
    controller_.unplug();
    openPatiently();
    queueWrite("M.w", "5", kSoonMs);
    queueRead("M.d", kSoonMs);
    EXPECT_TRUE(test::waitUntil([&] {
        return figures().ended(OperationKind::write, OutcomeState::notSent) == 1 &&
               figures().ended(OperationKind::read, OutcomeState::notSent) == 1;
    }));
    controller_.plug();
    expectWorkGoesOn();
    EXPECT_TRUE(controller_.requestsOf("g", kWordAt).empty());
    EXPECT_EQ(0u, controller_.count("l"));
}

TEST_F(Deadlines, WriteThatNobodyAwaitsIsNotSentBehindARequestWithoutAnswer)
{
    openPatiently(kSoonMs);
    controller_.treat("g", Mood::silent);
    queueWrite("M.w", "5");
    ASSERT_TRUE(reaches("g", 1));
    queueWrite("M.a[0]", "6", kSoonMs);
    const size_t before = controller_.count("g");
    ASSERT_TRUE(reaches("g", before + 3)); // three time-outs later its time is over
    controller_.treat("g", Mood::answers);
    expectWorkGoesOn();
    EXPECT_TRUE(controller_.requestsOf("g", kArrayAt).empty());
    EXPECT_EQ(5u, controller_.get('f', kWordAt));
}

TEST_F(Deadlines, OfManyWaitingOnlyThoseWithTimeLeftAreExecuted)
{
    controller_.unplug();
    openPatiently();
    std::vector<Asked> asked;
    for (int i = 0; i < 10; ++i) {
        asked.push_back(
            queueWrite(QString("M.a[%1]").arg(i), "7", i % 2 == 0 ? kSoonMs : kPatientMs));
    }
    for (size_t i = 0; i < 10; i += 2) {
        EXPECT_EQ("not sent", await(asked[i]).state) << i;
    }
    controller_.plug();
    for (size_t i = 1; i < 10; i += 2) {
        EXPECT_EQ("done", await(asked[i]).state) << i;
    }
    expectWorkGoesOn();
    for (quint32 i = 0; i < 10; ++i) {
        const bool timeLeft = i % 2 == 1;
        EXPECT_EQ(timeLeft ? 7u : 0u, controller_.get('f', kArrayAt + 16 * i)) << i;
        EXPECT_EQ(timeLeft, !controller_.requestsOf("g", kArrayAt + 16 * i).empty()) << i;
    }
}

TEST_F(Deadlines, WhatWaitsBehindARequestWithoutAnswerIsNotExecutedLater)
{
    openPatiently(kSoonMs);
    controller_.treat("g", Mood::silent);
    const Asked inFlight = queueWrite("M.w", "5", kSentByThenMs);
    ASSERT_TRUE(reaches("g", 1));
    const Asked behind = queueWrite("M.a[0]", "6", kSentByThenMs);
    const Asked text = queueWrite("M.text", QString(2 * kTextWords, 'z'), kSentByThenMs);
    const Asked doubleWord = queueWrite("M.d", "7", kSentByThenMs);
    EXPECT_EQ("unknown", await(inFlight).state);
    for (const Asked& asked : {behind, text, doubleWord}) {
        const Ended ended = await(asked);
        EXPECT_EQ("not sent", ended.state) << ended.reason;
    }
    controller_.treat("g", Mood::answers);
    expectWorkGoesOn();
    EXPECT_TRUE(controller_.requestsOf("g", kArrayAt).empty());
    EXPECT_TRUE(controller_.requestsOf("g", kTextAt).empty());
    EXPECT_TRUE(controller_.requestsOf("m", kDwordAt).empty());
}

TEST_F(Deadlines, RestOfATextIsNotSentWhenItsTimeIsOver)
{
    openPatiently(kSoonMs);
    controller_.treat("g", Mood::silent);
    const Ended ended = write("M.text", QString(2 * kTextWords, 'z'), kSentByThenMs);
    EXPECT_EQ("unknown", ended.state) << ended.reason;
    controller_.treat("g", Mood::answers);
    expectWorkGoesOn();
    EXPECT_TRUE(controller_.requestsOf("g", kTextAt + 16 * (kTextWords - 1)).empty());
}

// 38 words are known to be written; that the rest is still under way does not make them unknown.
TEST_F(Deadlines, TextOfWhichHalfWasAcknowledgedIsPartialWhenItsTimeIsOver)
{
    openPatiently();
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::answers : Mood::silent;
    });
    const Ended ended = write("M.text", QString(2 * kTextWords, 'z'), kSentByThenMs);
    EXPECT_EQ("partial", ended.state) << ended.reason;
    EXPECT_EQ(kWordsOfARequest, ended.acknowledged);
    EXPECT_EQ(kTextWords, ended.elements);
    EXPECT_EQ(2u, controller_.count("g"));
}

TEST_F(Deadlines, ReadWhoseTimeIsOverIsNotSentLater)
{
    controller_.unplug();
    openPatiently();
    const Ended ended = read("M.w", kSoonMs);
    EXPECT_EQ("not sent", ended.state) << ended.reason;
    controller_.plug();
    EXPECT_EQ("done", read("M.a[0]").state);
    expectWorkGoesOn();
    EXPECT_TRUE(controller_.requestsOf("f", kWordAt).empty());
}

TEST_F(Deadlines, BitWhoseTimeIsOverIsNotWrittenLater)
{
    controller_.unplug();
    openPatiently();
    EXPECT_EQ("not sent", write("M.w.b[4]", "1", kSoonMs).state);
    controller_.plug();
    expectWorkGoesOn();
    EXPECT_TRUE(controller_.requestsOf("fg", kWordAt).empty());
}

// Of all that time could be lost for, only what is in flight may still be carried out.
TEST_F(Deadlines, AnEndAfterTheTimeIsNoOneElses)
{
    openPatiently(kSoonMs);
    controller_.treat("g", Mood::silent);
    EXPECT_EQ("unknown", write("M.w", "5", kSentByThenMs).state);
    controller_.treat("g", Mood::answers);
    EXPECT_EQ("done", write("M.w", "6").state);
    EXPECT_EQ(6u, controller_.get('f', kWordAt));
}

} // namespace tavmir::host
