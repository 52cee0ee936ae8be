// What the page gets of a recording.
#include "host/replay_content.h"

#include "recorder/made_recording.h"
#include "support/wait_until.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

namespace tavmir::host
{

namespace
{

using namespace recorder;
using test::waitUntil;

constexpr qint64 kEpochMs = kEpoch / 1000;

const char kProject[] = R"({
  "connection": { "host": "10.0.0.2", "port": 502, "station": 1 },
  "labels": [ { "name": "Main", "variables": [
    { "name": "A", "type": "word", "address": 100 },
    { "name": "T", "type": "text", "address": 1000, "words": 3 },
    { "name": "Off", "type": "word", "address": 2000 } ] } ],
  "polled": [ { "address": "Main.A" }, { "address": "Main.T" } ]
})";

QJsonObject parsed(const std::string& json)
{
    QJsonParseError error;
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray(json.data(), static_cast<int>(json.size())), &error);
    EXPECT_EQ(QJsonParseError::NoError, error.error) << json;
    return document.object();
}

// From 0 to 10 s: connected at 500 ms, Main.A 5 at 1 s, 9 at 2 s, stale at 6 s, lost at 4 s.
class Replayed : public testing::Test
{
protected:
    Replayed()
    {
        made.setProject(kProject, "plant.json");
        Batch rows;
        rows.variables = numbered({madeRecorded("Main.A"), madeRecorded("Main.T", "text", "text")});
        rows.polled = {{momentOf(0), 0, 1}, {momentOf(0), 1, 2}};
        rows.samples = {sampleAt(1, 1000, 5),
                        sampleAt(1, 2000, 9),
                        {2, momentOf(1000), RecordedValue::of(QString("<b>"))}};
        rows.qualities = {qualityAt(1, 1000, Quality::good), qualityAt(2, 1000, Quality::good),
                          qualityAt(1, 6000, Quality::stale, "not read for 2.0 s")};
        rows.events = {{momentOf(0), 0, event_kind::kBegan, "10.0.0.2:502", "test"},
                       {momentOf(500), 0, event_kind::kConnected, "10.0.0.2:502", ""},
                       {momentOf(4000), 0, event_kind::kLost, "10.0.0.2:502", "reset"},
                       {momentOf(8000), momentOf(9000), event_kind::kGap, "", "disk full"}};
        MinuteRow minute;
        minute.at = momentOf(0);
        minute.until = momentOf(10000);
        minute.timeouts = 3;
        minute.roundTripMedian = 250;
        rows.minutes = {minute};
        made.addFile(1, momentOf(0), momentOf(10000), Batch(), rows);
        ReplayOptions options;
        options.folder = made.folder();
        options.version = "9";
        options.clocks.steady = [this] { return steady; };
        QString problem;
        content = ReplayContent::open(options, problem);
        EXPECT_EQ("", problem.toStdString());
    }

    page::Answer post(const std::string& body, const char* what = "replay")
    {
        std::promise<page::Answer> answer;
        content->post(what, body, [&](const page::Answer& one) { answer.set_value(one); });
        return answer.get_future().get();
    }

    void goTo(qint64 ms)
    {
        EXPECT_EQ(200U, post(QString(R"({"at":%1})").arg(kEpochMs + ms).toStdString()).status);
    }

    QJsonObject ask(const char* what,
                    const std::vector<std::pair<std::string, std::string>>& query = {})
    {
        std::promise<page::Answer> answer;
        content->ask(what, page::Query{query},
                     [&](const page::Answer& one) { answer.set_value(one); });
        const page::Answer one = answer.get_future().get();
        QJsonObject json = parsed(one.body);
        json["httpStatus"] = static_cast<int>(one.status);
        return json;
    }

    QJsonArray row(int index) { return ask("values")["values"].toArray()[index].toArray(); }

    // In another file; Main.A alone is polled.
    void recordTenMoreSeconds()
    {
        Batch rows;
        rows.variables = numbered({madeRecorded("Main.A")});
        rows.polled = {{momentOf(10000), 0, 1}};
        made.addFile(2, momentOf(10000), momentOf(20000), rows, Batch());
    }

    bool coversUntil(qint64 ms)
    {
        steady += std::chrono::seconds(2);
        return waitUntil([&] {
            content->look();
            return ask("status")["replay"].toObject()["to"].toVariant().toLongLong() ==
                   kEpochMs + ms;
        });
    }

    std::string conclusion(const char* address)
    {
        return ask("explain", {{"address", address}})["conclusion"].toString().toStdString();
    }

    std::vector<std::string> events(const QJsonObject& json)
    {
        std::vector<std::string> texts;
        for (const QJsonValue& event : json["events"].toArray()) {
            texts.push_back(event.toObject()["text"].toString().toStdString());
        }
        return texts;
    }

    MadeRecording made;
    Clock::time_point steady = Clock::now();
    std::unique_ptr<ReplayContent> content;
};

} // namespace

