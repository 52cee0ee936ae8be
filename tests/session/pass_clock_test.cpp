// When passes begin and end.
#include "session/pass_clock.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

constexpr Clock::duration kInstant(1);

Clock::time_point at(int ms)
{
    return Clock::time_point(std::chrono::hours(1) + std::chrono::milliseconds(ms));
}

} // namespace

TEST(PassClock, WithoutElementsNothingIsEverDue)
{
    PassClock clock(100);
    EXPECT_FALSE(clock.isPolling());
    EXPECT_FALSE(clock.isDue(at(0)));
    clock.restart(0, at(0));
    clock.asked(5, at(1));
    EXPECT_FALSE(clock.isPolling());
    EXPECT_FALSE(clock.isDue(at(1000000)));
    EXPECT_EQ(0u, clock.passes());
    EXPECT_EQ(0u, clock.elementsAsked());
}

TEST(PassClock, AFirstPassIsDueAtOnce)
{
    PassClock clock(100);
    clock.restart(10, at(50));
    EXPECT_TRUE(clock.isPolling());
    EXPECT_EQ(at(50), clock.begin());
    EXPECT_TRUE(clock.isDue(at(50)));
    EXPECT_FALSE(clock.isDue(at(50) - kInstant));
}

TEST(PassClock, APassIsDueUntilAllItsElementsWereAskedFor)
{
    PassClock clock(100);
    clock.restart(10, at(0));
    clock.asked(4, at(1));
    clock.asked(5, at(2));
    EXPECT_TRUE(clock.isDue(at(2)));
    EXPECT_EQ(at(0), clock.begin());
    EXPECT_EQ(0u, clock.passes());
    EXPECT_EQ(9u, clock.elementsAsked());
    clock.asked(1, at(3));
    EXPECT_EQ(1u, clock.passes());
    EXPECT_EQ(10u, clock.elementsAsked());
    EXPECT_FALSE(clock.isDue(at(3)));
}

TEST(PassClock, TheNextIsDueExactlyAPassAfterTheBeginningOfTheLast)
{
    PassClock clock(100);
    clock.restart(3, at(0));
    clock.begins(at(0));
    clock.asked(3, at(7));
    EXPECT_EQ(at(100), clock.begin());
    EXPECT_FALSE(clock.isDue(at(100) - kInstant));
    EXPECT_TRUE(clock.isDue(at(100)));
    EXPECT_TRUE(clock.isDue(at(100) + kInstant));
}

TEST(PassClock, APassThatTakesLongerIsFollowedAtOnceAndOnlyOnce)
{
    PassClock clock(100);
    clock.restart(3, at(0));
    clock.begins(at(0));
    clock.asked(3, at(350));
    EXPECT_EQ(at(350), clock.begin());
    clock.begins(at(350));
    clock.asked(3, at(360));
    EXPECT_EQ(at(450), clock.begin()) << "what was missed is not made up for";
}

TEST(PassClock, ALateThreadKeepsTheBeat)
{
    PassClock clock(100);
    clock.restart(3, at(0));
    clock.begins(at(30));
    clock.asked(3, at(35));
    EXPECT_EQ(at(100), clock.begin());
}

TEST(PassClock, APassThatBeginsLateByMoreThanOneSetsTheBeatAnew)
{
    PassClock clock(100);
    clock.restart(3, at(0));
    clock.begins(at(5000)); // the connection came late
    clock.asked(2, at(5001));
    clock.begins(at(5001));
    clock.asked(1, at(5150));
    EXPECT_EQ(at(5150), clock.begin());
    clock.begins(at(5400));
    clock.begins(at(5410));
    clock.asked(3, at(5420));
    EXPECT_EQ(at(5500), clock.begin());
}

TEST(PassClock, WithPassesOfNoTimeTheNextIsDueAtOnce)
{
    PassClock clock(0);
    clock.restart(3, at(0));
    clock.begins(at(0));
    clock.asked(3, at(7));
    EXPECT_EQ(at(7), clock.begin());
    EXPECT_TRUE(clock.isDue(at(7)));
    EXPECT_EQ(1u, clock.passes());
}

TEST(PassClock, WhatGoesOnWithTheListsHeadCountsForTheNextPass)
{
    PassClock clock(100);
    clock.restart(10, at(0));
    clock.asked(8, at(1));
    clock.asked(8, at(2)); // 2 of this pass, 6 of the next
    EXPECT_EQ(1u, clock.passes());
    EXPECT_EQ(at(100), clock.begin());
    clock.begins(at(103));
    clock.asked(3, at(103));
    EXPECT_EQ(1u, clock.passes());
    EXPECT_TRUE(clock.isDue(at(103)));
    clock.asked(1, at(104));
    EXPECT_EQ(2u, clock.passes());
    EXPECT_EQ(at(200), clock.begin());
    EXPECT_EQ(20u, clock.elementsAsked());
}

TEST(PassClock, ARequestLongerThanTheListIsSeveralPasses)
{
    PassClock clock(100);
    clock.restart(4, at(0));
    clock.asked(11, at(1));
    EXPECT_EQ(2u, clock.passes());
    EXPECT_EQ(at(100), clock.begin());
    clock.asked(1, at(102)); // the three that went before, and this one
    EXPECT_EQ(3u, clock.passes());
    EXPECT_EQ(at(200), clock.begin());
    clock.asked(8, at(203));
    EXPECT_EQ(5u, clock.passes());
    EXPECT_EQ(20u, clock.elementsAsked());
}

TEST(PassClock, AnotherListBeginsAnewInTheMiddleOfAPass)
{
    PassClock clock(100);
    clock.restart(10, at(0));
    clock.asked(9, at(1));
    clock.restart(5, at(2));
    EXPECT_EQ(at(2), clock.begin());
    clock.asked(4, at(3));
    EXPECT_EQ(0u, clock.passes()) << "nothing of the old list counts";
    clock.asked(1, at(4));
    EXPECT_EQ(1u, clock.passes());
    EXPECT_EQ(14u, clock.elementsAsked()) << "of all lists";
    EXPECT_EQ(at(102), clock.begin());
    clock.restart(5, at(5));
    EXPECT_TRUE(clock.isDue(at(5))) << "a new list does not wait for its turn";
    EXPECT_EQ(1u, clock.passes());
    clock.restart(0, at(6));
    EXPECT_FALSE(clock.isPolling());
    EXPECT_FALSE(clock.isDue(at(7)));
}

} // namespace tavmir::host
