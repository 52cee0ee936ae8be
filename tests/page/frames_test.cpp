// Frames in words, when they are asked for.
#include "live_page.h"

namespace tavmir::host
{

namespace
{

class Frames : public LivePage
{
protected:
    Frames()
    {
        plan();
        connect(10);
    }
    QJsonArray frames(quint64 since = 0, int limit = 200)
    {
        const QJsonObject answer =
            get("frames", {{"since", std::to_string(since)}, {"limit", std::to_string(limit)}});
        missed_ = answer["missed"].toInt();
        return answer["frames"].toArray();
    }
    static QString words(const QJsonArray& frames)
    {
        QStringList lines;
        for (const QJsonValue& value : frames) {
            const QJsonObject frame = value.toObject();
            lines << frame["way"].toString() + ": " + frame["text"].toString();
        }
        return lines.join('\n');
    }
    int missed_ = 0;
};

quint64 idOf(const QJsonValue& frame)
{
    return static_cast<quint64>(frame.toObject()["id"].toDouble());
}

} // namespace

TEST_F(Frames, HaveNamesTimesAndBytes)
{
    word(100, 3000, 7);
    at(200);
    const QJsonArray all = frames();
    EXPECT_EQ("connected: connected\n"
              "request: #4660 station 1 read words: Main.W\n"
              "reply: #4660 station 1 read words: Main.W=7",
              words(all).toStdString());
    const QJsonObject reply = all[2].toObject();
    EXPECT_EQ(kWallMs + 100, reply["at"].toDouble());
    EXPECT_EQ(1, reply["beforeMs"].toDouble());
    EXPECT_EQ(1, reply["elapsedMs"].toDouble());
    EXPECT_EQ("12 34 00 00 00 09 01 66 01 00 00 0b b8 00 07", reply["bytes"].toString());
    EXPECT_FALSE(reply["bad"].toBool());
    EXPECT_TRUE(all[0].toObject()["beforeMs"].isNull());
    EXPECT_TRUE(all[0].toObject()["bytes"].isNull());
}

TEST_F(Frames, WhatWentWrongIsMarked)
{
    fails(100, ExchangeEnd::timeout, {{3000, 0}});
    tell(100, FeedKind::gaveUp);
    fails(200, ExchangeEnd::exception, {{3000, 0}}, 2);
    at(300);
    const QJsonArray all = frames();
    EXPECT_EQ("nothing: #4660 station 1 read words: the controller did not answer within 500 ms",
              all[2].toObject()["way"].toString() + ": " + all[2].toObject()["text"].toString());
    EXPECT_TRUE(all[2].toObject()["bad"].toBool());
    EXPECT_EQ("gave up", all[3].toObject()["way"].toString());
    EXPECT_EQ("exception", all[5].toObject()["way"].toString());
    EXPECT_EQ("#4660 station 1 read words: exception 2 (illegal data address)",
              all[5].toObject()["text"].toString());
}

TEST_F(Frames, ALateReplyStandsWhereItCame)
{
    FeedEntry stray;
    stray.kind = FeedKind::strayBytes;
    stray.stray = Stray::late;
    const Exchange made = madeRead(kReadWords, 1, {{3000, 9}}, momentAt(0));
    stray.received.assign(made.reply, made.reply + made.replyKept());
    stray.askedAt = momentAt(20);
    tell(99, stray); // 1 ms before, the request; it is told before its exchange
    word(100, 3000, 7);
    at(200);
    EXPECT_EQ("connected: connected\n"
              "request: #4660 station 1 read words: Main.W\n"
              "late: #4660 station 1 read words: Main.W=9 [late]\n"
              "reply: #4660 station 1 read words: Main.W=7",
              words(frames()).toStdString());
}

TEST_F(Frames, OnlyTheNewestAreGivenAndThoseBehindANumber)
{
    for (int i = 0; i < 500; ++i) {
        word(100 + i, 3000, static_cast<quint32>(i));
    }
    at(700);
    const QJsonArray newest = frames(0, 10);
    ASSERT_EQ(10, newest.size());
    EXPECT_EQ(0, missed_) << "nobody asked for what was before";
    EXPECT_EQ("#4660 station 1 read words: Main.W=499", newest[9].toObject()["text"].toString());
    const QJsonArray behind = frames(idOf(newest[5]), 10);
    ASSERT_EQ(4, behind.size());
    EXPECT_EQ(idOf(newest[6]), idOf(behind[0]));
    EXPECT_EQ(0, missed_);
    for (int i = 0; i < 300; ++i) {
        word(600 + i, 3000, static_cast<quint32>(i));
    }
    at(1000);
    EXPECT_EQ(10, frames(idOf(newest[9]), 10).size());
    EXPECT_GT(missed_, 100);
    EXPECT_TRUE(frames(idOf(frames(0, 1)[0])).isEmpty());
}

} // namespace tavmir::host
