// The command line of each command.
#include "host/command_line.h"

#include <QtCore/QCoreApplication>

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

const CommandDescription kAll = {"all",
                                 "[ADDRESS...]",
                                 "Everything.",
                                 kOutputOption | kFormatOption | kTimeoutOption | kRunOptions |
                                     kWriteOptions | kNamesOption | kTraceOption | kCaptureOptions |
                                     kRecordOptions | kPageOptions,
                                 0,
                                 2};

std::string problem(const QStringList& arguments)
{
    return parseCommandLine(kAll, QStringList("host") + arguments).problem.toStdString();
}

} // namespace

TEST(CommandLines, ACaptureIsOneFileOrARing)
{
    const auto capture = [](const QStringList& options) {
        const CommandLine line =
            parseCommandLine(kAll, QStringList{"host", "p.json"} + options).line;
        return QString("%1 %2 %3")
            .arg(QString::fromStdString(line.capture.file))
            .arg(line.capture.limitBytes)
            .arg(line.capture.files)
            .toStdString();
    };
    EXPECT_EQ(" 0 4", capture({}));
    EXPECT_EQ("l.pcapng 0 4", capture({"--capture", "l.pcapng"}));
    EXPECT_EQ("l 3145728 4", capture({"--capture", "l", "--capture-limit", "3"}));
    EXPECT_EQ("l 3145728 7",
              capture({"--capture", "l", "--capture-limit", "3", "--capture-files", "7"}));
    EXPECT_EQ("--capture: the capture's file is missing", problem({"p.json", "--capture", ""}));
    EXPECT_EQ("--capture-limit: the capture's file is missing",
              problem({"p.json", "--capture-limit", "3"}));
    EXPECT_EQ("--capture-files: divides a limit, so --capture-limit is needed",
              problem({"p.json", "--capture", "l", "--capture-files", "3"}));
    EXPECT_EQ("--capture-limit 0: must be a whole number from 1 to 1048576",
              problem({"p.json", "--capture", "l", "--capture-limit", "0"}));
    EXPECT_EQ(
        "--capture-files 1: must be a whole number from 2 to 1000",
        problem({"p.json", "--capture", "l", "--capture-limit", "3", "--capture-files", "1"}));
    EXPECT_EQ(
        "--capture-files: the limit is too small for so many files: each needs 128 KiB",
        problem({"p.json", "--capture", "l", "--capture-limit", "1", "--capture-files", "9"}));
}

TEST(CommandLines, ARecordingHasALimitAndALeastTime)
{
    const auto record = [](const QStringList& options) {
        const CommandLine line =
            parseCommandLine(kAll, QStringList{"host", "p.json"} + options).line;
        return QString("%1 %2 %3")
            .arg(line.record.folder)
            .arg(line.record.limitBytes)
            .arg(line.record.everyMs)
            .toStdString();
    };
    EXPECT_EQ(" 1073741824 0", record({}));
    EXPECT_EQ("r 4194304 50",
              record({"--record", "r", "--record-limit", "4", "--record-every", "50"}));
    EXPECT_EQ("--record: the recording's folder is missing", problem({"p.json", "--record", ""}));
    EXPECT_EQ("--record-limit: the recording's folder is missing",
              problem({"p.json", "--record-limit", "9"}));
    EXPECT_EQ("--record-limit 3: must be a whole number from 4 to 16777216",
              problem({"p.json", "--record", "r", "--record-limit", "3"}));
    EXPECT_EQ("--record-every -1: must be a whole number from 0 to 86400000",
              problem({"p.json", "--record", "r", "--record-every", "-1"}));
}

TEST(CommandLines, OptionsAreTaken)
{
    const ParsedCommandLine parsed = parseCommandLine(
        kAll, {"host",          "p.json", "--connect",   "[::1]:77", "--station", "9",
               "--format",      "csv",    "--as",        "hex",      "--timeout", "5",
               "--duration",    "1.5",    "--interval",  "20",       "--pass",    "3",
               "--stale-after", "700",    "--read-back", "--stdin",  "--driver",  "d.so",
               "--log",         "A.b",    "C.d=-1"});
    ASSERT_EQ("", parsed.problem.toStdString());
    const CommandLine& line = parsed.line;
    EXPECT_EQ("p.json", line.projectFile.toStdString());
    EXPECT_EQ((QStringList{"A.b", "C.d=-1"}), line.arguments);
    EXPECT_EQ("::1", line.host.toStdString());
    EXPECT_EQ(77, line.port);
    EXPECT_EQ(9, line.station.value());
    EXPECT_EQ(OutputFormat::csv, line.output);
    EXPECT_EQ(project::Format::hex, line.valueFormat);
    EXPECT_EQ(5, line.timeoutMs);
    EXPECT_EQ(1500, line.durationMs);
    EXPECT_EQ(20, line.intervalMs);
    EXPECT_EQ(3, line.passMs.value());
    EXPECT_EQ(700, line.staleAfterMs);
    EXPECT_TRUE(line.readBack);
    EXPECT_TRUE(line.commandsFromInput);
    EXPECT_TRUE(line.driverLog);
    EXPECT_EQ("d.so", line.driverFile.toStdString());
}

