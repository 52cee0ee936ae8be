// The page of a running host whose wall clock is set back.
#include "live_page.h"

namespace tavmir::host
{

namespace
{

constexpr int kHour = 3600 * 1000;

class ClockSetBack : public LivePage
{
protected:
    ClockSetBack()
    {
        plan();
        connect(10);
        word(100, 3000, 7);
        word(200, 3016, 3);
        lookAt(300);
    }

    QJsonObject history(const char* address) { return get("history", {{"address", address}}); }
    // Milliseconds since 1970 by the clock as it is.
    double wallMs(int ms) const { return static_cast<double>(kWallMs + ms - setBack_); }
};

} // namespace

TEST_F(ClockSetBack, AChangeIsKeptAtTheTimeThatItIsNow)
{
    setClockBack(kHour);
    lookAt(1000);
    word(1050, 3000, 8);
    lookAt(1100);
    const QJsonObject past = history("Main.W");
    EXPECT_EQ((QJsonArray{wallMs(1000), wallMs(1050)}), past["t"].toArray());
    EXPECT_EQ((QJsonArray{7, 8}), past["last"].toArray());
    EXPECT_EQ(wallMs(1000), past["oldest"].toDouble()) << "the present is kept";
}

TEST_F(ClockSetBack, AValueThatDoesNotChangeStandsFromNowOn)
{
    setClockBack(kHour);
    lookAt(1000);
    const QJsonObject past = history("Main.S");
    EXPECT_EQ((QJsonArray{wallMs(1000)}), past["t"].toArray());
    EXPECT_EQ(QJsonArray{3}, past["last"].toArray());
    EXPECT_EQ(0, past["gaps"].toArray().size());
}

TEST_F(ClockSetBack, WhatHappenedBeforeIsNotTakenForThePresent)
{
    word(1000, 3000, 8); // is looked at when the clock is another one already
    setClockBack(500);
    lookAt(1100);
    const QJsonObject past = history("Main.W");
    EXPECT_EQ((QJsonArray{kWallMs + 100, wallMs(1100)}), past["t"].toArray());
    EXPECT_EQ((QJsonArray{7, 8}), past["last"].toArray());
}

TEST_F(ClockSetBack, WhatIsNotGoodIsSoFromNowOn)
{
    setClockBack(kHour);
    tell(400, FeedKind::connectionLost, "why");
    lookAt(1000);
    const QJsonArray gaps = history("Main.Temp")["gaps"].toArray();
    ASSERT_EQ(1, gaps.size());
    EXPECT_EQ(wallMs(400), gaps[0].toArray()[0].toDouble());
}

TEST_F(ClockSetBack, IsAnEventOnce)
{
    setClockBack(kHour);
    lookAt(1000);
    word(1100, 3000, 8);
    lookAt(1200);
    EXPECT_EQ((QStringList{"connected to 127.0.0.1:502", "the clock was set back by 60 min: values "
                                                         "kept of later times are forgotten"}),
              eventTexts());
}

TEST_F(ClockSetBack, WhatIsToldLateWithTheClocksOfItsTimeIsNone)
{
    setClockBack(-kHour);
    lookAt(1000);
    FeedEntry rest;
    rest.kind = FeedKind::strayBytes;
    rest.at = momentAt(900);
    rest.wall = wallAt(1000) - std::chrono::hours(1);
    feed_.publish(rest);
    lookAt(1100);
    EXPECT_FALSE(eventTexts().join('\n').contains("set back"));
    EXPECT_EQ(wallMs(10), get("status")["link"].toObject()["since"].toDouble() + kHour)
        << "it was told by the clock of then";
}

TEST_F(ClockSetBack, TheConnectionIsAsOldAsBefore)
{
    setClockBack(kHour);
    lookAt(1000);
    EXPECT_EQ(wallMs(10), get("status")["link"].toObject()["since"].toDouble());
}

TEST_F(ClockSetBack, AClockThatIsKeptRightForgetsNothing)
{
    setClockBack(20);
    word(310, 3000, 8);
    lookAt(400);
    EXPECT_EQ((QJsonArray{7, 8}), history("Main.W")["last"].toArray());
    EXPECT_EQ(1, eventTexts().size());
}

TEST_F(ClockSetBack, BeforeTheFirstListWhatIsNotReadYetIsSoFromNowOn)
{
    LiveContent late(feed_, pageProject(), options_);
    setClockBack(kHour);
    at(2000);
    late.look();
    plan({}, 2);
    late.look();
    const QJsonArray gaps =
        parsed(late.get("history", page::Query{{{"address", "Main.W"}}}).body)["gaps"].toArray();
    ASSERT_EQ(1, gaps.size());
    EXPECT_EQ(wallMs(2000), gaps[0].toArray()[0].toDouble());
}

} // namespace tavmir::host
