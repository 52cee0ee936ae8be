// Requests counted by class of elements and station.
#include "feed/group_figures.h"

#include "feed/line_figures.h"
#include "made_exchange.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

Exchange exchangeOf(quint8 function, int station, ExchangeEnd end = ExchangeEnd::reply)
{
    Exchange exchange = madeRead(function, station, {{160, 1}}, momentAt(1));
    exchange.end = end;
    exchange.sentBytes = end == ExchangeEnd::notSent ? 0 : exchange.requestSize;
    return exchange;
}

std::string textOf(const GroupFigures& group)
{
    return std::string(wire::elementsName(group.elements)) + " " + std::to_string(group.station) +
           ": " + std::to_string(group.sent) + " " + std::to_string(group.good) + " " +
           std::to_string(group.failed) + " " + std::to_string(group.roundTrip.count());
}

} // namespace

TEST(GroupFigures, AreKeptByClassAndStationInTheirOrder)
{
    GroupTable table;
    for (const int station : {2, 1}) {
        for (const quint8 function : {kReadDoubleWords, kReadBits, kReadWords, kWriteWords}) {
            table.take(exchangeOf(function, station));
        }
    }
    std::vector<std::string> texts;
    for (const GroupFigures& group : table.groups()) {
        texts.push_back(textOf(group));
    }
    EXPECT_EQ((std::vector<std::string>{"bits 1: 1 1 0 1", "bits 2: 1 1 0 1", "words 1: 2 2 0 2",
                                        "words 2: 2 2 0 2", "double words 1: 1 1 0 1",
                                        "double words 2: 1 1 0 1"}),
              texts);
}

TEST(GroupFigures, TellSentGoodAndFailedApart)
{
    GroupTable table;
    table.take(exchangeOf(kReadWords, 1));
    table.take(exchangeOf(kReadWords, 1, ExchangeEnd::timeout));
    table.take(exchangeOf(kReadWords, 1, ExchangeEnd::exception));
    table.take(exchangeOf(kReadWords, 1, ExchangeEnd::notSent));
    table.take(exchangeOf(kReadWords, 1, ExchangeEnd::stopped));
    ASSERT_EQ(1u, table.groups().size());
    EXPECT_EQ("words 1: 3 1 3 2", textOf(table.groups()[0]));
}

TEST(GroupFigures, RoundTripsAreTheirOwn)
{
    GroupTable table;
    Exchange slow = exchangeOf(kReadWords, 1);
    slow.sentAt = slow.endedAt - std::chrono::microseconds(3000);
    table.take(slow);
    table.take(exchangeOf(kReadBits, 1));
    EXPECT_DOUBLE_EQ(1000000, table.groups()[0].roundTrip.mean());
    EXPECT_DOUBLE_EQ(3000000, table.groups()[1].roundTrip.mean());
}

TEST(LastError, IsTheNewestWithItsTime)
{
    LastError error;
    EXPECT_FALSE(error.happened());
    EXPECT_EQ("", error.words().toStdString());
    error.take(entryOf(exchangeOf(kReadWords, 1)));
    EXPECT_FALSE(error.happened());

    Exchange refused = exchangeOf(kReadWords, 1, ExchangeEnd::exception);
    refused.exceptionCode = 3;
    refused.endedWall = WallClock::time_point(std::chrono::seconds(5));
    error.take(entryOf(refused));
    EXPECT_EQ("the controller refused the request: exception 3 (illegal data value)",
              error.words().toStdString());
    EXPECT_EQ(WallClock::time_point(std::chrono::seconds(5)), error.time());

    FeedEntry lost = entryNow(FeedKind::connectionLost, "cable cut");
    error.take(lost);
    EXPECT_EQ("cable cut", error.words().toStdString());
    EXPECT_EQ(lost.wall, error.time());
    error.take(entryOf(exchangeOf(kReadWords, 1, ExchangeEnd::lost)));
    EXPECT_EQ("the connection was lost: cable cut", error.words().toStdString());
    error.take(entryNow(FeedKind::connected));
    error.take(entryOf(exchangeOf(kReadWords, 1)));
    EXPECT_EQ("the connection was lost: cable cut", error.words().toStdString())
        << "what is good is no error";
}

TEST(LineFigures, ExceptionsAreCountedByTheirCode)
{
    LineFigures figures;
    for (const int code : {2, 3, 2}) {
        Exchange exchange = exchangeOf(kReadWords, 1, ExchangeEnd::exception);
        exchange.exceptionCode = static_cast<quint8>(code);
        figures.take(entryOf(exchange));
    }
    EXPECT_EQ((std::map<quint8, quint64>{{2, 2}, {3, 1}}), figures.exceptionsByCode);
    EXPECT_EQ(3u, figures.exceptions);
    EXPECT_EQ(3u, figures.attempts());
    EXPECT_TRUE(figures.lastError.happened());
    ASSERT_EQ(1u, figures.byElements.groups().size());
    EXPECT_EQ(3u, figures.byElements.groups()[0].failed);
}

} // namespace tavmir::host
