// The closing statistics, value by value.
#include "feed/made_exchange.h"
#include "host/row_formats.h"
#include "host/run_monitor.h"
#include "host/statistics_report.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>

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
    figures.exceptionsByCode = {{2, 7}, {99, 1}};
    figures.byElements.take(madeRead(kReadBits, 1, {{3, 1}}, momentAt(1)));
    Exchange late = madeRead(kReadWords, 7, {{16, 1}}, momentAt(1));
    late.end = ExchangeEnd::timeout;
    late.replyTimeoutMs = 500;
    late.endedWall = WallClock::time_point(std::chrono::seconds(5));
    figures.byElements.take(late);
    figures.lastError.take(entryOf(late));
    return figures;
}

} // namespace

TEST(Statistics, AsLines)
{
    EXPECT_EQ("statistics of 2.5 s\n"
              "  requests: 101\n"
              "  attempts: 204\n"
              "  replies: 102\n"
              "  retries: 103\n"
              "  give-ups: 104\n"
              "  time-outs: 105\n"
              "  requests that never left: 106\n"
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
              "  events were missed: what they held is in none of these figures\n"
              "  exceptions by code: 7 times exception 2 (illegal data address), 1 time exception "
              "99\n"
              "  last error: 1970-01-01T00:00:05.000Z the controller did not answer within 500 ms\n"
              "  round trip: minimum 1.0 us, mean 5.2 us, p99 12.5 us\n"
              "  scans per second: 40.0\n"
              "  writes: 31 asked, 1 done, 2 refused, 4 not sent, 8 unknown, 16 partial\n"
              "  one-shot reads: 3100 asked, 100 done, 200 refused, 400 not sent, 800 unknown, "
              "1600 partial\n"
              "  by element group:\n"
              "    bits of station 1: 1 sent, 1 good, 0 failed, mean 1000.0 us, p99 1000.0 us\n"
              "    words of station 7: 1 sent, 0 good, 1 failed, mean –, p99 –",
              statisticsLines(distinctFigures(), 2.5, 10).join('\n').toStdString());
}

TEST(Statistics, AsJson)
{
    QJsonObject json = statisticsJson(distinctFigures(), 2.5, 10);
    const QJsonObject trip = json.take("roundTrip").toObject();
    EXPECT_EQ(1.0, trip["minimumUs"].toDouble());
    EXPECT_DOUBLE_EQ(15500.0 / 3000, trip["meanUs"].toDouble());
    EXPECT_EQ(12.5, trip["p99Us"].toDouble());
    EXPECT_EQ(3, trip.size());
    EXPECT_EQ(R"({"attempts":204,"brokenStreamsClosed":112,"byElementGroup":[{"elements":"bits",)"
              R"("failed":0,"good":1,"meanUs":1000,"p99Us":1000,"sent":1,"station":1},)"
              R"({"elements":"words","failed":1,"good":0,"meanUs":null,"p99Us":null,"sent":1,)"
              R"("station":7}],"bytesReceived":117,"bytesSent":116,"connects":113,)"
              R"("eventsMissedByTheseStatistics":118,"exceptionReplies":109,)"
              R"("exceptionsByCode":{"2":7,"99":1},"failedConnects":114,"giveUps":104,)"
              R"("lastError":{"reason":"the controller did not answer within 500 ms",)"
              R"("time":"1970-01-01T00:00:05.000Z"},"lateOrForeignFramesDropped":110,)"
              R"("lostConnections":115,)"
              R"("oneShotReads":{"asked":3100,"done":100,"notSent":400,"partial":1600,)"
              R"("refused":200,"unknown":800},"replies":102,"repliesOfWrongLength":111,)"
              R"("requests":101,"requestsLostWithAConnection":107,"requestsThatNeverLeft":106,)"
              R"("requestsToStationsSwitchedOff":108,"retries":103,"scansPerSecond":40,)"
              R"("seconds":2.5,"timeOuts":105,)"
              R"("writes":{"asked":31,"done":1,"notSent":4,"partial":16,"refused":2,"unknown":8}})",
              jsonLine(json).toStdString());
}