TEST_F(Replayed, ValuesAreThoseOfThePosition)
{
    goTo(1500);
    EXPECT_EQ((QJsonArray{0, "5", 5, "good", "", kEpochMs + 1000, QJsonValue()}), row(0));
    goTo(2500);
    EXPECT_EQ("9", row(0)[1].toString());
    goTo(500);
    EXPECT_EQ("–", row(0)[1].toString());
    EXPECT_EQ("never", row(0)[3].toString());
    EXPECT_TRUE(row(0)[5].isNull());
}

TEST_F(Replayed, WhatWasNotGoodSaysSinceWhen)
{
    goTo(7000);
    EXPECT_EQ("9", row(0)[1].toString());
    EXPECT_EQ("stale", row(0)[3].toString());
    EXPECT_EQ("since 2026-01-01T00:00:06.000Z: not read for 2.0 s", row(0)[4].toString());
    EXPECT_EQ("good", row(1)[3].toString());
}

TEST_F(Replayed, ASampleIsNoReading)
{
    goTo(1500);
    for (const QJsonValue& step : ask("explain", {{"address", "Main.A"}})["steps"].toArray()) {
        if (step.toObject()["step"] == "value") {
            EXPECT_EQ(
                "5, recorded at 2026-01-01T00:00:01.000Z, 500 ms before this moment; there "
                "is one at each change and one a minute, also of what was not read in between",
                step.toObject()["text"].toString());
            return;
        }
    }
    ADD_FAILURE() << "no such step";
}

TEST_F(Replayed, InAGapOfTheRecordingNothingIsGood)
{
    goTo(8500);
    EXPECT_EQ("nothing was recorded at this time", row(0)[4].toString());
    EXPECT_EQ("stale", row(1)[3].toString());
    EXPECT_EQ("nothing was recorded at this time",
              ask("status")["link"].toObject()["text"].toString());
    EXPECT_EQ("At this moment nothing was recorded: what stands here is what was known last.",
              conclusion("Main.A"));
}

TEST_F(Replayed, TheStripIsThatOfThePosition)
{
    goTo(100);
    EXPECT_EQ("connecting", ask("status")["link"].toObject()["state"].toString());
    goTo(3000);
    const QJsonObject status = ask("status");
    EXPECT_EQ("connected", status["link"].toObject()["state"].toString());
    EXPECT_EQ("plant.json", status["project"].toString());
    EXPECT_EQ("10.0.0.2:502", status["controller"].toString());
    EXPECT_EQ(3, status["lastMinute"].toObject()["timeouts"].toInt());
    EXPECT_EQ(0.25, status["roundTrip"].toObject()["medianMs"].toDouble());
    EXPECT_FALSE(status["writes"].toObject()["allowed"].toBool());
    EXPECT_EQ(kEpochMs, status["replay"].toObject()["from"].toDouble());
    EXPECT_EQ(kEpochMs + 10000, status["replay"].toObject()["to"].toDouble());
    EXPECT_EQ(kEpochMs + 3000, status["replay"].toObject()["at"].toDouble());
    goTo(5000);
    EXPECT_EQ("connection lost, since 2026-01-01T00:00:04.000Z: reset",
              ask("status")["link"].toObject()["text"].toString());
}

TEST_F(Replayed, EventsAreThoseUntilThePosition)
{
    goTo(3000);
    EXPECT_THAT(events(ask("events")), testing::ElementsAre("recording began 10.0.0.2:502: test",
                                                            "connected to 10.0.0.2:502"));
    goTo(5000);
    EXPECT_EQ(3U, events(ask("events")).size());
    goTo(200);
    EXPECT_EQ(1U, events(ask("events")).size());
}

TEST_F(Replayed, WhySaysWhatWasTheMatterThen)
{
    goTo(1500);
    EXPECT_EQ("At this moment it was good: 5.", conclusion("Main.A"));
    goTo(500);
    EXPECT_EQ("At this moment there was no value yet: no reply had brought it yet.",
              conclusion("Main.A"));
    goTo(7000);
    EXPECT_EQ("At this moment it was stale because not read for 2.0 s (so since "
              "2026-01-01T00:00:06.000Z); the line then: connection lost, since "
              "2026-01-01T00:00:04.000Z: reset.",
              conclusion("Main.A"));
    EXPECT_EQ("At this moment the value was not there because it was not polled: nobody asked for "
              "it.",
              conclusion("Main.Off"));
    EXPECT_THAT(conclusion("Main.No"), testing::StartsWith("There is no such value: "));
}

TEST_F(Replayed, ATrendGoesOverThePositionAndHasItsGaps)
{
    goTo(3000);
    const QJsonObject history = ask("history", {{"address", "Main.A"},
                                                {"from", std::to_string(kEpochMs)},
                                                {"to", std::to_string(kEpochMs + 10000)}});
    EXPECT_EQ("recording", history["source"].toString());
    EXPECT_EQ((QJsonArray{5, 9}), history["last"].toArray());
    EXPECT_EQ(4, history["gaps"].toArray().size());
    EXPECT_EQ(400, ask("history")["httpStatus"].toInt());
}