TEST(CommandLines, TheTraceGoesWhereItIsWanted)
{
    const auto trace = [](const QStringList& options) {
        const ParsedCommandLine parsed =
            parseCommandLine(kAll, QStringList{"host", "p.json"} + options);
        EXPECT_EQ("", parsed.problem.toStdString());
        const TraceOptions its = parsed.line.trace;
        return QString("%1 %2 %3").arg(its.isOn).arg(its.withBytes).arg(its.file).toStdString();
    };
    EXPECT_EQ("0 0 ", trace({}));
    EXPECT_EQ("1 0 ", trace({"--trace"}));
    EXPECT_EQ("1 0 ", trace({"--trace", "A.b"})) << "what follows is an address";
    EXPECT_EQ("1 0 t.txt", trace({"--trace=t.txt"}));
    EXPECT_EQ("1 1 ", trace({"--trace=hex"}));
    EXPECT_EQ("1 1 t.txt", trace({"--trace=hex:t.txt"}));
    EXPECT_EQ("1 0 ./hex", trace({"--trace=./hex"}));
    EXPECT_EQ("1 0 hexagon", trace({"--trace=hexagon"}));
    EXPECT_EQ("0 0 ", trace({"--", "--trace"})) << "an address";
    EXPECT_EQ("--trace=hex:: a file name is missing", problem({"p.json", "--trace=hex:"}));
    EXPECT_EQ("--trace: given twice; --trace=hex:FILE writes bytes into a file",
              problem({"p.json", "--trace=hex", "--trace=t.txt"}));
}

TEST(CommandLines, ThePageListensWhereItIsWanted)
{
    const auto page = [](const QStringList& options) {
        const PageOptions its =
            parseCommandLine(kAll, QStringList{"host", "p.json"} + options).line.page;
        return QString("%1 %2:%3 %4 %5 %6")
            .arg(its.isOn)
            .arg(its.host)
            .arg(its.port)
            .arg(its.opens)
            .arg(its.allowsWrites)
            .arg(its.writable.join(" "))
            .toStdString();
    };
    EXPECT_EQ("0 127.0.0.1:0 0 0 ", page({}));
    EXPECT_EQ("1 127.0.0.1:0 0 0 ", page({"--page"}));
    EXPECT_EQ("1 ::1:8080 1 0 ", page({"--page=[::1]:8080", "--open"}));
    EXPECT_EQ("1 127.0.0.1:0 0 1 ", page({"--page", "--allow-writes"}));
    EXPECT_EQ("1 127.0.0.1:0 0 1 A.b L.Grid[1,C] A.c",
              page({"--page", "--allow-writes=A.b,L.Grid[1,C],A.c"}));
    EXPECT_EQ("--page=8080: must be HOST:PORT; port 0 is any free one",
              problem({"p.json", "--page=8080"}));
    EXPECT_EQ("--open: is said of the page, so --page is needed", problem({"p.json", "--open"}));
    EXPECT_EQ("--allow-writes: is said of the page, so --page is needed",
              problem({"p.json", "--allow-writes"}));
}

TEST(CommandLines, ATraceTakesNobodysFile)
{
    EXPECT_EQ("--trace=p.json: this is the project file", problem({"p.json", "--trace=p.json"}));
    EXPECT_EQ("--trace=./a: this is the capture's file",
              problem({"p.json", "--trace=./a", "--capture", "a"}));
    EXPECT_EQ("", problem({"p.json", "--trace=b", "--capture", "a"}));
}

TEST(CommandLines, NamesAreThoseOfAllVariables)
{
    EXPECT_TRUE(parseCommandLine(kAll, {"host", "p.json", "--names"}).line.names);
    EXPECT_EQ("--names: names all variables of the project, so it takes no address",
              problem({"p.json", "--names", "A.b"}));
}

