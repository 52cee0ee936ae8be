// A replay of a run in which a variable was refused, the connection was lost, and the clock was set
// back.
#include "host/recorded_past.h"
#include "host/replay_content.h"
#include "recorder/made_recording.h"

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
using testing::HasSubstr;

constexpr qint64 kEpochMs = kEpoch / 1000;

const char kProject[] = R"({
  "connection": { "host": "10.0.0.2", "port": 502, "station": 1 },
  "labels": [ { "name": "Main", "variables": [
    { "name": "Temp", "type": "word", "address": 100 },
    { "name": "Speed", "type": "word", "address": 3000 } ] } ],
  "polled": [ { "address": "Main.Temp", "name": "Temperature" }, { "address": "Main.Speed" } ]
})";

class ReplayedRefusals : public testing::Test
{
protected:
    ReplayedRefusals() { made.setProject(kProject, "plant.json"); }

    static Batch opening(qint64 ms)
    {
        RecordedVariable temp = madeRecorded("Main.Temp");
        temp.name = "Temperature";
        RecordedVariable speed = madeRecorded("Main.Speed");
        speed.name = "Main.Speed";
        Batch batch;
        batch.variables = numbered({temp, speed});
        batch.polled = {{momentOf(ms), 0, 1}, {momentOf(ms), 1, 2}};
        return batch;
    }

    // Of ten seconds: Temperature refused at 3 s and back at 8 s, the connection lost at 5 s, which
    // has another reason at 6 s.
    static Batch rows()
    {
        Batch batch;
        batch.qualities = {qualityAt(1, 1000, Quality::good), qualityAt(2, 1000, Quality::good),
                           qualityAt(1, 3000, Quality::bad, "code 2"),
                           qualityAt(2, 5000, Quality::stale, "lost"),
                           qualityAt(1, 8000, Quality::good)};
        batch.events = {{momentOf(0), 0, event_kind::kBegan, "10.0.0.2:502", "test"},
                        {momentOf(500), 0, event_kind::kConnected, "10.0.0.2:502", ""},
                        {momentOf(3000), 0, event_kind::kSetAside, "Temperature", "code 2"},
                        {momentOf(5000), 0, event_kind::kLost, "10.0.0.2:502", "reset"},
                        {momentOf(5500), 0, event_kind::kConnectFailed, "10.0.0.2:502", "refused"},
                        {momentOf(6000), 0, event_kind::kConnectFailed, "10.0.0.2:502", "no route"},
                        {momentOf(7000), 0, event_kind::kConnected, "10.0.0.2:502", ""},
                        {momentOf(8000), 0, event_kind::kBack, "Temperature", ""}};
        return batch;
    }

    void recordTenSeconds() { made.addFile(1, momentOf(0), momentOf(10000), opening(0), rows()); }

    void open()
    {
        ReplayOptions options;
        options.folder = made.folder();
        QString problem;
        content = ReplayContent::open(options, problem);
        ASSERT_TRUE(content) << problem.toStdString();
    }

    void goTo(qint64 ms)
    {
        std::promise<unsigned> status;
        content->post("replay", QString(R"({"at":%1})").arg(kEpochMs + ms).toStdString(),
                      [&](const page::Answer& answer) { status.set_value(answer.status); });
        ASSERT_EQ(200U, status.get_future().get());
    }

    QJsonObject get(const char* what, const page::Query& query = {}) const
    {
        const page::Answer answer = content->get(what, query);
        return QJsonDocument::fromJson(QByteArray::fromStdString(answer.body)).object();
    }

    QJsonObject explained(const char* address) const
    {
        return get("explain", page::Query{{{"address", address}}});
    }

    // "ok: text" of its step
    std::string polled(const char* address) const
    {
        for (const QJsonValue& step : explained(address)["steps"].toArray()) {
            if (step.toObject()["step"] == "polled") {
                const QJsonValue ok = step.toObject()["ok"];
                return (ok.isNull()   ? "?: "
                        : ok.toBool() ? "yes: "
                                      : "no: ") +
                       step.toObject()["text"].toString().toStdString();
            }
        }
        return std::string();
    }

    std::string conclusion(const char* address) const
    {
        return explained(address)["conclusion"].toString().toStdString();
    }

    int passElements() const { return get("status")["pass"].toObject()["elements"].toInt(); }

    std::string line() const
    {
        return get("status")["link"].toObject()["text"].toString().toStdString();
    }

    MadeRecording made;
    std::unique_ptr<ReplayContent> content;
};

} // namespace

TEST_F(ReplayedRefusals, WhatIsSetAsideIsNotPolledThen)
{
    recordTenSeconds();
    open();
    goTo(2000);
    EXPECT_EQ(polled("Main.Temp"),
              "yes: variable 1 of 2 in the list that was polled at this moment");
    EXPECT_EQ(passElements(), 2);
    const int before = get("plan")["generation"].toInt();
    goTo(4000);
    EXPECT_EQ(polled("Main.Temp"),
              "no: set aside since 2026-01-01T00:00:03.000Z: code 2; it was tried again now and "
              "then");
    EXPECT_EQ(conclusion("Main.Temp"),
              "At this moment it was bad: the controller refused this address by itself (code 2), "
              "so it was tried only now and then (so since 2026-01-01T00:00:03.000Z).");
    EXPECT_EQ(polled("Main.Speed"),
              "yes: variable 2 of 2 in the list that was polled at this moment");
    EXPECT_EQ(passElements(), 1);
    EXPECT_EQ(get("plan")["passElements"].toInt(), 1);
    EXPECT_NE(get("plan")["generation"].toInt(), before) << "so that the page asks for it anew";
    EXPECT_EQ(get("values")["values"].toArray().size(), 2);
    goTo(9000);
    EXPECT_EQ(polled("Main.Temp"),
              "yes: variable 1 of 2 in the list that was polled at this moment");
    EXPECT_EQ(passElements(), 2);
}

