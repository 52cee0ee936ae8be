// What clients get of a running host, live and asked for.
#include "live_page.h"

#include <QtCore/QJsonDocument>

#include <algorithm>

namespace tavmir::host
{

namespace
{

QJsonObject object(const QJsonObject& json, const char* key)
{
    return json[key].toObject();
}

} // namespace

TEST_F(LivePage, ASnapshotHoldsEverything)
{
    plan();
    connect(10);
    word(20, 3000, 7);
    lookAt(30);
    const QJsonObject message = parsed(content_->snapshot());
    EXPECT_EQ("snapshot", message["kind"].toString());
    EXPECT_EQ(content_->epoch(), message["epoch"].toString().toStdString());
    EXPECT_EQ(kPolled, message["variables"].toArray().size());
    EXPECT_EQ(kPolled, message["values"].toArray().size());
    EXPECT_EQ(1, message["events"].toArray().size());
    EXPECT_EQ("connected", object(object(message, "status"), "link")["state"].toString());
    const QJsonArray row = message["values"].toArray()[kW].toArray();
    EXPECT_EQ((QJsonArray{1, "7", 7, "good", "", kWallMs + 20, kWallMs + 20}), row);
}

TEST_F(LivePage, ChangesHoldTheLatestOfWhatIsNewer)
{
    plan();
    connect(10);
    lookAt(20);
    const quint64 seen = content_->sequence();
    word(30, 3000, 7);
    word(40, 3000, 8);
    lookAt(50);
    const QJsonObject message = parsed(content_->changes(seen, seen));
    EXPECT_EQ("changes", message["kind"].toString());
    ASSERT_EQ(1, message["values"].toArray().size());
    EXPECT_EQ("8", message["values"].toArray()[0].toArray()[1].toString());
    EXPECT_EQ(0, message["events"].toArray().size());
    EXPECT_EQ("", content_->changes(content_->sequence(), content_->sequence()));
}

TEST_F(LivePage, EventsComeWithTheLookThatFoundThem)
{
    plan();
    lookAt(10);
    const quint64 seen = content_->sequence();
    connect(20);
    tell(30, FeedKind::connectionLost, "why");
    lookAt(40);
    const QJsonArray events = parsed(content_->changes(seen, seen))["events"].toArray();
    ASSERT_EQ(2, events.size());
    EXPECT_EQ("lost 127.0.0.1:502: why", events[1].toObject()["text"].toString());
    EXPECT_TRUE(events[1].toObject()["bad"].toBool());
    EXPECT_EQ(0,
              parsed(content_->changes(seen, content_->sequence() - 0))["events"].toArray().size());
}

TEST_F(LivePage, ASecondWithoutAnyChangeIsAChange)
{
    plan();
    lookAt(10);
    const quint64 seen = content_->sequence();
    lookAt(500);
    EXPECT_EQ(seen, content_->sequence());
    lookAt(1000);
    EXPECT_FALSE(content_->changes(seen, seen).empty());
}

TEST_F(LivePage, AnotherListIsASnapshotForWhoKnowsTheOldOne)
{
    plan();
    connect(5);
    word(6, 3000, 7);
    lookAt(10);
    const quint64 seen = content_->sequence();
    at(20);
    plan({}, 2);
    lookAt(30);
    const QJsonObject message = parsed(content_->changes(seen, seen));
    EXPECT_EQ("snapshot", message["kind"].toString());
    EXPECT_EQ(2, message["generation"].toInt());
    EXPECT_EQ(2, message["variables"].toArray().size());
    EXPECT_EQ("7", row(kW)[1].toString()) << "what is known of it stays";
    const QJsonArray values = message["values"].toArray();
    EXPECT_EQ("7", values[kW].toArray()[1].toString());
    EXPECT_EQ("changes", parsed(content_->changes(content_->sequence() - 0, 0))["kind"].toString());
}

TEST_F(LivePage, WhatIsOnlySetAsideLeavesTheListAsItIs)
{
    plan();
    lookAt(10);
    at(20);
    plan({{kS, "refused, code 2 (illegal data address)"}});
    lookAt(30);
    EXPECT_EQ(1, get("plan")["generation"].toInt());
    EXPECT_EQ(8 - 1, get("plan")["passElements"].toInt());
}

TEST_F(LivePage, AnotherPlanHasAnotherNumberWhichIsToldAtOnce)
{
    plan();
    lookAt(10);
    const int first = get("status")["planGeneration"].toInt();
    lookAt(20);
    EXPECT_EQ(first, get("status")["planGeneration"].toInt());
    quint64 seen = content_->sequence();
    const auto told = [&](int ms) {
        lookAt(ms);
        const QJsonObject message = parsed(content_->changes(seen, seen));
        seen = content_->sequence();
        return object(message, "status")["planGeneration"].toInt();
    };
    plan({{kS, "refused, code 2 (illegal data address)"}});
    EXPECT_EQ(first + 1, told(130)) << "set aside";
    plan();
    EXPECT_EQ(first + 2, told(240)) << "back";
    plan({}, 2);
    EXPECT_EQ(first + 3, told(350)) << "another list";
}

TEST_F(LivePage, AValueGoesStaleWithItsReasonWhenTheLineIsLost)
{
    plan();
    connect(10);
    word(20, 3000, 7);
    lookAt(30);
    EXPECT_EQ("good", quality(kW));
    tell(100, FeedKind::connectionLost, "the controller closed the connection");
    lookAt(300);
    EXPECT_EQ((QJsonArray{1, "7", 7, "stale",
                          "not connected to 127.0.0.1:502: the controller closed the connection",
                          kWallMs + 20, kWallMs + 20}),
              row(kW));
    EXPECT_EQ("never", quality(kS));
    EXPECT_EQ("–", row(kS)[1].toString());
    EXPECT_EQ("lost", object(get("status"), "link")["state"].toString());
    EXPECT_EQ(kWallMs + 100, object(get("status"), "link")["since"].toDouble());
}

TEST_F(LivePage, AValueThatIsNotReadAnyMoreGoesStaleWithoutAnyEvent)
{
    plan();
    connect(10);
    word(20, 3000, 7);
    lookAt(30);
    lookAt(1900);
    EXPECT_EQ("good", quality(kW));
    lookAt(2300);
    EXPECT_EQ("stale", quality(kW));
}

TEST_F(LivePage, AReadingIsRefreshedWithinASecond)
{
    plan();
    connect(0);
    for (int ms = 10; ms <= 3000; ms += 100) {
        word(ms, 3000, 7);
        lookAt(ms + 5);
        const auto readAt = static_cast<qint64>(row(kW)[5].toDouble());
        EXPECT_LE(kWallMs + ms - readAt, 1000);
    }
    EXPECT_EQ(kWallMs + 10, row(kW)[6].toDouble()) << "it never changed";
}

TEST_F(LivePage, ASilentLineIsNoneThatIsConnected)
{
    plan();
    connect(0);
    fails(600, ExchangeEnd::timeout, {{3000, 0}});
    lookAt(700);
    const QJsonObject link = object(get("status"), "link");
    EXPECT_EQ("silent", link["state"].toString());
    EXPECT_EQ("no reply from 127.0.0.1:502 yet: the controller did not answer within 500 ms",
              link["text"].toString());
}

TEST_F(LivePage, ALineThatRefusesEverythingIsNoneThatIsConnected)
{
    const auto state = [this] {
        return object(get("status"), "link")["state"].toString().toStdString();
    };
    plan();
    connect(0);
    fails(600, ExchangeEnd::exception, {{3000, 0}}, 2);
    lookAt(700);
    EXPECT_EQ("refusing", state());
    EXPECT_EQ("connected to 127.0.0.1:502, which refuses what it is asked: exception 2 (illegal "
              "data address)",
              object(get("status"), "link")["text"].toString());
    word(800, 3000, 7);
    fails(900, ExchangeEnd::exception, {{3016, 0}}, 2);
    lookAt(1000);
    EXPECT_EQ("connected", state()) << "some of it is answered";
    fails(2901, ExchangeEnd::exception, {{3016, 0}}, 2);
    lookAt(2950);
    EXPECT_EQ("refusing", state());
    fails(3000, ExchangeEnd::timeout, {{3000, 0}});
    lookAt(3100);
    EXPECT_EQ("silent", state());
}

TEST_F(LivePage, BeforeTheFirstAttemptItConnects)
{
    lookAt(1);
    EXPECT_EQ("connecting", object(get("status"), "link")["state"].toString());
    tell(2, FeedKind::connectFailed, "Connection refused");
    lookAt(3);
    EXPECT_EQ("never", object(get("status"), "link")["state"].toString());
}

TEST_F(LivePage, AQuestionIsAnsweredFromThePresent)
{
    plan();
    connect(0);
    lookAt(1);
    word(900, 3000, 9);
    at(950); // nobody listens, so nobody looks
    EXPECT_EQ("9", row(kW)[1].toString());
}

TEST_F(LivePage, StatusCounts)
{
    plan();
    connect(0);
    fails(600, ExchangeEnd::timeout, {{3000, 0}});
    tell(600, FeedKind::gaveUp);
    lookAt(700);
    const QJsonObject status = get("status");
    EXPECT_EQ(1, object(status, "lastMinute")["timeouts"].toInt());
    EXPECT_EQ(1, object(status, "total")["giveUps"].toInt());
    EXPECT_EQ("plant.json", status["project"].toString());
    EXPECT_EQ("off", object(status, "writes")["text"].toString());
    EXPECT_FALSE(object(status, "writes")["allowed"].toBool());
    EXPECT_TRUE(object(status, "recording").isEmpty());
    lookAt(70000);
    EXPECT_EQ(0, object(get("status"), "lastMinute")["timeouts"].toInt());
    EXPECT_EQ(1, object(get("status"), "total")["timeouts"].toInt());
}

TEST_F(LivePage, ValuesCanBeAskedForByAddress)
{
    plan();
    lookAt(1);
    EXPECT_EQ(kPolled, get("values")["values"].toArray().size());
    const QJsonArray two =
        get("values", {{"address", "Main.S"}, {"address", "Main.W"}})["values"].toArray();
    ASSERT_EQ(2, two.size());
    EXPECT_EQ(2, two[0].toArray()[0].toInt());
    EXPECT_EQ(404, statusOf("values", {{"address", "Main.Off"}}));
}

TEST_F(LivePage, WhatMakesNoSenseIsRefused)
{
    plan();
    lookAt(1);
    EXPECT_EQ(404, statusOf("nothing"));
    EXPECT_EQ(400, statusOf("explain"));
    EXPECT_EQ(400, statusOf("history"));
    EXPECT_EQ(404, statusOf("history", {{"address", "Main.Off"}}));
    EXPECT_EQ(400, statusOf("history", {{"address", "Main.W"}, {"points", "2001"}}));
    EXPECT_EQ(400, statusOf("history", {{"address", "Main.W"}, {"from", "5"}, {"to", "4"}}));
    EXPECT_EQ(400, statusOf("frames", {{"limit", "many"}}));
    EXPECT_EQ(400, statusOf("events", {{"since", "-1"}}));
    EXPECT_EQ(503, statusOf("capture.pcapng"));
}

TEST_F(LivePage, ACaptureSaysWhenItHoldsLessThanWasAskedFor)
{
    options_.limits.keptBytes = 10000; // less than 100 exchanges
    content_ = std::make_unique<LiveContent>(feed_, pageProject(), options_);
    content_->setCapture([](const KeptEntries&, quint64) { return std::string("bytes"); });
    word(0, 3000, 1);
    lookAt(1);
    EXPECT_FALSE(content_->get("capture.pcapng", {}).coveredMs) << "the line is younger than that";
    for (int ms = 100; ms <= 20000; ms += 100) {
        word(ms, 3000, 1);
        lookAt(ms);
    }
    const std::optional<long long> covered = content_->get("capture.pcapng", {}).coveredMs;
    ASSERT_TRUE(covered);
    EXPECT_GT(*covered, 2000);
    EXPECT_LT(*covered, 10000);
    const page::Query lastTwo = {{{"seconds", "2"}}};
    EXPECT_FALSE(content_->get("capture.pcapng", lastTwo).coveredMs);
}

TEST_F(LivePage, VariablesSayWhatTheyAre)
{
    plan();
    lookAt(1);
    const QJsonArray variables = get("variables")["variables"].toArray();
    const QJsonObject level = variables[kW].toObject();
    EXPECT_EQ("Level", level["name"].toString());
    EXPECT_EQ("Main.W", level["address"].toString());
    EXPECT_EQ("word", level["type"].toString());
    EXPECT_EQ(65535, level["high"].toInt());
    EXPECT_EQ(-32768, variables[kS].toObject()["low"].toInt());
    EXPECT_TRUE(variables[kModeBit].toObject()["isBit"].toBool());
    EXPECT_TRUE(variables[kTemp].toObject()["low"].isNull());
    EXPECT_EQ(3, variables[kTitle].toObject()["elements"].toInt());
}

TEST_F(LivePage, ThePlanSaysWhoSharesARequest)
{
    plan();
    lookAt(1);
    const QJsonArray requests = get("plan")["requests"].toArray();
    ASSERT_EQ(3, requests.size());
    const QJsonObject words = requests[1].toObject();
    EXPECT_EQ("read words", words["function"].toString());
    EXPECT_EQ(6, words["elements"].toInt());
    EXPECT_EQ("Main.W", words["first"].toString());
    EXPECT_EQ("the next element has another data type", words["ends"].toString());
    EXPECT_EQ(
        (QJsonArray{"Level", "Main.S", "Main.Mode", "Main.Mode.b[2]", "Main.Title (3 of 3 words)"}),
        words["variables"].toArray());
}

TEST_F(LivePage, HistoryKeepsEachChangeAndEachTimeThatWasNotGood)
{
    plan();
    connect(10);
    for (int i = 0; i < 5; ++i) {
        word(100 * (i + 1), 3016, static_cast<quint32>(0xFFFF - i)); // signed: -1, -2 …
    }
    lookAt(600);
    tell(700, FeedKind::connectionLost, "why");
    lookAt(900);
    const QJsonObject history = get("history", {{"address", "Main.S"}});
    EXPECT_EQ((QJsonArray{-1, -2, -3, -4, -5}), history["last"].toArray());
    EXPECT_EQ(kWallMs + 100, history["t"].toArray()[0].toDouble());
    EXPECT_EQ("memory", history["source"].toString());
    const QJsonArray gaps = history["gaps"].toArray();
    ASSERT_EQ(2, gaps.size());
    EXPECT_EQ((QJsonArray{kWallMs, kWallMs + 500, "never: no reply has brought it yet"}),
              gaps[0].toArray());
    EXPECT_EQ(kWallMs + 900, gaps[1].toArray()[0].toDouble());
    EXPECT_EQ("stale: not connected to 127.0.0.1:502: why", gaps[1].toArray()[2].toString());
    EXPECT_EQ(2, history["events"].toArray().size());
}

TEST_F(LivePage, OfMoreChangesThanCanBeFollowedTheLastCounts)
{
    plan();
    connect(1);
    for (int i = 0; i < 12000; ++i) {
        word(10 + i / 1000, 3000, static_cast<quint32>(i));
    }
    lookAt(30);
    EXPECT_EQ("11999", row(kW)[1].toString());
    const QJsonArray last =
        get("history", {{"address", "Main.W"}, {"points", "10"}})["last"].toArray();
    EXPECT_EQ(11999, last.last().toInt());
    word(40, 3000, 5);
    lookAt(50);
    EXPECT_EQ("5", row(kW)[1].toString()) << "each is followed again";
}

TEST_F(LivePage, OfTwoFormatsOfOneAddressTheFirstIsThatOfItsHistory)
{
    plan({}, kPolled + 2); // the last one is Main.S without its sign
    connect(10);
    word(100, 3016, 0xFFFF);
    lookAt(200);
    EXPECT_EQ("65535", row(kPolled + 1)[1].toString());
    EXPECT_EQ(QJsonArray{-1}, get("history", {{"address", "Main.S"}})["last"].toArray());
}

TEST_F(LivePage, ABitOfAWordHasItsOwnHistory)
{
    plan();
    connect(10);
    word(100, 3032, 4);
    word(200, 3032, 5);
    word(300, 3032, 1);
    lookAt(400);
    const QJsonObject history = get("history", {{"address", "Main.Mode.b[2]"}});
    EXPECT_EQ((QJsonArray{1, 0}), history["last"].toArray());
    EXPECT_TRUE(history["isBit"].toBool());
}

namespace
{

class MadeRecording : public HistorySource
{
public:
    HistoryPiece history(const QString& address, qint64 from, qint64 to, size_t) override
    {
        asked_ = QString("%1 %2 %3").arg(address).arg(from).arg(to);
        HistoryPiece piece;
        piece.oldest = kWallMs - 5000;
        piece.add(static_cast<double>(kWallMs - 4000), 40, 40, 40);
        piece.add(static_cast<double>(kWallMs - 1000), 41, 41, 41);
        piece.gaps.push_back({kWallMs - 3000, kWallMs - 2000, "stale: x"});
        PageEvent began;
        began.at = static_cast<double>(kWallMs - 4000);
        began.kind = "recording";
        piece.events.push_back(began);
        return piece;
    }
    QString asked_;
};

} // namespace

TEST_F(LivePage, ARecordingReachesBackBehindTheMemory)
{
    MadeRecording recording;
    content_->setRecording(&recording);
    plan();
    connect(10);
    word(100, 3000, 7);
    lookAt(200);
    const auto from = std::to_string(kWallMs - 10000);
    const QJsonObject history = get("history", {{"address", "Main.W"}, {"from", from}});
    EXPECT_EQ(QString("Main.W %1 %2").arg(kWallMs - 10000).arg(kWallMs), recording.asked_);
    EXPECT_EQ((QJsonArray{40, 41, 7}), history["last"].toArray());
    EXPECT_EQ("both", history["source"].toString());
    EXPECT_EQ(kWallMs - 5000, history["oldest"].toDouble());
    EXPECT_EQ(2, history["gaps"].toArray().size());
    recording.asked_.clear();
    EXPECT_EQ("memory",
              get("history", {{"address", "Main.W"}, {"from", std::to_string(kWallMs)}})["source"]
                  .toString());
    EXPECT_EQ("", recording.asked_);
}

TEST_F(LivePage, WhereMemoryAndRecordingMeetNothingStandsTwice)
{
    MadeRecording recording;
    content_->setRecording(&recording);
    plan();
    connect(10);
    word(100, 3000, 7);
    lookAt(200);
    const QJsonObject history =
        get("history", {{"address", "Main.W"}, {"from", std::to_string(kWallMs - 10000)}});
    const QJsonArray times = history["t"].toArray();
    for (int i = 1; i < times.size(); ++i) {
        EXPECT_LT(times[i - 1].toDouble(), times[i].toDouble());
    }
    const QJsonArray events = history["events"].toArray();
    ASSERT_EQ(2, events.size());
    EXPECT_EQ("recording", events[0].toObject()["kind"].toString());
    EXPECT_EQ("connected", events[1].toObject()["kind"].toString());
}

TEST_F(LivePage, TheRecordingIsReadElsewhereAndOnlyWhereTheMemoryDoesNotReach)
{
    MadeRecording recording;
    std::vector<std::function<void()>> elsewhere;
    content_->setRecording(
        &recording, [&](std::function<void()> work) { elsewhere.push_back(std::move(work)); });
    plan();
    lookAt(10);
    std::vector<std::string> answers;
    const auto ask = [&](qint64 from) {
        content_->ask("history",
                      page::Query{{{"address", "Main.W"}, {"from", std::to_string(from)}}},
                      [&](const page::Answer& answer) { answers.push_back(answer.body); });
    };
    ask(kWallMs);
    EXPECT_EQ(1U, answers.size());
    ask(kWallMs - 1000);
    ASSERT_EQ(1U, elsewhere.size());
    EXPECT_EQ("", recording.asked_);
    elsewhere.front()();
    ASSERT_EQ(2U, answers.size());
    EXPECT_EQ("both", parsed(answers[1])["source"].toString());
}

TEST_F(LivePage, AFailingRecordingIsAnEventAndStandsInTheStatus)
{
    content_->setRecordingStatus([] { return std::string(R"({"state":"failed"})"); });
    content_->tellStorage("the recording cannot be written: disk full", true);
    lookAt(10);
    const QJsonObject event = get("events")["events"].toArray()[0].toObject();
    EXPECT_EQ("storage", event["kind"].toString());
    EXPECT_EQ("the recording cannot be written: disk full", event["text"].toString());
    EXPECT_TRUE(event["bad"].toBool());
    EXPECT_EQ("failed", get("status")["recording"].toObject()["state"].toString());
}

TEST_F(LivePage, WhatCostsMuchToShowIsShownLessOften)
{
    plan();
    connect(1);
    costs_ = std::chrono::milliseconds(2);
    lookAt(100);
    quint64 seen = content_->sequence();
    const auto isShownAt = [&](int ms) {
        word(ms - 1, 3000, static_cast<quint32>(ms));
        lookAt(ms);
        const bool isShown = content_->sequence() != seen;
        seen = content_->sequence();
        return isShown;
    };
    EXPECT_FALSE(isShownAt(200));
    EXPECT_FALSE(isShownAt(299));
    EXPECT_TRUE(isShownAt(300)) << "a hundred times two milliseconds later";
    EXPECT_EQ("300", row(kW)[1].toString());
    costs_ = std::chrono::milliseconds(100);
    EXPECT_TRUE(isShownAt(500));
    EXPECT_FALSE(isShownAt(1300));
    EXPECT_TRUE(isShownAt(1350)) << "once a second all the same";
    const QJsonArray last =
        get("history", {{"address", "Main.W"}, {"points", "20"}})["last"].toArray();
    EXPECT_NE(-1, QJsonDocument(last).toJson(QJsonDocument::Compact).indexOf("1300"))
        << "what is not shown is kept";
}

TEST_F(LivePage, TheTextOfAMessageCountsAsWell)
{
    plan();
    connect(1);
    lookAt(100);
    word(101, 3000, 1);
    lookAt(200);
    costs_ = std::chrono::milliseconds(2);
    content_->changes(0, 0);
    costs_ = std::chrono::milliseconds(0);
    word(201, 3000, 2);
    lookAt(300);
    EXPECT_EQ("1", row(kW)[1].toString());
    lookAt(400);
    EXPECT_EQ("2", row(kW)[1].toString());
}

TEST_F(LivePage, AnEventIsShownHoweverMuchItCosts)
{
    plan();
    connect(1);
    costs_ = std::chrono::milliseconds(100);
    lookAt(100);
    const quint64 seen = content_->sequence();
    tell(150, FeedKind::connectionLost, "why");
    at(160);
    content_->keepUp();
    EXPECT_LT(seen, content_->sequence()) << "also between two looks";
    EXPECT_STREQ("lost", qPrintable(object(get("status"), "link")["state"].toString()));
}

TEST_F(LivePage, WhoKeepsUpBetweenLooksMissesNothing)
{
    plan();
    lookAt(1);
    for (int i = 0; i < 40000; ++i) {
        word(2, 3000, static_cast<quint32>(i));
        if (i % 10000 == 0) {
            content_->keepUp();
        }
    }
    lookAt(10);
    EXPECT_EQ(0, get("status")["missed"].toInt());
    EXPECT_EQ(QString::number(40000 - 1), row(kW)[1].toString());
}

TEST_F(LivePage, EntriesThatWereMissedAreSaid)
{
    plan();
    lookAt(1);
    for (int i = 0; i < 40000; ++i) {
        word(2, 3000, static_cast<quint32>(i));
    }
    lookAt(10);
    EXPECT_GT(get("status")["missed"].toInt(), 1000);
    EXPECT_NE(-1,
              eventTexts().indexOf(QRegExp("[0-9]+ events were missed: what happened meanwhile is "
                                           "not shown")));
}

} // namespace tavmir::host
