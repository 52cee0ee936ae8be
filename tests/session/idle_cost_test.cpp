// A session that waits costs no processor time, whatever it waits for: a wait that is left out
// or ends too early makes a thread run in circles, and nothing else would show it.
#include "running_session.h"

#include "support/wait_until.h"

#include <ctime>
#include <thread>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

constexpr int kForeverMs = 100 * kPatientMs;
constexpr int kWatchedMs = 500;
constexpr double kMostShare = 0.4; // of a processor; in circles it takes all of one it can get

class IdleCost : public RunningSession
{
protected:
    static double processorMs()
    {
        timespec now = {};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return 1e3 * static_cast<double>(now.tv_sec) + 1e-6 * static_cast<double>(now.tv_nsec);
    }

    static void expectSleep()
    {
        const double before = processorMs();
        std::this_thread::sleep_for(std::chrono::milliseconds(kWatchedMs));
        EXPECT_LT(processorMs() - before, kMostShare * kWatchedMs);
    }
};

} // namespace

TEST_F(IdleCost, WithNothingToDo)
{
    options_.idleMs = kForeverMs;
    open();
    EXPECT_EQ("done", write("M.w", "1").state);
    expectSleep();
    EXPECT_EQ(1u, controller_.count("defglm"));
}

TEST_F(IdleCost, BetweenPasses)
{
    options_.idleMs = kForeverMs;
    options_.passMs = kForeverMs;
    Setting setting;
    setting.polled = R"({ "address": "M.w" })";
    open(setting);
    ASSERT_TRUE(reaches("f", 1));
    expectSleep();
    EXPECT_EQ("done", write("M.d", "1").state);
    expectSleep();
    EXPECT_EQ(1u, controller_.count("f"));
}

TEST_F(IdleCost, WithoutAConnection)
{
    controller_.unplug();
    Setting setting;
    setting.reconnectMs = kPatientMs;
    setting.polled = R"({ "address": "M.w" })";
    open(setting);
    ASSERT_TRUE(test::waitUntil([&] { return connectFailures() == 1; }));
    expectSleep();
    EXPECT_EQ(1u, connectFailures());
}

TEST_F(IdleCost, WithAWriteThatWaitsForTheConnection)
{
    controller_.unplug();
    Setting setting;
    setting.reconnectMs = kPatientMs;
    open(setting);
    const Asked asked = queueWrite("M.w", "5");
    ASSERT_TRUE(test::waitUntil([&] { return connectFailures() == 1; }));
    expectSleep();
    EXPECT_EQ(1u, connectFailures());
    session_->stop();
    EXPECT_EQ("not sent", await(asked).state);
}

TEST_F(IdleCost, AfterAWriteWhoseTimeIsOver)
{
    controller_.unplug();
    Setting setting;
    setting.reconnectMs = kPatientMs;
    open(setting);
    EXPECT_EQ("not sent", write("M.w", "5", kSoonMs / 4).state);
    expectSleep();
    EXPECT_EQ(1u, connectFailures());
}

TEST_F(IdleCost, WhileAReplyIsWaitedFor)
{
    controller_.treat("g", Mood::silent);
    open();
    const Asked asked = queueWrite("M.w", "5", kSentByThenMs);
    ASSERT_TRUE(reaches("g", 1));
    EXPECT_EQ("unknown", await(asked).state); // and its request is still under way
    expectSleep();
    EXPECT_EQ(1u, controller_.count("g"));
}

TEST_F(IdleCost, WithStationsSwitchedOff)
{
    Setting setting;
    setting.polled = R"({ "address": "M.w" })";
    open(setting);
    ASSERT_TRUE(reaches("f", 1));
    session_->enableStation(1, false);
    expectSleep();
    const size_t before = controller_.count("f");
    expectSleep();
    EXPECT_EQ(before, controller_.count("f"));
}

} // namespace tavmir::host