TEST_F(ReplayedRefusals, WhatWasRefusedInAnEarlierFileIsSetAsideInTheNextAndNotInTheNextRun)
{
    Batch first = rows();
    first.events.resize(3);
    made.addFile(1, momentOf(0), momentOf(10000), opening(0), first);
    made.addFile(2, momentOf(10000), momentOf(20000), opening(10000), Batch());
    Batch second;
    second.events = {{momentOf(20000), 0, event_kind::kBegan, "10.0.0.2:502", "test"}};
    made.addFile(3, momentOf(20000), momentOf(30000), opening(20000), second);
    open();
    goTo(25000);
    EXPECT_EQ(passElements(), 2);
    goTo(15000);
    EXPECT_THAT(polled("Main.Temp"), HasSubstr("no: set aside"));
    EXPECT_EQ(passElements(), 1);
}

TEST_F(ReplayedRefusals, WithoutTheEventsOfThenNothingIsClaimed)
{
    Batch later;
    later.qualities = {qualityAt(1, 1000, Quality::bad, "code 2"),
                       qualityAt(2, 1000, Quality::good)};
    made.addFile(7, momentOf(0), momentOf(10000), opening(0), later);
    open();
    goTo(4000);
    EXPECT_EQ(polled("Main.Temp"), "?: variable 1 of 2 in the list of this moment; what is "
                                   "recorded does not say whether it was set aside");
    EXPECT_EQ(polled("Main.Speed"),
              "yes: variable 2 of 2 in the list that was polled at this moment")
        << "it was read";
    EXPECT_EQ(line(), "what is recorded does not say how the line was");
    EXPECT_EQ(get("status")["link"].toObject()["state"], "unknown");
}

TEST_F(ReplayedRefusals, EventsOfANamedVariableLeadToItsAddress)
{
    recordTenSeconds();
    open();
    goTo(9000);
    std::vector<std::string> addresses;
    for (const QJsonValue& event : get("events")["events"].toArray()) {
        const QJsonObject one = event.toObject();
        if (one["variable"].toString() == "Temperature") {
            addresses.push_back(one["address"].toString().toStdString());
        }
    }
    EXPECT_THAT(addresses, testing::ElementsAre("Main.Temp", "Main.Temp"));
    RecordedPast past(made.folder());
    const auto marks = [&past](const char* address) {
        size_t count = 0;
        for (const PageEvent& event :
             past.history(address, kEpochMs, kEpochMs + 9000, 100).events) {
            count += event.variable.isNull() ? 0 : 1;
        }
        return count;
    };
    EXPECT_EQ(marks("Main.Temp"), 2U);
    EXPECT_EQ(marks("Main.Speed"), 0U);
}

TEST_F(ReplayedRefusals, NotConnectedIsSinceTheLossWithTheNewestReason)
{
    recordTenSeconds();
    open();
    goTo(6500);
    EXPECT_EQ(line(), "not connected, since 2026-01-01T00:00:05.000Z: no route");
    EXPECT_EQ(get("status")["link"].toObject()["since"].toDouble(), kEpochMs + 5000.0);
    EXPECT_THAT(
        conclusion("Main.Speed"),
        HasSubstr("the line then: not connected, since 2026-01-01T00:00:05.000Z: no route"));
    goTo(5200);
    EXPECT_EQ(line(), "connection lost, since 2026-01-01T00:00:05.000Z: reset");
}

TEST_F(ReplayedRefusals, ARecordingInWhichTheClockWasSetBackIsReachedAsAWhole)
{
    made.addFile(1, momentOf(50000), momentOf(60000), opening(50000), [] {
        Batch batch;
        batch.events = {{momentOf(50000), 0, event_kind::kBegan, "10.0.0.2:502", "test"},
                        {momentOf(51000), 0, event_kind::kConnected, "10.0.0.2:502", ""}};
        batch.samples = {sampleAt(1, 52000, 5)};
        batch.qualities = {qualityAt(1, 52000, Quality::good)};
        return batch;
    }());
    Batch later;
    later.samples = {sampleAt(1, 2000, 6)};
    later.qualities = {qualityAt(1, 2000, Quality::good)};
    later.events = {{momentOf(0), 0, event_kind::kClock, "", "back"}};
    MinuteRow minute;
    minute.at = momentOf(0);
    minute.until = momentOf(10000);
    minute.timeouts = 3;
    later.minutes = {minute};
    made.addFile(2, momentOf(0), momentOf(10000), opening(0), later);
    open();
    const QJsonObject course = get("status")["replay"].toObject();
    EXPECT_EQ(course["from"].toDouble(), static_cast<double>(kEpochMs));
    EXPECT_EQ(course["to"].toDouble(), kEpochMs + 60000.0);
    goTo(5000);
    EXPECT_EQ(get("values")["values"].toArray()[0].toArray()[1].toString(), "6");
    EXPECT_EQ(line(), "connected, since before the clock was set back");
    EXPECT_EQ(get("status")["lastMinute"].toObject()["timeouts"].toInt(), 3);
    goTo(55000);
    EXPECT_EQ(get("values")["values"].toArray()[0].toArray()[1].toString(), "5");
    RecordedPast past(made.folder());
    const HistoryPiece piece = past.history("Main.Temp", kEpochMs, kEpochMs + 60000, 100);
    EXPECT_THAT(piece.last, testing::ElementsAre(6, 5));
    EXPECT_EQ(piece.oldest, kEpochMs);
}

} // namespace tavmir::host
