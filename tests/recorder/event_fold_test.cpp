// What events say of the line and of variables that are set aside.
#include "recorder/event_fold.h"

#include <gtest/gtest.h>

namespace tavmir::recorder
{

namespace
{

class EventFoldTest : public testing::Test
{
protected:
    void take(Micros at, const char* kind, const char* text = "", const char* subject = "")
    {
        fold.take({at, 0, kind, subject, text});
    }

    bool isLine(const char* kind, Micros since, bool isSinceOr = false) const
    {
        return fold.line() && fold.line()->last.kind == kind && fold.line()->since == since &&
               fold.line()->isSinceOr == isSinceOr;
    }

    EventFold fold;
};

} // namespace

TEST_F(EventFoldTest, NotConnectedIsSinceTheLossWithTheNewestReason)
{
    take(1, event_kind::kBegan);
    take(2, event_kind::kConnected);
    EXPECT_TRUE(isLine(event_kind::kConnected, 2));
    take(5, event_kind::kLost, "reset");
    EXPECT_TRUE(isLine(event_kind::kLost, 5));
    take(6, event_kind::kConnectFailed, "refused");
    take(9, event_kind::kConnectFailed, "no route");
    EXPECT_TRUE(isLine(event_kind::kConnectFailed, 5));
    EXPECT_EQ(fold.line()->last.text, "no route");
    take(11, event_kind::kConnected);
    EXPECT_TRUE(isLine(event_kind::kConnected, 11));
}

TEST_F(EventFoldTest, WithoutAConnectionItIsSinceTheProgramBegan)
{
    take(1, event_kind::kBegan);
    take(6, event_kind::kConnectFailed, "refused");
    EXPECT_TRUE(isLine(event_kind::kConnectFailed, 1));
    take(7, event_kind::kLost, "reset");
    EXPECT_TRUE(isLine(event_kind::kLost, 7)) << "what was lost was there";
}

TEST_F(EventFoldTest, AFailureWithoutWhatWasBeforeMayHaveBegunEarlier)
{
    take(6, event_kind::kConnectFailed, "refused");
    EXPECT_TRUE(isLine(event_kind::kConnectFailed, 6, true));
    fold.miss();
    EXPECT_FALSE(fold.line());
    take(7, event_kind::kLost, "reset");
    EXPECT_TRUE(isLine(event_kind::kLost, 7));
}

TEST_F(EventFoldTest, AConnectionThatAnswersAgainIsAsOldAsItWas)
{
    take(2, event_kind::kConnected);
    take(5, event_kind::kSilent, "no reply");
    EXPECT_TRUE(isLine(event_kind::kSilent, 5));
    take(8, event_kind::kAnswers);
    EXPECT_TRUE(isLine(event_kind::kAnswers, 2));
}

TEST_F(EventFoldTest, WhoIsRefusedIsSetAsideUntilItIsBack)
{
    take(1, event_kind::kBegan);
    EXPECT_EQ(fold.isAside("a"), WhetherAside::no);
    take(2, event_kind::kSetAside, "code 2", "a");
    EXPECT_EQ(fold.isAside("a"), WhetherAside::yes);
    EXPECT_EQ(fold.asides().at("a").why, "code 2");
    EXPECT_EQ(fold.asides().at("a").since, 2);
    EXPECT_EQ(fold.isAside("b"), WhetherAside::no);
    take(3, event_kind::kLost);
    take(4, event_kind::kConnected);
    EXPECT_EQ(fold.isAside("a"), WhetherAside::yes) << "another connection changes nothing";
    take(5, event_kind::kBack, "", "a");
    EXPECT_EQ(fold.isAside("a"), WhetherAside::no);
}

TEST_F(EventFoldTest, AnotherRunBeginsWithoutRefusals)
{
    take(2, event_kind::kSetAside, "code 2", "a");
    take(3, event_kind::kBegan);
    EXPECT_EQ(fold.isAside("a"), WhetherAside::no);
}

TEST_F(EventFoldTest, WithoutTheBeginningOfTheRunNothingIsClaimed)
{
    take(2, event_kind::kSetAside, "code 2", "a");
    take(3, event_kind::kBack, "", "b");
    EXPECT_EQ(fold.isAside("a"), WhetherAside::yes);
    EXPECT_EQ(fold.isAside("b"), WhetherAside::no);
    EXPECT_EQ(fold.isAside("c"), WhetherAside::unknown);
}

TEST_F(EventFoldTest, WhereEventsAreMissingNothingIsSaidOfTheLineUntilTheNextOne)
{
    for (const char* kind : {event_kind::kMissed, event_kind::kStorage}) {
        take(1, event_kind::kBegan);
        take(2, event_kind::kConnected);
        take(3, kind);
        EXPECT_FALSE(fold.line()) << kind;
        take(4, event_kind::kConnectFailed, "no route");
        EXPECT_TRUE(isLine(event_kind::kConnectFailed, 4, true)) << kind;
    }
}

TEST_F(EventFoldTest, WhereEventsAreMissingNothingIsClaimedUntilAListSaysThatNoneIsRefused)
{
    for (const char* kind : {event_kind::kMissed, event_kind::kStorage}) {
        take(1, event_kind::kBegan);
        take(2, event_kind::kSetAside, "code 2", "a");
        take(3, kind);
        EXPECT_EQ(fold.isAside("a"), WhetherAside::unknown) << kind;
        EXPECT_EQ(fold.isAside("b"), WhetherAside::unknown) << kind;
        take(4, event_kind::kPlan, "7, of which 0 are refused");
        EXPECT_EQ(fold.isAside("a"), WhetherAside::no) << kind;
    }
}

TEST_F(EventFoldTest, AListWithOtherNumbersOfRefusedOnesThanWereToldClaimsNothing)
{
    take(1, event_kind::kBegan);
    take(2, event_kind::kSetAside, "code 2", "a");
    take(3, event_kind::kPlan, "7, of which 1 are refused");
    EXPECT_EQ(fold.isAside("a"), WhetherAside::yes);
    take(4, event_kind::kPlan, "7, of which 2 are refused");
    EXPECT_EQ(fold.isAside("a"), WhetherAside::unknown);
}

} // namespace tavmir::recorder
