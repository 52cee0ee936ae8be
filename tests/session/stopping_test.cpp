// What is under way when the session stops is reported, with what may have become of it.
#include "running_session.h"

#include "support/wait_until.h"

#include <thread>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

class Stopping : public RunningSession
{
};

} // namespace

TEST_F(Stopping, WriteUnderWayIsUnknownAndWhatWaitsBehindItNotSent)
{
    controller_.treat("gf", Mood::loses);
    open();
    const Asked inFlight = queueWrite("M.w", "5");
    ASSERT_TRUE(reaches("g", 1));
    const Asked behind = queueWrite("M.a[0]", "6");
    const Asked doubleWord = queueWrite("M.d", "7");
    session_->stop();
    const Ended sent = await(inFlight);
    EXPECT_EQ("unknown", sent.state) << sent.reason;
    EXPECT_EQ(5u, controller_.get('f', kWordAt)) << "that is why it is unknown";
    for (const Asked& asked : {behind, doubleWord}) {
        const Ended ended = await(asked);
        EXPECT_EQ("not sent", ended.state) << ended.reason;
    }
}

TEST_F(Stopping, WriteOnAnotherThreadIsToldItsEnd)
{
    controller_.treat("g", Mood::silent);
    open();
    Ended ended;
    std::thread writer([&] { ended = write("M.w", "5"); });
    ASSERT_TRUE(reaches("g", 1));
    session_->stop();
    writer.join();
    EXPECT_EQ("unknown", ended.state) << ended.reason;
}

TEST_F(Stopping, WriteThatWaitsForTheConnectionIsNotSent)
{
    controller_.unplug();
    Setting setting;
    setting.connection = ", \"retryLimit\": 1000";
    setting.reconnectMs = kPatientMs;
    open(setting);
    Ended ended;
    std::thread writer([&] { ended = write("M.w", "5"); });
    EXPECT_TRUE(test::waitUntil([&] { return connectFailures() > 0; }));
    session_->stop();
    writer.join();
    EXPECT_EQ("not sent", ended.state) << ended.reason;
}

TEST_F(Stopping, HalfATextIsPartialAtTheEnd)
{
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::answers : Mood::silent;
    });
    open();
    const Asked text = queueWrite("M.text", QString(2 * kTextWords, 'z'));
    ASSERT_TRUE(reaches("g", 2));
    session_->stop();
    const Ended ended = await(text);
    EXPECT_EQ("partial", ended.state) << ended.reason;
    EXPECT_EQ(kWordsOfARequest, ended.acknowledged);
    EXPECT_EQ(kTextWords, ended.elements);
}

TEST_F(Stopping, BitWhoseWordIsBeingReadIsNotSent)
{
    controller_.treat("f", Mood::silent);
    open();
    Ended ended;
    std::thread writer([&] { ended = write("M.w.b[4]", "1"); });
    ASSERT_TRUE(reaches("f", 1));
    session_->stop();
    writer.join();
    EXPECT_EQ("not sent", ended.state) << ended.reason;
}

TEST_F(Stopping, WhatIsAskedAfterTheEndIsNotSent)
{
    open();
    EXPECT_EQ("done", write("M.w", "5").state);
    session_->stop();
    EXPECT_EQ("not sent", write("M.w", "6").state);
    EXPECT_EQ("not sent", await(queueWrite("M.d", "6")).state);
    EXPECT_EQ("not sent", read("M.w").state);
    EXPECT_EQ(1u, controller_.count("fglm"));
}

TEST_F(Stopping, WhatEndedBeforeKeepsItsEnd)
{
    open();
    const Asked word = queueWrite("M.w", "5");
    const Asked reading = queueRead("M.d");
    ASSERT_TRUE(reaches("g", 1));
    ASSERT_TRUE(reaches("l", 1));
    EXPECT_EQ("done", write("M.a[0]", "1").state); // both have been answered by now
    EXPECT_EQ("done", read("M.a[0]").state);
    session_->stop();
    EXPECT_EQ("done", await(word).state);
    EXPECT_EQ("done", await(reading).state);
}

} // namespace tavmir::host