TEST_F(Replayed, APositionElsewhereIsSentWhole)
{
    goTo(1500);
    content->look();
    const std::uint64_t seen = content->sequence();
    EXPECT_EQ("", content->changes(seen, seen));
    goTo(7000);
    content->look();
    EXPECT_EQ("snapshot", parsed(content->changes(seen, seen))["kind"].toString());
}

TEST_F(Replayed, PlayedOnOnlyWhatIsNewIsSent)
{
    post(QString(R"({"at":%1,"playing":true,"speed":1})").arg(kEpochMs + 3500).toStdString());
    content->look();
    const std::uint64_t seen = content->sequence();
    steady += std::chrono::seconds(3);
    QJsonObject changes;
    ASSERT_TRUE(waitUntil([&] {
        content->look();
        const std::string said = content->changes(seen, seen);
        changes = said.empty() ? QJsonObject() : parsed(said);
        return changes["status"].toObject()["replay"].toObject()["at"].toDouble() ==
               kEpochMs + 6500;
    }));
    EXPECT_EQ("changes", changes["kind"].toString());
    ASSERT_EQ(1, changes["values"].toArray().size());
    EXPECT_EQ("stale", changes["values"].toArray()[0].toArray()[3].toString());
    EXPECT_THAT(events(changes), testing::ElementsAre("connection lost to 10.0.0.2:502: reset"));
}

TEST_F(Replayed, NothingCanBeWrittenAndFramesAreInCaptures)
{
    EXPECT_EQ(403U, post("{}", "write").status);
    EXPECT_EQ(404U, post("{}", "nothing").status);
    EXPECT_EQ(400U, post("nonsense").status);
    EXPECT_EQ(0, ask("frames")["frames"].toArray().size());
    EXPECT_EQ(503, ask("capture.pcapng")["httpStatus"].toInt());
    EXPECT_THAT(ask("capture.pcapng")["error"].toString().toStdString(),
                testing::HasSubstr("frames are in captures"));
    EXPECT_EQ(404, ask("nothing")["httpStatus"].toInt());
}

TEST_F(Replayed, VariablesAndRequestsAreThoseOfTheRecordedProject)
{
    const QJsonArray variables = ask("variables")["variables"].toArray();
    ASSERT_EQ(2, variables.size());
    EXPECT_EQ("Main.A", variables[0].toObject()["address"].toString());
    EXPECT_EQ(65535, variables[0].toObject()["high"].toInt());
    EXPECT_FALSE(variables[0].toObject()["writable"].toBool());
    EXPECT_EQ(4, ask("plan")["passElements"].toInt());
}

TEST_F(Replayed, ARecordingThatGoesOnCoversMoreByTime)
{
    recordTenMoreSeconds();
    EXPECT_TRUE(coversUntil(20000));
}

TEST_F(Replayed, AnotherListIsShownAsOne)
{
    recordTenMoreSeconds();
    ASSERT_TRUE(coversUntil(20000));
    goTo(5000);
    const int before = ask("variables")["generation"].toInt();
    const int plan = ask("status")["planGeneration"].toInt();
    EXPECT_EQ(2, ask("values")["values"].toArray().size());
    goTo(15000);
    EXPECT_EQ(1, ask("variables")["variables"].toArray().size());
    EXPECT_EQ(1, ask("values")["values"].toArray().size());
    EXPECT_LT(before, ask("variables")["generation"].toInt());
    EXPECT_LT(plan, ask("status")["planGeneration"].toInt()) << "with other requests";
}

TEST(Replay, WithoutAProjectThatCanBeReadValuesAreShownAllTheSame)
{
    MadeRecording made; // its project is none
    Batch rows;
    rows.variables = numbered({madeRecorded("Main.A")});
    rows.polled = {{momentOf(0), 0, 1}};
    rows.samples = {sampleAt(1, 1000, 5)};
    rows.qualities = {qualityAt(1, 1000, Quality::good)};
    made.addFile(1, momentOf(0), momentOf(10000), Batch(), rows);
    ReplayOptions options;
    options.folder = made.folder();
    QString problem;
    const auto content = ReplayContent::open(options, problem);
    ASSERT_TRUE(content) << problem.toStdString();
    EXPECT_EQ(
        "5",
        parsed(content->get("values", {}).body)["values"].toArray()[0].toArray()[1].toString());
    EXPECT_EQ(503U, content->get("plan", {}).status);
    EXPECT_EQ(200U, content->get("explain", page::Query{{{"address", "Main.A"}}}).status);
}

TEST(Replay, AFolderWithoutARecordingIsRefused)
{
    ReplayOptions options;
    options.folder = "/nowhere";
    QString problem;
    EXPECT_FALSE(ReplayContent::open(options, problem));
    EXPECT_EQ("/nowhere: No such file or directory", problem.toStdString());
}

} // namespace tavmir::host
