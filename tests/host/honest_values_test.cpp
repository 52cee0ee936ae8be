// What the programs say of values and writes when the line or the controller does not play along:
// in read, write and run, in each format.
#include "programs.h"

#include "link/test_server.h"
#include "session/fake_controller.h"
#include "support/child_process.h"
#include "support/temporary_folder.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <gtest/gtest.h>

#include <csignal>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

const QString kHost = TAVMIR_HOST_PROGRAM;

// How long a reply is waited for: where each request gets one; where one of several gets none,
// which the test waits for; where none gets one, or a late one does no harm.
constexpr int kPatientMs = 20000;
constexpr int kMixedMs = 3000;
constexpr int kShortMs = 300;

// Three words, polled; pauses as short as a test can bear.
QString projectFile(int replyTimeoutMs)
{
    static const test::TemporaryFolder folder;
    const QString text = QString(R"({
      "connection": { "host": "127.0.0.1", "port": 1, "station": 1, "retryLimit": 0,
        "connectTimeoutMs": 5000, "replyTimeoutMs": %1, "reconnectMinMs": 10,
        "reconnectMaxMs": 50 },
      "labels": [ { "name": "L", "variables": [
        { "name": "w", "type": "word", "address": 160 },
        { "name": "x", "type": "word", "address": 176 },
        { "name": "t", "type": "text", "address": 1600, "words": 3 } ] } ],
      "polled": [ { "address": "L.w" }, { "address": "L.x" } ] })");
    return QString::fromStdString(folder.writeFile(std::to_string(replyTimeoutMs) + ".json",
                                                   text.arg(replyTimeoutMs).toStdString()));
}

QStringList arguments(const QString& command, int port, const QStringList& more,
                      int replyTimeoutMs = kPatientMs)
{
    return QStringList{command, projectFile(replyTimeoutMs), "--connect",
                       QString("127.0.0.1:%1").arg(port)} +
           more;
}

QJsonObject objectIn(const QString& line)
{
    return QJsonDocument::fromJson(line.toUtf8()).object();
}

// The last whole object of a run; the objects' lines end with a line break.
QJsonObject lastShown(const QString& output)
{
    const QStringList lines = output.section('\n', 0, -2).split('\n');
    return objectIn(lines.last());
}

QJsonObject valueOf(const QJsonObject& shown, const QString& address)
{
    for (const QJsonValue& value : shown["values"].toArray()) {
        if (value.toObject()["address"].toString() == address) {
            return value.toObject();
        }
    }
    return {};
}

class HonestValues : public testing::Test
{
protected:
    test::ProcessResult host(const QString& command, const QStringList& more)
    {
        return test::runProcess(kHost,
                                arguments(command, controller_.port(), more, replyTimeoutMs_));
    }

    // The one object that a read or a write prints.
    QJsonObject objectOf(const QString& command, const QStringList& more, int exitStatus)
    {
        const auto result = host(command, more + QStringList{"--format", "json"});
        EXPECT_EQ(exitStatus, result.exitStatus) << result.errors.toStdString();
        EXPECT_EQ(1, result.output.count('\n')) << result.output.toStdString();
        return objectIn(result.output);
    }

    FakeController controller_;
    int replyTimeoutMs_ = kPatientMs; // of the hosts from now on
};

std::string text(const QJsonObject& object, const char* key)
{
    return object[key].toString().toStdString();
}

const std::string kRefusal = "the controller refused the request: exception 3 (illegal data value)";

std::string noAnswerWithin(int ms)
{
    return "the controller did not answer within " + std::to_string(ms) + " ms";
}

const std::string kTimeOut = noAnswerWithin(kShortMs);
const std::string kMixedTimeOut = noAnswerWithin(kMixedMs);

} // namespace

