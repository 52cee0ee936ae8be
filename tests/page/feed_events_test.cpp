// What happened, as who watches is told it.
#include "live_page.h"

namespace tavmir::host
{

namespace
{

class Events : public LivePage
{
protected:
    Events() { plan(); }
    QStringList textsAt(int ms)
    {
        lookAt(ms);
        return eventTexts();
    }
    QJsonObject lastAt(int ms)
    {
        lookAt(ms);
        return get("events")["events"].toArray().last().toObject();
    }
};

} // namespace

TEST_F(Events, AttemptsThatFailAlikeAreToldOnce)
{
    tell(100, FeedKind::connectFailed, "127.0.0.1:502: Connection refused");
    tell(200, FeedKind::connectFailed, "127.0.0.1:502: Connection refused");
    tell(300, FeedKind::connectFailed, "No route to host");
    connect(400);
    tell(500, FeedKind::connectionLost, "it closed");
    tell(600, FeedKind::connectFailed, "No route to host");
    EXPECT_EQ((QStringList{"cannot connect to 127.0.0.1:502: Connection refused",
                           "cannot connect to 127.0.0.1:502: No route to host",
                           "connected to 127.0.0.1:502", "lost 127.0.0.1:502: it closed",
                           "cannot connect to 127.0.0.1:502: No route to host"}),
              textsAt(700));
}

TEST_F(Events, ATimeOutNamesTheRequest)
{
    fails(100, ExchangeEnd::timeout, {{3000, 0}, {3016, 0}});
    fails(200, ExchangeEnd::timeout, {{3000, 0}});
    const QJsonObject one = lastAt(300);
    EXPECT_EQ("the controller did not answer within 500 ms: Main.W, station 1",
              one["text"].toString());
    EXPECT_EQ("Level", one["variable"].toString());
    EXPECT_EQ("Main.W", one["address"].toString());
    EXPECT_EQ("timeout", one["kind"].toString());
    EXPECT_EQ("the controller did not answer within 500 ms: 2 words of station 1 from Main.W on",
              eventTexts().first());
}

TEST_F(Events, WhatIsNoFrameIsNoTimeOut)
{
    fails(100, ExchangeEnd::broken, {{3000, 0}});
    EXPECT_EQ("stray", lastAt(200)["kind"].toString());
}

TEST_F(Events, AnExceptionHasItsCodeInWords)
{
    fails(100, ExchangeEnd::exception, {{3000, 0}}, 2);
    EXPECT_EQ("the controller refused the request: exception 2 (illegal data address): Main.W, "
              "station 1",
              lastAt(200)["text"].toString());
}

TEST_F(Events, ManyOfAKindWithinASecondAreCounted)
{
    for (int i = 0; i < 60; ++i) {
        fails(3000 + i, ExchangeEnd::timeout, {{3000, 0}});
    }
    EXPECT_EQ(EventFlood::kMostOfAKind, textsAt(3500).size()) << "the second is not over";
    const QStringList texts = textsAt(4100);
    EXPECT_EQ(EventFlood::kMostOfAKind + 1, texts.size());
    EXPECT_EQ("55 more of this kind within a second", texts.last());
}

TEST_F(Events, VariablesThatAreRefusedAreNamed)
{
    tell(100, FeedKind::elementSetAside, "refused, code 2 (illegal data address)", "Level");
    const QJsonObject event = lastAt(200);
    EXPECT_EQ("Level: refused, code 2 (illegal data address)", event["text"].toString());
    EXPECT_EQ("Main.W", event["address"].toString());
    tell(300, FeedKind::elementBack, QString(), "Level");
    EXPECT_EQ("Level: answers again", lastAt(400)["text"].toString());
}

TEST_F(Events, AWriteFromElsewhereIsTold)
{
    FeedEntry entry;
    entry.kind = FeedKind::operationEnded;
    entry.text = "the controller did not answer within 500 ms";
    entry.operation = {OperationKind::write, OutcomeState::unknown, 1, 1, 0, 1, 3000, 16};
    tell(100, entry);
    const QJsonObject event = lastAt(200);
    EXPECT_EQ("write of Main.W: unknown: the controller did not answer within 500 ms",
              event["text"].toString());
    EXPECT_TRUE(event["bad"].toBool());
}

TEST_F(Events, ALateReplyIsToldAndFramesAreNotToldTwice)
{
    FeedEntry stray;
    stray.kind = FeedKind::strayBytes;
    stray.stray = Stray::late;
    stray.askedAt = momentAt(20);
    stray.received.assign(15, 0);
    tell(770, stray);
    tell(771, FeedKind::framesDropped);
    EXPECT_EQ((QStringList{"a reply came too late, 750 ms after its request"}), textsAt(800));
}

} // namespace tavmir::host
