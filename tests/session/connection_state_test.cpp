// How the connection stands, told to who asks and to who waits.
#include "session/connection_state.h"

#include <gtest/gtest.h>

#include <thread>

namespace tavmir::host
{

namespace
{

constexpr int kPatientMs = 60000;

} // namespace

TEST(ConnectionState, BeforeAnAttempt)
{
    const ConnectionState state;
    EXPECT_FALSE(state.isConnected());
    EXPECT_EQ("not tried yet", state.problem().toStdString());
    EXPECT_FALSE(state.awaitAttempt(Deadline(0)));
}

TEST(ConnectionState, FollowsWhatItIsTold)
{
    ConnectionState state;
    state.disconnected("refused");
    EXPECT_FALSE(state.isConnected());
    EXPECT_EQ("refused", state.problem().toStdString());
    state.connected();
    EXPECT_TRUE(state.isConnected());
    EXPECT_TRUE(state.awaitAttempt(Deadline(0)));
    state.disconnected("cut");
    EXPECT_FALSE(state.isConnected());
    EXPECT_EQ("cut", state.problem().toStdString());
}

TEST(ConnectionState, AnAttemptThatEndedIsNotWaitedFor)
{
    const Clock::time_point start = Clock::now();
    ConnectionState failed;
    failed.disconnected("refused");
    EXPECT_FALSE(failed.awaitAttempt(Deadline(kPatientMs)));
    ConnectionState good;
    good.connected();
    EXPECT_TRUE(good.awaitAttempt(Deadline(kPatientMs)));
    ConnectionState closed;
    closed.close();
    EXPECT_FALSE(closed.awaitAttempt(Deadline(kPatientMs)));
    ConnectionState lost;
    lost.connected();
    lost.disconnected("cut");
    EXPECT_FALSE(lost.awaitAttempt(Deadline(kPatientMs)));
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(kPatientMs / 2));
}

TEST(ConnectionState, WhatIsClosedIsNotConnected)
{
    ConnectionState state;
    state.connected();
    state.close();
    EXPECT_FALSE(state.isConnected());
    EXPECT_EQ("the host stops", state.problem().toStdString());
    EXPECT_FALSE(state.awaitAttempt(Deadline(kPatientMs)));
}

TEST(ConnectionState, EachEndOfAnAttemptWakesWhoWaits)
{
    for (int end = 0; end < 3; ++end) {
        ConnectionState state;
        const Clock::time_point start = Clock::now();
        std::thread other([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20)); // most likely it waits
            if (end == 0) {
                state.connected();
            } else if (end == 1) {
                state.disconnected("refused");
            } else {
                state.close();
            }
        });
        EXPECT_EQ(end == 0, state.awaitAttempt(Deadline(kPatientMs))) << end;
        other.join();
        EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(kPatientMs / 2)) << end;
    }
}

TEST(ConnectionState, TheDeadlineEndsAWait)
{
    const ConnectionState state;
    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(state.awaitAttempt(Deadline(30)));
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));
}

} // namespace tavmir::host