TEST_F(HonestValues, AReadThatFailsHasItsQualityAndReasonInEachFormat)
{
    controller_.treat("f", Mood::refuses);
    const QJsonObject refused = objectOf("read", {"L.w"}, 1);
    EXPECT_EQ("bad", text(refused, "quality"));
    EXPECT_EQ(kRefusal, text(refused, "reason"));
    EXPECT_TRUE(refused["value"].isNull());
    EXPECT_TRUE(refused["ageMs"].isNull());
    controller_.treat("f", Mood::loses);
    replyTimeoutMs_ = kShortMs;
    const auto csv = host("read", {"L.w", "--format", "csv"});
    EXPECT_EQ(1, csv.exitStatus);
    EXPECT_TRUE(csv.output.contains(",L.w,L.w,,,bad," + QString::fromStdString(kTimeOut) + "\n"))
        << csv.output.toStdString();
    const auto table = host("read", {"L.w"});
    EXPECT_EQ(1, table.exitStatus);
    EXPECT_EQ("L.w = – ! (bad: " + kTimeOut + ")\n", table.output.toStdString());
    EXPECT_EQ("tavmir-host: L.w: not read: " + kTimeOut + "\n", table.errors.toStdString());
}

TEST(HonestReasons, TheAddressThatWasTriedArrivesEverywhere)
{
    const int port = closedPort();
    const std::string refusal = "127.0.0.1:" + std::to_string(port) + ": Connection refused";
    const std::string why = "no connection to the controller: " + refusal;
    const auto read = test::runProcess(kHost, arguments("read", port, {"L.w", "--format", "json"}));
    EXPECT_EQ(1, read.exitStatus);
    EXPECT_EQ("never", text(objectIn(read.output), "quality"));
    EXPECT_EQ(why, text(objectIn(read.output), "reason"));
    const auto write =
        test::runProcess(kHost, arguments("write", port, {"L.w=1", "--format", "json"}));
    EXPECT_EQ(1, write.exitStatus);
    EXPECT_EQ("not sent", text(objectIn(write.output), "outcome"));
    EXPECT_EQ(why, text(objectIn(write.output), "reason"));
    const auto run = test::runProcess(
        kHost,
        arguments("run", port, {"--duration", "0.3", "--interval", "100", "--format", "json"}));
    EXPECT_EQ(1, run.exitStatus);
    const QStringList lines = run.output.trimmed().split('\n');
    ASSERT_GE(lines.size(), 2);
    const QJsonObject shown = objectIn(lines[lines.size() - 2]);
    EXPECT_FALSE(shown["connected"].toBool(true));
    EXPECT_EQ("not connected to " + refusal, text(shown, "state"));
    EXPECT_EQ("never", text(valueOf(shown, "L.w"), "quality"));
    EXPECT_EQ("no reply has brought it yet: not connected to " + refusal,
              text(valueOf(shown, "L.w"), "reason"));
    const QJsonObject statistics = objectIn(lines.last())["statistics"].toObject();
    EXPECT_EQ(refusal, text(statistics["lastError"].toObject(), "reason"));
}

TEST(HonestReasons, ANameThatHasNoAddressIsNamed)
{
    const auto read = test::runProcess(
        kHost, {"read", projectFile(kPatientMs), "--connect", "nowhere.invalid:5020", "L.w"});
    EXPECT_EQ(1, read.exitStatus);
    EXPECT_TRUE(
        read.errors.startsWith("tavmir-host: L.w: not read: no connection to the controller: "
                               "nowhere.invalid: "))
        << read.errors.toStdString();
}

