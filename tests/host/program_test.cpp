// tavmir-host as a user runs it, against the real controller.
#include "programs.h"

#include "link/test_server.h"
#include "support/child_process.h"
#include "support/temporary_folder.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>

#include <gmock/gmock.h>

#include <csignal>

namespace tavmir::host
{

namespace
{

const QString kHost = TAVMIR_HOST_PROGRAM;
const QString kSentByThenMs = "5000"; // a --timeout waited through; a request has gone by then

test::ProcessResult run(const QStringList& arguments)
{
    return test::runProcess(kHost, arguments);
}

// All values that a CSV run showed for the address.
QSet<QString> valuesOf(const QString& csv, const QString& address)
{
    QSet<QString> values;
    for (const QString& line : csv.split('\n')) {
        const QStringList cells = line.split(',');
        if (cells.size() == 7 && cells[2] == address) {
            values.insert(cells[3]);
        }
    }
    return values;
}

// A port that counts connections, to see that nothing was sent.
class SilentPort
{
public:
    SilentPort() : server_([](TestServer::Client&, const QByteArray&, int) {}) {}
    QString place() const { return QString("127.0.0.1:%1").arg(server_.port()); }
    int connections() const { return server_.connections(); }

private:
    TestServer server_;
};

} // namespace

TEST(HostProgram, RunShowsEachKindOfValueChanging)
{
    const Controller controller;
    Program host(kHost, hostArguments("run", controller.place(),
                                      {"--format", "csv", "--interval", "50", "--pass", "5"}));
    const QString moving[] = {"Main.Axis[0].Pos", "Main.Axis[0].Vel", "Main.Mode.b[5]", "Main.Temp",
                              "Main.Total"};
    EXPECT_TRUE(host.showsOutput([&](const QString& csv) {
        return std::all_of(std::begin(moving), std::end(moving), [&](const QString& address) {
            return valuesOf(csv, address).size() > 1;
        });
    }));
    EXPECT_EQ(
        0, run(hostArguments("write", controller.place(), {"Main.Title=Second title"})).exitStatus);
    EXPECT_TRUE(host.showsOutput([](const QString& csv) {
        return valuesOf(csv, "Main.Title").contains("Filling line 1") &&
               valuesOf(csv, "Main.Title").contains("Second title");
    }));
    host.signal(SIGINT);
    EXPECT_EQ(0, host.waitForEnd());
    EXPECT_TRUE(host.output().startsWith("time,name,address,value,age_ms,quality,reason\n"));
    EXPECT_TRUE(host.errors().contains("scans per second: "));
}

TEST(HostProgram, RunAsJsonIsOneObjectALineAndStatisticsAtTheEnd)
{
    const Controller controller;
    Program host(kHost, hostArguments("run", controller.place(),
                                      {"--format", "json", "--interval", "50", "--pass", "5"}));
    EXPECT_TRUE(
        host.showsOutput([](const QString& text) { return text.contains("\"Filling line 1\""); }));
    host.signal(SIGINT);
    EXPECT_EQ(0, host.waitForEnd());
    const QStringList lines = host.output().trimmed().split('\n');
    ASSERT_GE(lines.size(), 2);
    for (const QString& line : lines) {
        EXPECT_TRUE(QJsonDocument::fromJson(line.toUtf8()).isObject()) << line.toStdString();
    }
    const QJsonObject statistics =
        QJsonDocument::fromJson(lines.last().toUtf8()).object()["statistics"].toObject();
    for (const char* key : {"requests", "attempts", "replies", "scansPerSecond"}) {
        EXPECT_GT(statistics[key].toDouble(), 0) << key;
    }
    for (const char* key : {"minimumUs", "meanUs", "p99Us"}) {
        EXPECT_GT(statistics["roundTrip"].toObject()[key].toDouble(), 0) << key;
    }
    EXPECT_GE(statistics["requests"].toDouble(), statistics["replies"].toDouble());
    EXPECT_EQ(0, statistics["giveUps"].toDouble(-1));
}

TEST(HostProgram, RunPrintsPlainBlocksWithoutATerminal)
{
    const Controller controller;
    Program host(kHost,
                 hostArguments("run", controller.place(), {"--interval", "50", "--pass", "5"}));
    EXPECT_TRUE(
        host.showsOutput([](const QString& text) { return text.contains("Filling line 1"); }));
    host.signal(SIGTERM);
    EXPECT_EQ(0, host.waitForEnd());
    EXPECT_FALSE(host.output().contains('\x1b'));
    EXPECT_TRUE(host.output().contains("NAME"));
    EXPECT_TRUE(host.output().contains("statistics of "));
    EXPECT_TRUE(host.errors().contains("connected to " + controller.place()));
}

TEST(HostProgram, RunEndsByItselfAfterItsDuration)
{
    const auto result =
        run(hostArguments("run", QString("127.0.0.1:%1").arg(closedPort()), {"--duration", "0.2"}));
    EXPECT_EQ(1, result.exitStatus) << "it never got a connection";
    EXPECT_TRUE(result.output.contains("statistics of "));
    const Controller controller;
    // Only who got a connection meanwhile ends well: a busy machine needs longer for it.
    test::ProcessResult connected;
    for (const char* seconds : {"0.5", "5", "20"}) {
        connected = run(hostArguments("run", controller.place(), {"--duration", seconds}));
        if (connected.errors.contains("connected to " + controller.place())) {
            break;
        }
    }
    EXPECT_EQ(0, connected.exitStatus) << connected.errors.toStdString();
}

TEST(HostProgram, ValuesWrittenAreReadBack)
{
    const Controller controller;
    const auto written =
        run(hostArguments("write", controller.place(),
                          {"Main.Setpoint=7", "Main.Recipe[3]=0xDEADBEEF", "Main.Axis[2].Vel=-2.5",
                           "Main.Operator=Eve", "Main.Alarms[8]=1", "Main.Mode.b[2]=1",
                           "Main.Mode.b[3]=1", "Main.Setpoint=8"}));
    EXPECT_EQ(0, written.exitStatus) << written.errors.toStdString();
    EXPECT_EQ(
        "Main.Setpoint = 7: written\nMain.Recipe[3] = 0xDEADBEEF: written\nMain.Axis[2].Vel = "
        "-2.5: written\n"
        "Main.Operator = Eve: written\nMain.Alarms[8] = 1: written\nMain.Mode.b[2] = 1: written\n"
        "Main.Mode.b[3] = 1: written\nMain.Setpoint = 8: written\n",
        written.output.toStdString());
    const auto read = run(
        hostArguments("read", controller.place(),
                      {"Main.Setpoint", "Main.Recipe[3]", "Main.Axis[2].Vel", "Main.Operator",
                       "Main.Alarms[8]", "Main.Mode.b[2]", "Main.Mode.b[3]", "Main.Mode.b[0]"}));
    EXPECT_EQ(0, read.exitStatus) << read.errors.toStdString();
    EXPECT_EQ("Main.Setpoint = 8\nMain.Recipe[3] = 3735928559\nMain.Axis[2].Vel = "
              "-2.5\nMain.Operator = Eve\n"
              "Main.Alarms[8] = 1\nMain.Mode.b[2] = 1\nMain.Mode.b[3] = 1\nMain.Mode.b[0] = 1\n",
              read.output.toStdString());
    EXPECT_EQ("Main.Recipe[3] = 0xDEADBEEF\n",
              run(hostArguments("read", controller.place(), {"Main.Recipe[3]", "--as", "hex"}))
                  .output.toStdString());
}

TEST(HostProgram, ReadTakesArraysAndStructures)
{
    const Controller controller;
    const auto read = run(hostArguments("read", controller.place(),
                                        {"Main.Recipe", "Main.Axis[3]", "--format", "json"}));
    EXPECT_EQ(0, read.exitStatus);
    const QStringList lines = read.output.trimmed().split('\n');
    ASSERT_EQ(9, lines.size());
    EXPECT_EQ(R"({"address":"Main.Recipe[1]","ageMs":0,"name":"Main.Recipe[1]","quality":"good",)"
              R"("reason":null,"value":4000000000})",
              lines[1].toStdString());
    EXPECT_EQ(12345, QJsonDocument::fromJson(lines[4].toUtf8()).object()["value"].toInt());
}

TEST(HostProgram, WriteOfOneHostIsSeenByAnother)
{
    const Controller controller;
    Program watcher(kHost, hostArguments("run", controller.place(),
                                         {"--format", "csv", "--interval", "30", "--pass", "5"}));
    EXPECT_TRUE(watcher.showsOutput(
        [](const QString& csv) { return valuesOf(csv, "Main.Setpoint").contains("1500"); }));
    EXPECT_EQ(0,
              run(hostArguments("write", controller.place(), {"Main.Setpoint=4711"})).exitStatus);
    EXPECT_TRUE(watcher.showsOutput(
        [](const QString& csv) { return valuesOf(csv, "Main.Setpoint").contains("4711"); }));
    watcher.signal(SIGTERM);
    EXPECT_EQ(0, watcher.waitForEnd());
}

TEST(HostProgram, ControllerGoneAndBackResumesPollingAndReportsEachFailedWriteOnce)
{
    auto controller = std::make_unique<Controller>();
    const int port = controller->port();
    const QString place = controller->place();
    Program host(kHost, hostArguments("run", place,
                                      {"--format", "csv", "--interval", "30", "--pass", "5",
                                       "--stdin", "--timeout", "4000"}));
    EXPECT_TRUE(host.showsOutput(
        [](const QString& csv) { return valuesOf(csv, "Main.Setpoint").contains("1500"); }));
    host.type("Main.Setpoint=1");
    EXPECT_TRUE(host.showsError("Main.Setpoint = 1: written"));

    controller.reset();
    EXPECT_TRUE(host.showsError("lost " + place));
    host.type("Main.Setpoint=2");
    host.type("Main.Mode.b[9]=1");
    host.type("Main.Operator=lost");
    EXPECT_TRUE(host.showsError("Main.Operator = lost: not sent: "));

    controller = std::make_unique<Controller>(port);
    ASSERT_EQ(port, controller->port());
    EXPECT_TRUE(host.showsOutput([](const QString& csv) { // the new controller starts afresh
        return csv.lastIndexOf(",Main.Setpoint,1500,") > csv.lastIndexOf(",Main.Setpoint,1,");
    }));
    host.type("Main.Setpoint=3");
    host.type("Main.Setpoint");
    EXPECT_TRUE(host.showsError("Main.Setpoint = 3: read"));
    host.signal(SIGINT);
    EXPECT_EQ(1, host.waitForEnd()) << "three writes were not done";
    for (const char* once :
         {"Main.Setpoint = 2: not sent: no connection to the controller: ",
          "Main.Mode.b[9] = 1: not sent: its word could not be read: not sent: no connection to ",
          "Main.Operator = lost: not sent: no connection to the controller: ",
          "Main.Setpoint = 3: written\n"}) {
        EXPECT_EQ(1, host.errors().count(once)) << once << host.errors().toStdString();
    }
    EXPECT_EQ(2, host.errors().count("connected to " + place + "\n"));
    EXPECT_EQ(1, host.errors().count("lost " + place));
}

TEST(HostProgram, LinesThatAreNoCommandAreRefusedAndTheRunGoesOn)
{
    const Controller controller;
    Program host(kHost, hostArguments("run", controller.place(),
                                      {"--format", "csv", "--pass", "5", "--stdin"}));
    host.type("Main.Nope=1");
    host.type("Main.Setpoint=x");
    host.type("Main.Other");
    host.type("");
    host.type("Main.Title");
    EXPECT_TRUE(host.showsError("Main.Title = Filling line 1: read"));
    EXPECT_TRUE(host.errors().contains("address \"Main.Nope\": label Main has no variable Nope"));
    EXPECT_TRUE(host.errors().contains("\"x\" is not a value of Main.Setpoint: unsigned, 0 to "));
    EXPECT_TRUE(host.errors().contains("address \"Main.Other\": label Main has no variable Other"));
    host.signal(SIGINT);
    EXPECT_EQ(1, host.waitForEnd()) << "two of them were writes";
}

TEST(HostProgram, SignalEndsARunWithStatisticsAlsoWithoutAController)
{
    const QString place = QString("127.0.0.1:%1").arg(closedPort());
    for (const int number : {SIGINT, SIGTERM}) {
        Program host(kHost, hostArguments("run", place));
        EXPECT_TRUE(
            host.showsError("cannot connect to " + place + ": Connection refused; trying again"));
        EXPECT_TRUE(host.showsOutput([](const QString& text) { return text.contains("never"); }));
        host.signal(number);
        EXPECT_EQ(1, host.waitForEnd());
        EXPECT_TRUE(host.output().contains("failed connects: "));
        EXPECT_EQ(1, host.errors().count("cannot connect"));
    }
}

TEST(HostProgram, AbsentControllerFailsEachReadAndWriteWithOneLine)
{
    const QString place = QString("127.0.0.1:%1").arg(closedPort());
    const auto written =
        run(hostArguments("write", place, {"Main.Setpoint=1", "Main.Title=x", "Main.Mode.b[1]=1"}));
    EXPECT_EQ(1, written.exitStatus);
    EXPECT_EQ("", written.output.toStdString());
    const QString why =
        QString("no connection to the controller: %1: Connection refused\n").arg(place);
    EXPECT_EQ(QString("tavmir-host: Main.Setpoint = 1: not sent: %1"
                      "tavmir-host: Main.Title = x: not sent: %1"
                      "tavmir-host: Main.Mode.b[1] = 1: not sent: its word could not be read: not "
                      "sent: %1")
                  .arg(why)
                  .toStdString(),
              written.errors.toStdString());
    const auto read = run(hostArguments("read", place, {"Main.Setpoint", "Main.Title"}));
    EXPECT_EQ(1, read.exitStatus);
    EXPECT_EQ(QString("tavmir-host: Main.Setpoint: not read: %1"
                      "tavmir-host: Main.Title: not read: %1")
                  .arg(why)
                  .toStdString(),
              read.errors.toStdString());
}

TEST(HostProgram, ControllerThatNeverAnswersTimesOut)
{
    const SilentPort port;
    const auto written =
        run(hostArguments("write", port.place(), {"Main.Setpoint=1", "--timeout", kSentByThenMs}));
    EXPECT_EQ(1, written.exitStatus);
    EXPECT_EQ("tavmir-host: Main.Setpoint = 1: unknown: no answer in its time, and it is still "
              "under way\n",
              written.errors.toStdString());
    const auto givenUp =
        run({"write", TAVMIR_EXAMPLE_PROJECT, "--connect", port.place(), "Main.Setpoint=1"});
    EXPECT_EQ(1, givenUp.exitStatus);
    EXPECT_EQ(
        "tavmir-host: Main.Setpoint = 1: unknown: the controller did not answer within 500 ms\n",
        givenUp.errors.toStdString());
}

TEST(HostProgram, BadInputIsOneLineAndNothingIsSent)
{
    const SilentPort port;
    const test::TemporaryFolder folder;
    const QString malformed =
        QString::fromStdString(folder.writeFile("bad.json", "{\n  \"labels\": [,]\n}"));
    const QString unknown =
        QString::fromStdString(folder.writeFile("unknown.json", "{ \"lables\": [] }"));
    const struct {
        QStringList arguments;
        const char* message;
    } cases[] = {
        {{}, "a command is missing: run, read, write, check, explain, diagnose, export or replay"},
        {{"poll"},
         "unknown command poll: run, read, write, check, explain, diagnose, export or replay"},
        {{"run"}, "usage: tavmir-host run PROJECT"},
        {{"run", "/nonexistent/p.json"},
         "/nonexistent/p.json: cannot be read: No such file or directory"},
        {{"run", malformed}, "bad.json: line 2, column 1"},
        {{"read", unknown, "A.b"}, "unknown.json: lables: unknown key; known here: "},
        {hostArguments("run", port.place(), {"--frob"}), "Unknown option 'frob'."},
        {hostArguments("run", port.place(), {"extra"}), "usage: tavmir-host run PROJECT"},
        {hostArguments("run", "nowhere"), "--connect nowhere: must be HOST:PORT"},
        {hostArguments("read", port.place()), "usage: tavmir-host read PROJECT ADDRESS..."},
        {hostArguments("read", port.place(), {"Main.Nope"}),
         "address \"Main.Nope\": label Main has no variable Nope"},
        {hostArguments("read", port.place(), {"Main.Run", "--as", "text"}),
         "address \"Main.Run\": not shown as text"},
        {hostArguments("write", port.place(), {"Main.Setpoint=1", "Main.Setpoint=65536"}),
         "\"65536\" is not a value of Main.Setpoint: unsigned, 0 to 65535\n"},
        {hostArguments("write", port.place(), {"Main.Setpoint"}),
         "Main.Setpoint: a write is ADDRESS=VALUE"},
        {hostArguments("write", port.place(), {"Main.Axis[7].Pos=1"}),
         "index 7 of Main.Axis is outside 0..3"},
        {hostArguments("write", port.place(), {"Main.Temp=warm"}),
         "\"warm\" is not a value of Main.Temp: float, "},
        {hostArguments("run", port.place(), {"--driver", "/nonexistent.so"}),
         "cannot load the driver: "},
    };
    for (const auto& one : cases) {
        const auto result = run(one.arguments);
        const std::string shown =
            one.arguments.join(' ').toStdString() + ": " + result.errors.toStdString();
        EXPECT_TRUE(result.finished) << shown;
        EXPECT_EQ(2, result.exitStatus) << shown;
        EXPECT_EQ("", result.output.toStdString()) << shown;
        EXPECT_EQ(1, result.errors.count('\n')) << shown;
        EXPECT_TRUE(result.errors.startsWith("tavmir-host: ")) << shown;
        EXPECT_TRUE(result.errors.contains(one.message)) << shown;
    }
    EXPECT_EQ(0, port.connections());
}

TEST(HostProgram, DriverWithoutEntryPointsIsNamedEntryPointByEntryPoint)
{
    const auto result = run({"run", TAVMIR_EXAMPLE_PROJECT, "--driver", TAVMIR_EMPTY_LIBRARY});
    EXPECT_EQ(2, result.exitStatus);
    EXPECT_EQ(18, result.errors.count("has no entry point "));
    EXPECT_TRUE(result.errors.contains("has no entry point ReCreatReadVarList\n"));
    EXPECT_TRUE(result.errors.contains("has no entry point Ethernetcontains(int)\n"));
}

TEST(HostProgram, ExplainSaysWhatAddressesMean)
{
    const auto result = run(
        {"explain", TAVMIR_EXAMPLE_PROJECT, "Main.Axis[1].Pos", "Main.Mode.b[5]", "Main.Axis[2]"});
    EXPECT_EQ(0, result.exitStatus) << result.errors.toStdString();
    EXPECT_TRUE(result.output.startsWith(
        "Main.Axis[1].Pos\n  driver's result 0: resolved\n"
        "  Main.Axis[1].Pos: dword (type 6) at bit address 1112, shown as signed\n"))
        << result.output.toStdString();
    EXPECT_TRUE(
        result.output.contains("Main.Mode.b[5]: word (type 4) at bit address 3000, bit 5 of it, "
                               "shown as bit\n"));
    EXPECT_TRUE(result.output.contains("  stands for 5 elements\n"));
    EXPECT_FALSE(result.output.contains("BUT"));

    const auto refused = run({"explain", TAVMIR_EXAMPLE_PROJECT, "Other.X", "Main.Run"});
    EXPECT_EQ(2, refused.exitStatus);
    EXPECT_TRUE(refused.output.contains("driver's result 2: no such label\n"));
    EXPECT_TRUE(
        refused.output.contains("Main.Run: bit (type 1) at bit address 100, shown as bit\n"));
    EXPECT_EQ("tavmir-host: does not resolve: \"Other.X\"\n", refused.errors.toStdString());
}

TEST(HostProgram, ExplainWithoutAddressesIsThePlanOfRequests)
{
    const test::TemporaryFolder folder;
    const QString project = QString::fromStdString(folder.writeFile("plan.json", R"({
      "labels": [ { "name": "L", "variables": [
        { "name": "b", "type": "bit", "address": 1 },
        { "name": "w", "type": "word", "address": 1600, "array": { "bounds": [[0, 39]] } },
        { "name": "t", "type": "text", "address": 16000, "words": 3 } ] } ],
      "polled": [ { "address": "L.w" }, { "address": "L.b" }, { "address": "L.t", "name": "title" } ] })"));
    const auto result = run({"explain", project});
    EXPECT_EQ(0, result.exitStatus) << result.errors.toStdString();
    const QStringList lines = result.output.split('\n');
    ASSERT_GE(lines.size(), 10);
    EXPECT_EQ("42 variables, 44 elements on the wire, 3 requests a pass", lines[0].toStdString());
    EXPECT_EQ("request 1: function 'd', 1 bit of station 1, 13 bytes out, 14 back",
              lines[1].toStdString());
    EXPECT_EQ("  variables: L.b", lines[2].toStdString());
    EXPECT_EQ("  ends because the next element has another data type", lines[3].toStdString());
    EXPECT_EQ("request 2: function 'f', 38 words of station 1, 161 bytes out, 237 back",
              lines[4].toStdString());
    EXPECT_EQ("  ends because the byte budget of a request is used up", lines[6].toStdString());
    EXPECT_EQ("request 3: function 'f', 5 words of station 1, 29 bytes out, 39 back",
              lines[7].toStdString());
    EXPECT_EQ("  variables: L.w[38], L.w[39], title (3 of 3 words)", lines[8].toStdString());
    EXPECT_EQ("  ends because the polled list is through", lines[9].toStdString());
    EXPECT_EQ("text title: polled as 3 words, L.t~words", lines[10].toStdString());
}

TEST(HostProgram, HelpAndVersion)
{
    for (const QStringList& arguments :
         {QStringList{"--help"}, QStringList{"--version"}, QStringList{"run", "--help"},
          QStringList{"write", "--version"}}) {
        const auto result = run(arguments);
        EXPECT_EQ(0, result.exitStatus);
        EXPECT_TRUE(result.output.contains("tavmir-host"));
        EXPECT_EQ("", result.errors.toStdString());
    }
    const QString help = run({"run", "--help"}).output;
    for (const char* option :
         {"--duration", "--interval", "--format", "--driver", "--log", "--connect", "--stdin"}) {
        EXPECT_TRUE(help.contains(option)) << option;
    }
}

} // namespace tavmir::host
