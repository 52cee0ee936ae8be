// The program itself: what it prints, what it refuses, and its exit statuses.
#include "frames.h"
#include "support/child_process.h"
#include "support/temporary_folder.h"
#include "test_client.h"

#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtNetwork/QTcpServer>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/types.h>

using namespace tavmir::test;

namespace
{

const QString kProgram = TAVMIR_CONTROLLER_PROGRAM;

const char kPlant[] = R"({
  "connection": { "host": "127.0.0.1", "port": 5020, "station": 2 },
  "labels": [ { "name": "Main", "variables": [
    { "name": "W", "type": "word", "address": 3000 },
    { "name": "Moving", "type": "dword", "address": 4000 } ] } ],
  "polled": [ { "address": "Main.W" } ],
  "initial": [ { "address": "Main.W", "value": 4660 } ],
  "signals": [ { "address": "Main.Moving", "signal": "counter",
                 "low": 0, "high": 1000000, "periodMs": 1 } ]
})";

// The running controller; killed at the end if it still runs.
class Running
{
public:
    explicit Running(const QStringList& arguments)
    {
        haveApplication();
        process_.start(kProgram, QStringList{"--listen", "127.0.0.1:0"} + arguments);
        const bool ready = turnUntil(
            [this] { return process_.canReadLine() || process_.state() == QProcess::NotRunning; });
        const QString line = QString::fromUtf8(process_.readLine()).trimmed();
        const QString start = "listening on 127.0.0.1:";
        if (ready && line.startsWith(start)) {
            port_ = line.midRef(start.size()).toUShort();
        }
    }

    ~Running()
    {
        process_.kill();
        process_.waitForFinished();
    }

    quint16 port() const { return port_; }

    // The exit status, or -1 when it crashed or did not end.
    int stopWith(int signal)
    {
        ::kill(static_cast<pid_t>(process_.processId()), signal);
        if (!turnUntil([this] { return process_.state() == QProcess::NotRunning; })) {
            return -1;
        }
        return process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
    }

    QString output() { return QString::fromUtf8(process_.readAllStandardOutput()); }
    QString errors() { return QString::fromUtf8(process_.readAllStandardError()); }

private:
    QProcess process_;
    quint16 port_ = 0;
};

ProcessResult run(const QStringList& arguments)
{
    haveApplication();
    return runProcess(kProgram, arguments);
}

} // namespace

TEST(ControllerProgram, PrintsItsStatisticsWhenSigtermEndsIt)
{
    Running controller({"--fault", "duplicate@2"});
    ASSERT_NE(controller.port(), 0);
    TestClient client;
    ASSERT_TRUE(client.connectTo(controller.port()));
    EXPECT_EQ(client.exchange(writeFrame(1, 1, 103, {{16, hex("3412")}}), 9).size(), 9);
    EXPECT_EQ(client.exchange(readFrame(2, 1, 102, {16}), 30).right(2), hex("1234"));
    EXPECT_EQ(controller.stopWith(SIGTERM), 0);
    const QString output = controller.output();
    for (const char* line :
         {"requests: 2\n", "requests to write words: 1\n", "requests to read words: 1\n",
          "elements read: 1\n", "elements written: 1\n", "faults: 1\n", "faults duplicate: 1\n",
          "clients: 1\n", "bytes received: 28\n", "bytes sent: 39\n"}) {
        EXPECT_TRUE(output.contains(line)) << line << output.toStdString();
    }
    EXPECT_EQ(controller.errors(), QString());
}

TEST(ControllerProgram, EndsTheSameWayOnSigint)
{
    Running controller({});
    ASSERT_NE(controller.port(), 0);
    EXPECT_EQ(controller.stopWith(SIGINT), 0);
    EXPECT_TRUE(controller.output().startsWith("requests: 0\n"));
}