TEST_F(HonestValues, WritesAreObjectsWithTheirOutcome)
{
    const QJsonObject done = objectOf("write", {"L.t=ab"}, 0);
    EXPECT_EQ("L.t", text(done, "address"));
    EXPECT_EQ("ab", text(done, "asked"));
    EXPECT_EQ("done", text(done, "outcome"));
    EXPECT_TRUE(done["reason"].isNull());
    EXPECT_EQ(3, done["elements"].toInt());
    EXPECT_EQ(3, done["acknowledged"].toInt());
    EXPECT_FALSE(done.contains("readBack"));

    controller_.treat("g", Mood::refuses);
    const QJsonObject refused = objectOf("write", {"L.w=7"}, 1);
    EXPECT_EQ("refused", text(refused, "outcome"));
    EXPECT_EQ(kRefusal, text(refused, "reason"));
    EXPECT_EQ(0, refused["acknowledged"].toInt(-1));

    controller_.treat("g", Mood::loses);
    replyTimeoutMs_ = kShortMs;
    const QJsonObject unknown = objectOf("write", {"L.w=7"}, 1);
    EXPECT_EQ("unknown", text(unknown, "outcome"));
    EXPECT_EQ(kTimeOut, text(unknown, "reason"));

    const auto csv = host("write", {"L.w=7", "--format", "csv"});
    EXPECT_EQ(1, csv.exitStatus);
    EXPECT_TRUE(csv.output.startsWith("time,address,asked,outcome,reason,elements,acknowledged,"
                                      "stands_there,quality,read_reason\n"));
    EXPECT_TRUE(
        csv.output.contains(",L.w,7,unknown," + QString::fromStdString(kTimeOut) + ",1,0,,,\n"))
        << csv.output.toStdString();
}

TEST(ReadBack, SettlesAWriteWhoseReplyWasLost)
{
    Program controller(TAVMIR_CONTROLLER_PROGRAM, {"--listen", "127.0.0.1:0", "--fault", "drop@1"});
    ASSERT_TRUE(controller.showsOutput([](const QString& text) { return text.endsWith('\n'); }));
    const int port = controller.output().trimmed().section(':', -1).toInt();
    const auto result =
        test::runProcess(kHost, arguments("write", port, {"L.w=4711", "--read-back"}, kMixedMs));
    EXPECT_EQ(0, result.exitStatus) << result.errors.toStdString();
    EXPECT_EQ("L.w = 4711: written, as reading it back shows: " + kMixedTimeOut +
                  "; 4711 stands there\n",
              result.output.toStdString());
}

TEST(ReadBack, OfAWriteThatNeverArrivedShowsWhatStandsThere)
{
    Program controller(TAVMIR_CONTROLLER_PROGRAM, {"--listen", "127.0.0.1:0", "--fault", "lose@1"});
    ASSERT_TRUE(controller.showsOutput([](const QString& text) { return text.endsWith('\n'); }));
    const int port = controller.output().trimmed().section(':', -1).toInt();
    const auto result = test::runProcess(
        kHost, arguments("write", port, {"L.w=4711", "--read-back", "--format", "json"}, kMixedMs));
    EXPECT_EQ(1, result.exitStatus);
    const QJsonObject object = objectIn(result.output);
    EXPECT_EQ("unknown", text(object, "outcome"));
    EXPECT_EQ(kMixedTimeOut, text(object, "reason"));
    EXPECT_EQ(0, object["readBack"].toObject()["value"].toInt(-1));
    EXPECT_EQ("good", text(object["readBack"].toObject(), "quality"));
}

TEST_F(HonestValues, AReadBackThatFailsIsSaid)
{
    controller_.treat("f", Mood::refuses);
    const auto result = host("write", {"L.w=7", "--read-back"});
    EXPECT_EQ(1, result.exitStatus);
    EXPECT_EQ("tavmir-host: L.w = 7: written; not read back: " + kRefusal + "\n",
              result.errors.toStdString());
}

