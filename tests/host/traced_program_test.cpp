// tavmir-host --trace as a user runs it: the kinds of lines, made by the controller's faults, and
// where they go.
#include "programs.h"

#include "link/test_server.h"
#include "support/child_process.h"
#include "support/temporary_folder.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QRegularExpression>

#include <gtest/gtest.h>

#include <csignal>

namespace tavmir::host
{

namespace
{

const QString kHost = TAVMIR_HOST_PROGRAM;

// One polled word, and a host that does not wait long.
QString impatientProject()
{
    static const test::TemporaryFolder folder;
    return QString::fromStdString(folder.writeFile("plant.json", R"({
  "connection": { "host": "127.0.0.1", "port": 5020, "connectTimeoutMs": 20000,
                  "replyTimeoutMs": 300, "reconnectMinMs": 20, "reconnectMaxMs": 100,
                  "retryLimit": 5, "passMs": 50 },
  "labels": [ { "name": "Main", "variables": [
    { "name": "Level", "type": "word", "address": 160, "format": "hex" } ] } ],
  "polled": [ { "address": "Main.Level" } ],
  "initial": [ { "address": "Main.Level", "value": 1500 } ]
})"));
}

// Runs until a line of its trace matches.
testing::AssertionResult traces(const QString& place, const QString& pattern)
{
    Program host(kHost, {"run", impatientProject(), "--connect", place, "--format", "csv",
                         "--trace", "--duration", "30"});
    const QRegularExpression line("^\\S+Z connection " + pattern + "$",
                                  QRegularExpression::MultilineOption);
    QString text;
    const bool found = host.showsErrors([&](const QString& errors) {
        text = errors;
        return errors.contains(line);
    });
    return found ? testing::AssertionSuccess()
                 : testing::AssertionFailure() << pattern.toStdString() << " is not in\n"
                                               << text.left(4000).toStdString();
}

struct TracedFault {
    const char* name;
    QStringList options;
    const char* line; // behind "connection "
};

void PrintTo(const TracedFault& fault, std::ostream* stream)
{
    *stream << fault.name;
}

const char kTitle[] = "#\\d+ station 1 read words: ";

class TracedFaults : public testing::TestWithParam<TracedFault>
{
};

} // namespace

TEST_P(TracedFaults, HaveALineOfTheirOwn)
{
    const Controller controller(0, impatientProject(), GetParam().options);
    EXPECT_TRUE(traces(controller.place(), QString(GetParam().line).replace("TITLE", kTitle)));
}

INSTANTIATE_TEST_SUITE_P(
    Each, TracedFaults,
    testing::Values(
        TracedFault{"none", {}, "1 < TITLEMain.Level=0x05DC \\(\\+\\d+\\.\\d{3} ms\\)"},
        TracedFault{"drop",
                    {"--fault", "drop@2"},
                    "1 - TITLEthe controller did not answer within 300 ms \\(\\+\\d+\\.\\d{3} "
                    "ms\\)"},
        TracedFault{"again", {"--fault", "lose@2"}, "1 > TITLEMain.Level \\[attempt 2\\]"},
        TracedFault{"late",
                    {"--fault", "late@2", "--late-ms", "700"},
                    "1 < TITLEMain.Level=0x05DC \\[late\\] \\(\\+\\d{3,}\\.\\d{3} ms\\)"},
        TracedFault{"duplicate",
                    {"--fault", "duplicate@2"},
                    "1 < TITLEMain.Level=0x05DC \\[duplicate\\] \\(\\+\\d+\\.\\d{3} ms\\)"},
        TracedFault{"cut", {"--fault", "cut@2", "--seed", "1"}, "1 < .* \\[cut\\]( .*)?"},
        TracedFault{"cutOff",
                    {"--fault", "cut@2", "--seed", "1"},
                    "1 - TITLEthe controller's reply was cut off .*"},
        TracedFault{"oversize", {"--fault", "oversize@2"}, "1 < TITLE.*\\[wrong length: .*\\] .*"},
        TracedFault{"exception",
                    {"--refuse", "Main.Level=4"},
                    "1 < TITLEexception 4 \\(device failure\\) .*"},
        TracedFault{
            "garble", {"--fault", "garble%2"}, "1 < TITLEMain.Level=0x(?!05DC)[0-9A-F]{4} .*"},
        TracedFault{"disconnect",
                    {"--fault", "disconnect@2"},
                    "1 - the connection was lost: the controller closed the connection"},
        TracedFault{"reconnect",
                    {"--fault", "disconnect@2"},
                    "2 - connected to 127\\.0\\.0\\.1:\\d+ from 127\\.0\\.0\\.1:\\d+"},
        TracedFault{"refuse",
                    {"--fault", "refuse@2", "--refuse-ms", "2000"},
                    "1 - cannot connect: 127\\.0\\.0\\.1:\\d+: Connection refused"},
        TracedFault{"silentStation",
                    {"--stations", "9", "--unknown-stations", "silent"},
                    "1 - given up after \\d+ attempts?"}),
    [](const testing::TestParamInfo<TracedFault>& fault) { return std::string(fault.param.name); });

TEST(TracedProgram, AForeignReplyAndBytesOfNoFrameHaveLines)
{
    TestServer foreign([](TestServer::Client& client, const QByteArray& request, int) {
        QByteArray reply = goodReply(request, 1);
        reply[0] = static_cast<char>(reply[0] ^ 0x40); // another transaction
        client.send(reply);
    });
    EXPECT_TRUE(traces(QString("127.0.0.1:%1").arg(foreign.port()),
                       "1 < #\\d+ station 1 read words: Main.Level=0x0001 \\[foreign\\]"));
    TestServer noise([](TestServer::Client& client, const QByteArray&, int) {
        client.send("HTTP/1.1 400 Bad Request\r\n");
    });
    EXPECT_TRUE(traces(QString("127.0.0.1:%1").arg(noise.port()), "1 < 26 bytes \\[no frame\\]"));
}

TEST(TracedProgram, WithoutAControllerNothingIsSent)
{
    EXPECT_TRUE(traces(QString("127.0.0.1:%1").arg(closedPort()),
                       "0 - cannot connect: 127\\.0\\.0\\.1:\\d+: Connection refused"));
}

TEST(TracedProgram, SaysOfFramesWhatTheControllerSays)
{
    Controller controller(0, TAVMIR_EXAMPLE_PROJECT, {"--trace"});
    const auto host =
        test::runProcess(kHost, hostArguments("write", controller.place(),
                                              {"Main.Title=Filling", "Main.Temp=-2.5",
                                               "Main.Mode.b[2]=1", "--read-back", "--trace"}));
    EXPECT_EQ(0, host.exitStatus) << host.errors.toStdString();
    controller.signal(SIGINT);
    controller.waitForEnd();
    const auto frames = [](const QString& text) {
        QStringList lines;
        for (const QString& line : text.split('\n')) {
            const QString frame = line.section(' ', 3); // behind stamp and connection
            if (frame.startsWith('>') || frame.startsWith('<')) {
                lines << QString(frame).remove(QRegularExpression(" \\(\\+.*ms\\)$"));
            }
        }
        return lines.join('\n').toStdString();
    };
    EXPECT_NE(std::string::npos, frames(host.errors).find("write words: Main.Title=\"Filling"));
    EXPECT_NE(std::string::npos, frames(host.errors).find("write double words: Main.Temp=-2.5"));
    EXPECT_EQ(frames(controller.output()), frames(host.errors));
}

TEST(TracedProgram, ReadAndWriteTraceToStandardErrorAndStandardOutputStaysItself)
{
    const Controller controller;
    const auto read = test::runProcess(
        kHost, hostArguments("read", controller.place(),
                             {"Main.Setpoint", "--format", "json", "--trace=hex"}));
    EXPECT_EQ(0, read.exitStatus);
    EXPECT_TRUE(QJsonDocument::fromJson(read.output.toUtf8()).isObject())
        << read.output.toStdString();
    EXPECT_TRUE(read.errors.contains(QRegularExpression(
        " < #\\d+ station 1 read words: Main.Setpoint=1500 \\(\\+\\S+ ms\\) \\| 00 .* 05 dc\n")))
        << read.errors.toStdString();
    EXPECT_TRUE(read.errors.contains(" - the host closed the connection\n") ||
                read.errors.endsWith(" dc\n"));
}

TEST(TracedProgram, AFileTakesTheTrace)
{
    const test::TemporaryFolder folder;
    const QString file = QString::fromStdString(folder.writeFile("trace.txt", ""));
    const Controller controller;
    const auto read = test::runProcess(
        kHost, hostArguments("read", controller.place(), {"Main.Setpoint", "--trace=" + file}));
    EXPECT_EQ(0, read.exitStatus);
    EXPECT_EQ("", read.errors.toStdString());
    QFile written(file);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_TRUE(QString(written.readAll()).contains("read words: Main.Setpoint=1500 (+"));
}

TEST(TracedProgram, AFileThatCannotBeWrittenIsSaidBeforeAnythingIsSent)
{
    TestServer controller([](TestServer::Client&, const QByteArray&, int) {});
    const auto bad = test::runProcess(
        kHost, hostArguments("write", QString("127.0.0.1:%1").arg(controller.port()),
                             {"Main.Setpoint=1", "--trace=/nowhere/trace.txt"}));
    EXPECT_EQ(2, bad.exitStatus);
    EXPECT_EQ("tavmir-host: --trace=/nowhere/trace.txt: No such file or directory\n",
              bad.errors.toStdString());
    EXPECT_EQ(0, controller.connections());
}

TEST(TracedProgram, AFullDiskIsSaidOnceAndTheRunGoesOn)
{
    const Controller controller;
    Program host(kHost, hostArguments("run", controller.place(),
                                      {"--format", "csv", "--pass", "5", "--interval", "50",
                                       "--trace=/dev/full"}));
    EXPECT_TRUE(host.showsError("the trace cannot be written: No space left on device"));
    const int before = host.output().size();
    EXPECT_TRUE(host.showsOutput([&](const QString& text) { return text.size() > before + 2000; }));
    host.signal(SIGINT);
    EXPECT_EQ(0, host.waitForEnd());
    EXPECT_EQ(1, host.errors().count("the trace cannot be written"));
}

} // namespace tavmir::host