TEST(ControllerProgram, TakesNamesValuesAndSignalsFromTheProject)
{
    const TemporaryFolder folder;
    const std::string file = folder.writeFile("plant.json", kPlant);
    Running controller({"--trace", "--project", QString::fromStdString(file)});
    ASSERT_NE(controller.port(), 0);
    TestClient client;
    ASSERT_TRUE(client.connectTo(controller.port()));
    EXPECT_EQ(client.exchange(readFrame(1, 2, 102, {3000}), 15).right(2), hex("1234"));
    QByteArray moving = hex("00000000");
    EXPECT_TRUE(turnUntil([&] {
        moving = client.exchange(readFrame(2, 2, 108, {4000}), 17).right(4);
        return moving != hex("00000000");
    }));
    EXPECT_TRUE(turnUntil(
        [&] { return client.exchange(readFrame(3, 2, 108, {4000}), 17).right(4) != moving; }));
    EXPECT_EQ(controller.stopWith(SIGTERM), 0);
    const QString time = "20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z";
    const QRegularExpression lines("^" + time + " client 1 > #1 station 2 read words: Main\\.W\n" +
                                   time + " client 1 < #1 station 2 read words: Main\\.W=4660\n");
    EXPECT_TRUE(controller.output().contains(lines));
}

TEST(ControllerProgram, LogsAClosedStreamOnStandardError)
{
    Running controller({});
    ASSERT_NE(controller.port(), 0);
    TestClient client;
    ASSERT_TRUE(client.connectTo(controller.port()));
    client.send("hello, who is there?");
    EXPECT_TRUE(client.seesTheEnd());
    EXPECT_EQ(controller.stopWith(SIGTERM), 0);
    const QString errors = controller.errors();
    EXPECT_TRUE(errors.startsWith("tavmir-controller: client 1 (127.0.0.1 port "));
    EXPECT_EQ(errors.count('\n'), 1);
}

TEST(ControllerProgram, WarnsWhenOthersThanThisMachineShallReachIt)
{
    // An address for documents, which no machine has: nothing is opened to others here.
    const ProcessResult result = run({"--listen", "192.0.2.77:0"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains(
        "warning: the protocol knows no passwords; whoever reaches this address"));
    EXPECT_TRUE(result.errors.contains("cannot listen on 192.0.2.77:0: "));
}

TEST(ControllerProgram, APortInUseIsStatus1)
{
    haveApplication();
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress(QHostAddress::LocalHost), 0));
    const QString endpoint = QString("127.0.0.1:%1").arg(other.serverPort());
    const ProcessResult result = run({"--listen", endpoint});
    EXPECT_TRUE(result.finished);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, QString());
    EXPECT_TRUE(result.errors.startsWith(
        QString("tavmir-controller: cannot listen on %1: ").arg(endpoint)));
    EXPECT_EQ(result.errors.count('\n'), 1);
}

TEST(ControllerProgram, ABadCommandLineIsStatus2)
{
    const std::vector<QStringList> bad = {
        {"--listen", "nowhere"}, {"--fault", "boom@1"}, {"--seed", "x"}, {"--nothing"}, {"extra"}};
    for (const QStringList& arguments : bad) {
        const ProcessResult result = run(arguments);
        EXPECT_TRUE(result.finished);
        EXPECT_EQ(result.exitStatus, 2) << arguments.join(' ').toStdString();
        EXPECT_EQ(result.output, QString());
        EXPECT_TRUE(result.errors.startsWith("tavmir-controller: "));
        EXPECT_EQ(result.errors.count('\n'), 1) << result.errors.toStdString();
    }
}

TEST(ControllerProgram, ABadProjectIsStatus2)
{
    const TemporaryFolder folder;
    const std::string broken = folder.writeFile("broken.json", "{ \"labels\": [ }");
    const std::string tooWide =
        folder.writeFile("wide.json", QByteArray(kPlant).replace("4660", "70000").toStdString());
    for (const std::string& file : {folder.pathOf("missing.json"), broken, tooWide}) {
        const ProcessResult result =
            run({"--listen", "127.0.0.1:0", "--project", QString::fromStdString(file)});
        EXPECT_TRUE(result.finished);
        EXPECT_EQ(result.exitStatus, 2) << file;
        EXPECT_EQ(result.output, QString());
        EXPECT_TRUE(result.errors.contains(QString::fromStdString(file))) << file;
        EXPECT_EQ(result.errors.count('\n'), 1) << result.errors.toStdString();
    }
}