TEST_F(HonestValues, RunMarksWhatIsNotGoodAndRecovers)
{
    Program run(kHost, arguments("run", controller_.port(),
                                 {"--format", "json", "--interval", "50", "--pass", "5",
                                  "--stale-after", "400"},
                                 kShortMs)); // a late reply is soon followed by a good one
    const auto shows = [&](const char* quality, const std::string& reason) {
        return run.showsOutput([&](const QString& output) {
            const QJsonObject value = valueOf(lastShown(output), "L.w");
            return text(value, "quality") == quality &&
                   text(value, "reason").find(reason) != std::string::npos;
        });
    };
    EXPECT_TRUE(shows("good", ""));
    EXPECT_TRUE(lastShown(run.output())["connected"].toBool());

    controller_.treat("f", Mood::loses);
    EXPECT_TRUE(shows("bad", kTimeOut));
    EXPECT_FALSE(lastShown(run.output())["connected"].toBool(true));
    EXPECT_EQ("no reply from ", text(lastShown(run.output()), "state").substr(0, 14));
    EXPECT_FALSE(valueOf(lastShown(run.output()), "L.w")["value"].isNull()) << "the last one";

    controller_.treat("f", Mood::answers);
    EXPECT_TRUE(shows("good", ""));

    controller_.unplug();
    EXPECT_TRUE(shows("stale", "not connected to 127.0.0.1:"));
    EXPECT_FALSE(lastShown(run.output())["connected"].toBool(true));
    EXPECT_FALSE(valueOf(lastShown(run.output()), "L.w")["value"].isNull());

    controller_.plug();
    EXPECT_TRUE(shows("good", ""));
    controller_.treat("f", Mood::refuses);
    EXPECT_TRUE(shows("bad", kRefusal));
    run.signal(SIGINT);
    EXPECT_EQ(0, run.waitForEnd());
    const QJsonObject statistics =
        objectIn(run.output().trimmed().section('\n', -1))["statistics"].toObject();
    EXPECT_GT(statistics["exceptionsByCode"].toObject()["3"].toInt(), 0);
    EXPECT_GT(statistics["timeOuts"].toInt(), 0);
    const QJsonObject words = statistics["byElementGroup"].toArray().at(0).toObject();
    EXPECT_EQ("words", text(words, "elements"));
    EXPECT_GT(words["failed"].toInt(), 0);
    EXPECT_GT(words["good"].toInt(), 0);
}

TEST_F(HonestValues, AFailedWriteLeavesTheOldValueMarked)
{
    controller_.treat("g", Mood::loses);
    // One pass an hour: nothing is read again.
    Program run(kHost,
                arguments("run", controller_.port(),
                          {"--format", "json", "--interval", "50", "--pass", "3600000", "--stdin"},
                          kMixedMs));
    EXPECT_TRUE(run.showsOutput([&](const QString& output) {
        return text(valueOf(lastShown(output), "L.w"), "quality") == "good";
    }));
    const QJsonValue before = valueOf(lastShown(run.output()), "L.w")["value"];
    run.type("L.w=999");
    EXPECT_TRUE(run.showsError("L.w = 999: unknown: " + QString::fromStdString(kMixedTimeOut)));
    EXPECT_TRUE(run.showsOutput([&](const QString& output) {
        return text(valueOf(lastShown(output), "L.w"), "quality") == "unconfirmed";
    }));
    const QJsonObject value = valueOf(lastShown(run.output()), "L.w");
    EXPECT_EQ(before, value["value"]);
    EXPECT_EQ("a write of it ended as unknown: " + kMixedTimeOut, text(value, "reason"));
    run.signal(SIGINT);
    EXPECT_EQ(1, run.waitForEnd()) << "a write was not done";
}

TEST_F(HonestValues, ChangesTellQualitiesToo)
{
    Program run(kHost, arguments("run", controller_.port(),
                                 {"--format", "csv", "--changes", "--pass", "5"}));
    EXPECT_TRUE(run.showsOutput([](const QString& csv) { return csv.contains(",L.w,L.w,"); }));
    controller_.unplug();
    EXPECT_TRUE(run.showsOutput(
        [](const QString& csv) { return csv.contains(",stale,not connected to "); }));
    run.signal(SIGINT);
    EXPECT_EQ(0, run.waitForEnd());
}

TEST_F(HonestValues, APlainTableHasMarksAndNoColours)
{
    controller_.treat("f", Mood::refuses);
    Program run(kHost, arguments("run", controller_.port(), {"--interval", "50", "--pass", "5"}));
    EXPECT_TRUE(run.showsOutput([](const QString& text) {
        return text.contains("– !") && text.contains("bad: " + QString::fromStdString(kRefusal)) &&
               text.contains("which refuses what it is asked: exception 3 (illegal data value)");
    }));
    EXPECT_FALSE(run.output().contains('\x1b'));
    run.signal(SIGINT);
    EXPECT_EQ(0, run.waitForEnd());
}

} // namespace tavmir::host