TEST(Statistics, KeysAreTheLabelsInCamelCase)
{
    EXPECT_EQ("requestsLostWithAConnection",
              statisticsKey("requests lost with a connection").toStdString());
    EXPECT_EQ("giveUps", statisticsKey("give-ups").toStdString());
    EXPECT_EQ("p99Us", statisticsKey("p99 us").toStdString());
    const QJsonObject json = statisticsJson(distinctFigures(), 2.5, 10);
    int labels = 0;
    for (const QString& line : statisticsLines(distinctFigures(), 2.5, 10)) {
        // "  label: …"; what stands deeper is part of the line above, and one line is a remark.
        if (!line.startsWith("  ") || line.startsWith("    ") ||
            line.startsWith("  events were missed")) {
            continue;
        }
        const QString label = line.section(':', 0, 0).trimmed();
        EXPECT_TRUE(json.contains(statisticsKey(label))) << label.toStdString();
        ++labels;
    }
    EXPECT_EQ(labels + 1, json.size()) << "and the seconds of the heading";
}

TEST(Statistics, EachKeyIsInTheManual)
{
    QFile manual(TAVMIR_HOST_MANUAL);
    ASSERT_TRUE(manual.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(manual.readAll());
    const QJsonObject json = statisticsJson(distinctFigures(), 2.5, 10);
    QStringList keys = json.keys();
    for (const char* part : {"roundTrip", "writes", "lastError"}) {
        keys += json[part].toObject().keys();
    }
    keys += json["byElementGroup"].toArray().at(0).toObject().keys();
    for (const QString& key : keys) {
        EXPECT_TRUE(text.contains("*" + key + "*")) << key.toStdString();
    }
}

TEST(Statistics, WithoutElementsOrTimeThereAreNoScans)
{
    const LineFigures figures = distinctFigures();
    EXPECT_EQ(0.0, statisticsJson(figures, 2.5, 0)["scansPerSecond"].toDouble(-1));
    EXPECT_EQ(0.0, statisticsJson(figures, 0, 10)["scansPerSecond"].toDouble(-1));
    EXPECT_EQ(50.0, statisticsJson(figures, 2, 10)["scansPerSecond"].toDouble(-1));
    EXPECT_EQ("  scans per second: 0.0", statisticsLines(figures, 2.5, 0)[24].toStdString());
}

TEST(Statistics, OfNothing)
{
    const QStringList lines = statisticsLines(LineFigures(), 0, 0);
    ASSERT_EQ(27, lines.size());
    EXPECT_EQ("statistics of 0.0 s", lines[0].toStdString());
    for (int i = 1; i <= 19; ++i) {
        EXPECT_TRUE(lines[i].endsWith(": 0")) << lines[i].toStdString();
    }
    EXPECT_EQ("  exceptions by code: none", lines[20].toStdString());
    EXPECT_EQ("  last error: none", lines[21].toStdString());
    EXPECT_EQ("  round trip: minimum –, mean –, p99 –", lines[22].toStdString());
    EXPECT_EQ("  writes: 0 asked, 0 done, 0 refused, 0 not sent, 0 unknown, 0 partial",
              lines[24].toStdString());
    EXPECT_EQ("  by element group: nothing was asked for", lines[26].toStdString());
    const QJsonObject trip = statisticsJson(LineFigures(), 0, 0)["roundTrip"].toObject();
    for (const char* key : {"minimumUs", "meanUs", "p99Us"}) {
        EXPECT_TRUE(trip[key].isNull()) << key;
    }
    EXPECT_TRUE(statisticsJson(LineFigures(), 0, 0)["lastError"].isNull());
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
    RunMonitor monitor(feed, {2000, "c"}, view, false);
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
    EXPECT_EQ(1, json["timeOuts"].toInt());
    EXPECT_EQ(1, json["connects"].toInt());
    EXPECT_EQ(4 * 17 + 9, json["bytesSent"].toInt());
    EXPECT_EQ(4 * 21, json["bytesReceived"].toInt());
    EXPECT_EQ(2.0, json["scansPerSecond"].toDouble());
    EXPECT_EQ(1000.0, json["roundTrip"].toObject()["minimumUs"].toDouble());
    EXPECT_EQ(1, json["writes"].toObject()["unknown"].toInt());
    EXPECT_EQ(1, json["writes"].toObject()["asked"].toInt());
    EXPECT_EQ(0, json["oneShotReads"].toObject()["asked"].toInt());
}

} // namespace tavmir::host