TEST(ControllerProgram, LacksTheAddressesThatItIsTold)
{
    const TemporaryFolder folder;
    const QString file = QString::fromStdString(folder.writeFile("plant.json", kPlant));
    Running controller(
        {"--project", file, "--refuse", "Main.W=2", "--refuse", "bit:7=3", "--stations", "1,2"});
    ASSERT_NE(controller.port(), 0);
    TestClient client;
    ASSERT_TRUE(client.connectTo(controller.port()));
    EXPECT_EQ(client.exchange(readFrame(1, 2, 102, {3000}), 9), frame(1, 2, 102 | 0x80, 2));
    EXPECT_EQ(client.exchange(readFrame(2, 1, 100, {7}), 9), frame(2, 1, 100 | 0x80, 3));
    EXPECT_EQ(client.exchange(readFrame(3, 9, 102, {0}), 9), frame(3, 9, 102 | 0x80, 11));
    EXPECT_EQ(client.exchange(readFrame(4, 2, 102, {3016}), 15).size(), 15);
    EXPECT_EQ(controller.stopWith(SIGTERM), 0);
    const QString output = controller.output();
    for (const char* line : {"requests to unknown stations: 1\n",
                             "requests to refused addresses: 2\n", "exceptions of code 11: 1\n"}) {
        EXPECT_TRUE(output.contains(line)) << line << output.toStdString();
    }
}

TEST(ControllerProgram, AnAddressToRefuseThatIsNoneIsStatus2)
{
    const TemporaryFolder folder;
    const QString file = QString::fromStdString(folder.writeFile("plant.json", kPlant));
    for (const QStringList& arguments :
         {QStringList{"--refuse", "Main.W=2"},
          QStringList{"--refuse", "Main.Nothing=2", "--project", file}}) {
        const ProcessResult result = run(QStringList{"--listen", "127.0.0.1:0"} + arguments);
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_EQ(result.output, QString());
        EXPECT_TRUE(result.errors.startsWith("tavmir-controller: --refuse: "));
        EXPECT_EQ(result.errors.count('\n'), 1) << result.errors.toStdString();
    }
}

TEST(ControllerProgram, ABadScriptIsStatus2AndSaysItsLine)
{
    const TemporaryFolder folder;
    const std::string file = folder.writeFile("bad.script", "calm for=1s\nlate twice\n");
    const ProcessResult result =
        run({"--listen", "127.0.0.1:0", "--check-host", QString::fromStdString(file)});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.output, QString());
    EXPECT_TRUE(result.errors.startsWith(
        QString("tavmir-controller: %1:2: \"twice\" is nothing that \"late\" takes: ")
            .arg(QString::fromStdString(file))))
        << result.errors.toStdString();
    const ProcessResult missing = run({"--check-host", "/nowhere/a.script"});
    EXPECT_EQ(missing.exitStatus, 2);
    EXPECT_TRUE(missing.errors.startsWith("tavmir-controller: /nowhere/a.script: "));
}

TEST(ControllerProgram, NobodyCanBeJudgedWhereNobodyCanListen)
{
    const TemporaryFolder folder;
    const QString file = QString::fromStdString(folder.writeFile("one.script", "calm\n"));
    const ProcessResult result = run({"--listen", "192.0.2.77:0", "--check-host", file});
    EXPECT_EQ(result.exitStatus, 3);
}

TEST(ControllerProgram, AJudgementThatIsInterruptedIsNotFinished)
{
    const TemporaryFolder folder;
    const QString file = QString::fromStdString(folder.writeFile("one.script", "calm\n"));
    Running controller({"--check-host", file});
    ASSERT_NE(controller.port(), 0);
    TestClient client;
    ASSERT_TRUE(client.connectTo(controller.port()));
    EXPECT_EQ(client.exchange(readFrame(1, 1, 102, {16}), 15).size(), 15);
    EXPECT_EQ(client.exchange(readFrame(2, 1, 102, {16}), 15).size(), 15);
    EXPECT_EQ(controller.stopWith(SIGTERM), 3);
    const QString output = controller.output();
    EXPECT_TRUE(output.contains("frame-header          kept        2 times\n"))
        << output.toStdString();
    EXPECT_TRUE(output.contains("result: not finished (")) << output.toStdString();
    EXPECT_TRUE(controller.errors().contains("tavmir-controller: [1/1] calm\n"));
}

TEST(ControllerProgram, PrintsItsVersion)
{
    const ProcessResult result = run({"--version"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "tavmir-controller " TAVMIR_VERSION "\n");
    EXPECT_EQ(result.errors, QString());
}

TEST(ControllerProgram, PrintsItsHelp)
{
    const ProcessResult result = run({"--help"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(result.output.contains("--listen <HOST:PORT>"));
    EXPECT_EQ(result.errors, QString());
}
