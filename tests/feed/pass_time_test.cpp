// How long a pass takes, by the requests that went by.
#include "feed/pass_time.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

int msOf(const PassTime& pass)
{
    return static_cast<int>(pass.length() / std::chrono::milliseconds(1));
}

} // namespace

TEST(PassTime, IsOverWhenAllElementsWereAskedFor)
{
    PassTime pass;
    EXPECT_EQ(0, msOf(pass));
    pass.restart(100, momentAt(0));
    pass.asked(60, momentAt(10));
    pass.asked(40, momentAt(30));
    EXPECT_EQ(30, msOf(pass));
    pass.asked(60, momentAt(80));
    EXPECT_EQ(30, msOf(pass)) << "of the last pass that is over";
    pass.asked(40, momentAt(130));
    EXPECT_EQ(100, msOf(pass));
}

TEST(PassTime, AFirstPassIsReckonedByItsRateSoFar)
{
    PassTime pass;
    pass.restart(100, momentAt(0));
    pass.asked(25, momentAt(50));
    EXPECT_EQ(200, msOf(pass));
    pass.asked(25, momentAt(400));
    EXPECT_EQ(800, msOf(pass));
}

TEST(PassTime, ARequestThatGoesOnWithTheHeadCountsForTheNextPass)
{
    PassTime pass;
    pass.restart(100, momentAt(0));
    pass.asked(120, momentAt(10));
    pass.asked(80, momentAt(50));
    EXPECT_EQ(40, msOf(pass));
}

TEST(PassTime, TheTimeWithoutAConnectionIsOfNoPass)
{
    PassTime pass;
    pass.restart(100, momentAt(0));
    pass.asked(100, momentAt(10));
    pass.asked(50, momentAt(15));
    pass.resume(momentAt(5000));
    EXPECT_EQ(10, msOf(pass));
    pass.asked(100, momentAt(5020));
    EXPECT_EQ(20, msOf(pass));
}

TEST(PassTime, WithoutElementsThereIsNone)
{
    PassTime pass;
    pass.restart(0, momentAt(0));
    pass.asked(10, momentAt(10));
    pass.asked(10, momentAt(20));
    EXPECT_EQ(0, msOf(pass));
    pass.restart(10, momentAt(30));
    pass.asked(10, momentAt(32));
    EXPECT_EQ(2, msOf(pass));
}

} // namespace tavmir::host
