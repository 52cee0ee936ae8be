// The closing statistics, value by value.
#include "feed/made_exchange.h"
#include "host/row_formats.h"
#include "host/run_monitor.h"
#include "host/statistics_report.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

// Each figure a number of its own.
LineFigures distinctFigures()
{
    LineFigures figures;
    figures.requests = 101;
    figures.replies = 102;
    figures.retries = 103;
    figures.giveUps = 104;
    figures.timeouts = 105;
    figures.notConnected = 106;
    figures.lost = 107;
    figures.suppressed = 108;
    figures.exceptions = 109;
    figures.discarded = 110;
    figures.refusedReplies = 111;
    figures.brokenStreams = 112;
    figures.connects = 113;
    figures.connectFailures = 114;
    figures.lostConnections = 115;
    figures.bytesSent = 116;
    figures.bytesReceived = 117;
    figures.missed = 118;
    figures.polledElements = 1000;
    for (int state = 0; state < kOutcomeStates; ++state) {
        figures.outcomes[0][state] = static_cast<quint64>(1) << state;
        figures.outcomes[1][state] = static_cast<quint64>(100) << state;
    }
    figures.roundTrip.add(1000);
    figures.roundTrip.add(2000);
    figures.roundTrip.add(12500);
    return figures;
}

} // namespace

TEST(Statistics, AsLines)
{
    EXPECT_EQ("statistics of 2.5 s\n"
              "  requests: 101\n"
              "  replies: 102\n"
              "  retries: 103\n"
              "  give-ups: 104\n"
              "  time-outs: 105\n"
              "  requests without a connection: 106\n"
              "  requests lost with a connection: 107\n"
              "  requests to stations switched off: 108\n"
              "  exception replies: 109\n"
              "  late or foreign frames dropped: 110\n"
              "  replies of wrong length: 111\n"
              "  broken streams closed: 112\n"
              "  connects: 113\n"
              "  failed connects: 114\n"
              "  lost connections: 115\n"
              "  bytes sent: 116\n"
              "  bytes received: 117\n"
              "  events missed by these statistics: 118\n"
              "  round trip: minimum 1.0 us, mean 5.2 us, p99 12.5 us\n"
              "  scans per second: 40.0\n"
              "  events were missed: what they held is in none of these figures\n"
              "  writes: 31 asked, 1 done, 2 refused, 4 not sent, 8 unknown, 16 partial\n"
              "  one-shot reads: 3100 asked, 100 done, 200 refused, 400 not sent, 800 unknown, "
              "1600 partial",
              statisticsLines(distinctFigures(), 2.5, 10).join('\n').toStdString());
}

TEST(Statistics, AsJson)
{
    const QJsonObject json = statisticsJson(distinctFigures(), 2.5, 10);
    EXPECT_DOUBLE_EQ(15500.0 / 3000, json["roundTripMeanUs"].toDouble());
    QJsonObject exact = json;
    exact.remove("roundTripMeanUs");
    EXPECT_EQ(R"({"brokenStreams":112,"bytesReceived":117,"bytesSent":116,"connectFailures":114,)"
              R"("connects":113,"discarded":110,"exceptions":109,"giveUps":104,"lost":107,)"
              R"("lostConnections":115,"missed":118,"notConnected":106,)"
              R"("reads":{"asked":3100,"done":100,"notSent":400,"partial":1600,"refused":200,)"
              R"("unknown":800},"refusedReplies":111,"replies":102,"requests":101,"retries":103,)"
              R"("roundTripMinUs":1,"roundTripP99Us":12.5,"scansPerSecond":40,"seconds":2.5,)"
              R"("suppressed":108,"timeouts":105,)"
              R"("writes":{"asked":31,"done":1,"notSent":4,"partial":16,"refused":2,"unknown":8}})",
              jsonLine(exact).toStdString());
}

TEST(Statistics, WithoutElementsOrTimeThereAreNoScans)
{
    const LineFigures figures = distinctFigures();
    EXPECT_EQ(0.0, statisticsJson(figures, 2.5, 0)["scansPerSecond"].toDouble(-1));
    EXPECT_EQ(0.0, statisticsJson(figures, 0, 10)["scansPerSecond"].toDouble(-1));
    EXPECT_EQ(50.0, statisticsJson(figures, 2, 10)["scansPerSecond"].toDouble(-1));
    EXPECT_EQ("  scans per second: 0.0", statisticsLines(figures, 2.5, 0)[20].toStdString());
}

TEST(Statistics, OfNothing)
{
    const QStringList lines = statisticsLines(LineFigures(), 0, 0);
    ASSERT_EQ(23, lines.size());
    EXPECT_EQ("statistics of 0.0 s", lines[0].toStdString());
    for (int i = 1; i <= 18; ++i) {
        EXPECT_TRUE(lines[i].endsWith(": 0")) << lines[i].toStdString();
    }
    EXPECT_EQ("  round trip: minimum 0.0 us, mean 0.0 us, p99 0.0 us", lines[19].toStdString());
    EXPECT_EQ("  writes: 0 asked, 0 done, 0 refused, 0 not sent, 0 unknown, 0 partial",
              lines[21].toStdString());
}

TEST(Statistics, OfARunThatAFeedTells)
{
    class NoView : public RunView
    {
        void show(const std::vector<ValueRow>&, const LineState&) override {}
        void change(const ValueRow&, WallClock::time_point) override {}
        void message(const QString&) override {}
        void close(const QStringList&, const QJsonObject&) override {}
    };
    Feed feed;
    NoView view;
    RunMonitor monitor(feed, "c", view, false);
    feed.publish(entryNow(FeedKind::connected));
    for (int i = 0; i < 4; ++i) {
        feed.publish(madeRead(kReadWords, 1, {{16, 1}, {32, 2}}, momentAt(i)));
    }
    feed.publish(madeEnd(ExchangeEnd::timeout, 9));
    FeedEntry ended = entryNow(FeedKind::operationEnded);
    ended.operation.state = OutcomeState::unknown;
    feed.publish(ended);
    monitor.look();
    const QJsonObject json = statisticsJson(monitor.figures(), 2, 2);
    EXPECT_EQ(5, json["requests"].toInt());
    EXPECT_EQ(4, json["replies"].toInt());
    EXPECT_EQ(1, json["timeouts"].toInt());
    EXPECT_EQ(1, json["connects"].toInt());
    EXPECT_EQ(4 * 17 + 9, json["bytesSent"].toInt());
    EXPECT_EQ(4 * 21, json["bytesReceived"].toInt());
    EXPECT_EQ(2.0, json["scansPerSecond"].toDouble());
    EXPECT_EQ(1000.0, json["roundTripMinUs"].toDouble());
    EXPECT_EQ(1, json["writes"].toObject()["unknown"].toInt());
    EXPECT_EQ(1, json["writes"].toObject()["asked"].toInt());
    EXPECT_EQ(0, json["reads"].toObject()["asked"].toInt());
}

} // namespace tavmir::host
