// Whether the line lives, and in which words.
#include "feed/line_health.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

class Line : public testing::Test
{
protected:
    void take(FeedKind kind, int ms, const QString& why = QString())
    {
        FeedEntry entry;
        entry.kind = kind;
        entry.at = momentAt(ms);
        entry.text = why;
        line_.take(entry);
    }

    void take(ExchangeEnd end, int ms)
    {
        Exchange exchange = madeEnd(end, 9);
        exchange.endedAt = momentAt(ms);
        exchange.replyTimeoutMs = 500;
        exchange.exceptionCode = end == ExchangeEnd::exception ? 2 : 0;
        line_.take(entryOf(exchange));
    }

    std::string words(int ms) const { return line_.words(momentAt(ms)).toStdString(); }

    LineHealth line_{"plant:5020"};
};

} // namespace

TEST_F(Line, BeforeAnythingHappened)
{
    EXPECT_FALSE(line_.isConnected());
    EXPECT_FALSE(line_.isAlive());
    EXPECT_FALSE(line_.wasConnected());
    EXPECT_EQ("not connected to plant:5020: not tried yet", words(0));
}

TEST_F(Line, ConnectedIsAliveUntilSomebodyWaitsInVain)
{
    take(FeedKind::connected, 0);
    EXPECT_TRUE(line_.isAlive());
    EXPECT_EQ("connected to plant:5020", words(5000)) << "nothing was asked";
    take(ExchangeEnd::reply, 5010);
    EXPECT_TRUE(line_.isAlive());
    EXPECT_EQ("connected to plant:5020", words(9000));
}

TEST_F(Line, ASilentOneIsNotCalledConnected)
{
    take(FeedKind::connected, 0);
    take(ExchangeEnd::timeout, 500);
    EXPECT_TRUE(line_.isConnected());
    EXPECT_TRUE(line_.isSilent());
    EXPECT_FALSE(line_.isAlive());
    EXPECT_EQ("no reply from plant:5020 yet: the controller did not answer within 500 ms",
              words(700));
    take(ExchangeEnd::reply, 1000);
    EXPECT_TRUE(line_.isAlive());
    EXPECT_EQ("connected to plant:5020", words(1000));
    take(ExchangeEnd::timeout, 1500);
    EXPECT_EQ("no reply from plant:5020 for 700 ms: the controller did not answer within 500 ms",
              words(1700));
    EXPECT_EQ("no reply from plant:5020 for 3.2 s: the controller did not answer within 500 ms",
              words(4200));
    EXPECT_EQ("the controller did not answer within 500 ms", line_.problem().toStdString());
    take(ExchangeEnd::exception, 5000);
    EXPECT_TRUE(line_.isAlive()) << "a refusal is an answer";
}

TEST_F(Line, ALostOneSaysWhy)
{
    take(FeedKind::connectFailed, 0, "plant:5020: Connection refused");
    EXPECT_EQ("not connected to plant:5020: Connection refused", words(1));
    EXPECT_FALSE(line_.wasConnected());
    take(FeedKind::connected, 10);
    EXPECT_TRUE(line_.wasConnected());
    take(ExchangeEnd::timeout, 15);
    take(FeedKind::connectionLost, 20, "the controller closed the connection");
    EXPECT_FALSE(line_.isAlive());
    EXPECT_FALSE(line_.isSilent());
    EXPECT_EQ("not connected to plant:5020: the controller closed the connection", words(30));
    EXPECT_EQ("the controller closed the connection", line_.problem().toStdString());
    EXPECT_TRUE(line_.wasConnected());
    take(FeedKind::connected, 40);
    EXPECT_EQ("connected to plant:5020", words(50)) << "the silence was the old connection's";
}

TEST_F(Line, WhatNeverLeftIsNoSilence)
{
    take(FeedKind::connected, 0);
    for (const ExchangeEnd end : {ExchangeEnd::notSent, ExchangeEnd::suppressed,
                                  ExchangeEnd::stopped, ExchangeEnd::lost, ExchangeEnd::broken}) {
        take(end, 10);
        EXPECT_FALSE(line_.isSilent()) << static_cast<int>(end);
    }
}

TEST_F(Line, OneThatRefusesEverythingSaysSo)
{
    const std::string refuses = "connected to plant:5020, which refuses what it is asked: "
                                "exception 2 (illegal data address)";
    take(FeedKind::connected, 0);
    take(ExchangeEnd::exception, 10);
    EXPECT_EQ(refuses, words(10));
    EXPECT_TRUE(line_.isRefusing());
    take(ExchangeEnd::reply, 20);
    EXPECT_EQ("connected to plant:5020", words(20));
    take(ExchangeEnd::exception, 30);
    EXPECT_EQ("connected to plant:5020", words(9000)) << "nothing was asked since";
    take(ExchangeEnd::exception, 2030);
    EXPECT_EQ("connected to plant:5020", words(2030)) << "some of it is answered";
    take(ExchangeEnd::exception, 2031);
    EXPECT_EQ(refuses, words(2031));
}

TEST_F(Line, OneRefusalBetweenSlowPassesIsNotTheLines)
{
    take(FeedKind::connected, 0);
    for (const int pass : {0, 5000, 10000}) {
        take(ExchangeEnd::reply, pass + 10);
        take(ExchangeEnd::exception, pass + 4000);
        EXPECT_FALSE(line_.isRefusing()) << pass;
        EXPECT_EQ("connected to plant:5020", words(pass + 4990)) << pass;
    }
}

TEST(Durations, InWords)
{
    const auto text = [](int ms) {
        return durationText(std::chrono::milliseconds(ms)).toStdString();
    };
    EXPECT_EQ("0 ms", text(0));
    EXPECT_EQ("999 ms", text(999));
    EXPECT_EQ("1.0 s", text(1000));
    EXPECT_EQ("1 min", text(60000));
    EXPECT_EQ("2 min", text(150000));
}

} // namespace tavmir::host