TEST(CommandLines, DefaultsLeaveTheProjectAlone)
{
    const CommandLine line = parseCommandLine(kAll, {"host", "p.json"}).line;
    EXPECT_EQ(0, line.port);
    EXPECT_EQ(-1, line.durationMs);
    EXPECT_EQ(500, line.intervalMs);
    EXPECT_EQ(2000, line.staleAfterMs);
    EXPECT_FALSE(line.readBack);
    EXPECT_EQ(OutputFormat::table, line.output);
    EXPECT_FALSE(line.station.has_value());
    EXPECT_FALSE(line.passMs.has_value());
    EXPECT_FALSE(line.commandsFromInput);
}

TEST(CommandLines, BadOnesAreRefused)
{
    EXPECT_EQ("usage: tavmir-host all PROJECT [ADDRESS...]", problem({}));
    EXPECT_EQ("usage: tavmir-host all PROJECT [ADDRESS...]", problem({"p", "1", "2", "3"}));
    EXPECT_EQ("Unknown option 'frmat'.", problem({"p", "--frmat", "x"}));
    EXPECT_EQ("--format xml: must be table, json or csv", problem({"p", "--format", "xml"}));
    EXPECT_EQ("--as octal: unknown format", problem({"p", "--as", "octal"}));
    for (const char* place : {"x", "x:", ":5", "x:0", "x:65536", "[]:5", "::1:5"}) {
        EXPECT_EQ(std::string("--connect ") + place + ": must be HOST:PORT",
                  problem({"p", "--connect", place}));
    }
    EXPECT_EQ("--station 256: must be a whole number from 0 to 255",
              problem({"p", "--station", "256"}));
    EXPECT_EQ("--interval 0: must be a whole number from 1 to 86400000",
              problem({"p", "--interval", "0"}));
    EXPECT_EQ("--pass x: must be a whole number from 0 to 86400000", problem({"p", "--pass", "x"}));
    EXPECT_EQ("unknown option --pause: --pass says how often a pass begins",
              problem({"p", "--pause", "5"}));
    EXPECT_EQ("--duration -1: must be a number of seconds", problem({"p", "--duration=-1"}));
    EXPECT_EQ("--duration nan: must be a number of seconds", problem({"p", "--duration", "nan"}));
}

TEST(CommandLines, LimitsThemselvesAreAccepted)
{
    const auto line = [](const QStringList& options) {
        const ParsedCommandLine parsed =
            parseCommandLine(kAll, QStringList{"host", "p.json"} + options);
        EXPECT_EQ("", parsed.problem.toStdString()) << options.join(' ').toStdString();
        return parsed.line;
    };
    EXPECT_EQ(0, line({"--station", "0"}).station.value());
    EXPECT_EQ(255, line({"--station", "255"}).station.value());
    EXPECT_EQ(1, line({"--connect", "x:1"}).port);
    EXPECT_EQ(65535, line({"--connect", "x:65535"}).port);
    EXPECT_EQ(1, line({"--interval", "1"}).intervalMs);
    EXPECT_EQ(86400000, line({"--interval", "86400000"}).intervalMs);
    EXPECT_EQ(0, line({"--pass", "0"}).passMs.value());
    EXPECT_EQ(86400000, line({"--pass", "86400000"}).passMs.value());
    EXPECT_EQ(1, line({"--timeout", "1"}).timeoutMs);
    EXPECT_EQ(2147483647, line({"--timeout", "2147483647"}).timeoutMs);
    EXPECT_EQ(0, line({"--duration", "0"}).durationMs);
    EXPECT_EQ(2000000000, line({"--duration", "2000000"}).durationMs);
    for (const QStringList& one : {QStringList{"--station", "-1"},
                                   {"--interval", "86400001"},
                                   {"--pass", "-1"},
                                   {"--pass", "86400001"},
                                   {"--timeout", "0"},
                                   {"--stale-after", "0"},
                                   {"--duration", "2000001"}}) {
        EXPECT_NE("", problem(QStringList{"p", one[0] + "=" + one[1]})) << one[1].toStdString();
    }
}

TEST(CommandLines, HelpAndVersionAreAnsweredFirst)
{
    int argumentCount = 1;
    char program[] = "tavmir-host";
    char* arguments[] = {program, nullptr};
    const QCoreApplication application(argumentCount, arguments);
    EXPECT_TRUE(parseCommandLine(kAll, {"host", "--help"}).help.contains("--connect"));
    EXPECT_TRUE(parseCommandLine(kAll, {"host", "--help"}).help.contains("--trace[=FILE] "));
    EXPECT_TRUE(parseCommandLine(kAll, {"host", "--version"}).help.startsWith("tavmir-host "));
}

} // namespace tavmir::host
