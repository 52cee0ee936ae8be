// The host's small parts: pauses, histogram, ages, rows, lines, command lines.
#include "host/age_table.h"
#include "host/command_line.h"
#include "host/latency_histogram.h"
#include "host/line_reader.h"
#include "host/reconnect_pause.h"
#include "host/value_table.h"

#include <QtCore/QCoreApplication>

#include <gtest/gtest.h>

#include <unistd.h>

#include <thread>

namespace tavmir::host
{

TEST(ReconnectPause, GrowsWithJitterUpToItsBound)
{
    for (unsigned seed = 1; seed < 50; ++seed) {
        ReconnectPause pause(100, 1000, seed);
        double base = 100;
        for (int i = 0; i < 10; ++i) {
            const int ms = pause.next();
            EXPECT_GE(ms, static_cast<int>(0.75 * base));
            EXPECT_LE(ms, std::min(1000, static_cast<int>(1.25 * base)));
            base = std::min(1000.0, 2 * base);
        }
        pause.reset();
        EXPECT_LE(pause.next(), 125);
    }
}

TEST(ReconnectPause, DiffersBetweenHosts)
{
    EXPECT_NE(ReconnectPause(1000, 5000, 1).next(), ReconnectPause(1000, 5000, 999).next());
}

TEST(ReconnectPause, IsNeverZero)
{
    ReconnectPause pause(1, 1, 5);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(1, pause.next());
    }
}

TEST(Latency, EmptyHistogramIsZero)
{
    const LatencyHistogram histogram;
    EXPECT_EQ(0u, histogram.count());
    EXPECT_EQ(0u, histogram.minimum());
    EXPECT_EQ(0u, histogram.percentile(0.99));
    EXPECT_EQ(0.0, histogram.mean());
}

TEST(Latency, PercentilesAreWithinASixteenth)
{
    LatencyHistogram histogram;
    for (uint64_t i = 1; i <= 10000; ++i) {
        histogram.add(i * 1000);
    }
    EXPECT_EQ(1000u, histogram.minimum());
    EXPECT_EQ(10000000u, histogram.maximum());
    EXPECT_DOUBLE_EQ(5000500.0, histogram.mean());
    for (const double share : {0.5, 0.9, 0.99}) {
        const double exact = share * 10000000;
        const auto found = static_cast<double>(histogram.percentile(share));
        EXPECT_GE(found, exact);
        EXPECT_LE(found, exact * 17 / 16);
    }
    EXPECT_EQ(10000000u, histogram.percentile(1.0));
}

TEST(Latency, SmallAndHugeTimesHaveABucket)
{
    LatencyHistogram histogram;
    for (const uint64_t value :
         {uint64_t{0}, uint64_t{15}, uint64_t{16}, uint64_t{17}, UINT64_MAX}) {
        histogram.add(value);
    }
    EXPECT_EQ(5u, histogram.count());
    EXPECT_EQ(0u, histogram.percentile(0.1));
    EXPECT_EQ(UINT64_MAX, histogram.percentile(1.0));
}

TEST(Ages, NeighboursAndStrangersAreFound)
{
    const Clock::time_point now = Clock::now();
    AgeTable ages(
        {{ValueClass::words, 16}, {ValueClass::words, 48}, {ValueClass::doubleWords, 16}});
    const unsigned char addresses[] = {0, 0, 0, 16, 0, 0, 0, 48, 0, 0, 9, 9};
    ages.readNow(ValueClass::words, addresses, 3, now);
    project::Element word;
    word.type = project::DataType::word;
    word.address = 48;
    EXPECT_EQ(now, ages.lastRead(word).value());
    word.address = 32;
    EXPECT_FALSE(ages.lastRead(word).has_value());
    project::Element dword;
    dword.type = project::DataType::dword;
    dword.address = 16;
    EXPECT_FALSE(ages.lastRead(dword).has_value());
}

TEST(Ages, TextIsAsOldAsItsOldestWord)
{
    const Clock::time_point early = Clock::now();
    AgeTable ages({{ValueClass::words, 16}, {ValueClass::words, 32}});
    const unsigned char addresses[] = {0, 0, 0, 16, 0, 0, 0, 32};
    project::Element text;
    text.type = project::DataType::text;
    text.address = 16;
    text.words = 2;
    ages.readNow(ValueClass::words, addresses, 1, early);
    EXPECT_FALSE(ages.lastRead(text).has_value());
    ages.readNow(ValueClass::words, addresses + 4, 1, early + std::chrono::seconds(1));
    EXPECT_EQ(early, ages.lastRead(text).value());
}

TEST(Rows, TableHasColumnsAndAges)
{
    std::vector<ValueRow> rows(4);
    rows[0] = {"a", "Main.A", "12", project::Format::unsignedNumber, 5};
    rows[1] = {"long name", "Main.B", "x\ny", project::Format::text, 1500};
    rows[2] = {"c", "M.C", "1", project::Format::bit, std::nullopt};
    rows[3] = {"d", "M.D", "1", project::Format::bit, 180000};
    const QStringList lines = tableLines(rows);
    ASSERT_EQ(5, lines.size());
    EXPECT_EQ("NAME       ADDRESS  VALUE     AGE", lines[0].toStdString());
    EXPECT_EQ("a          Main.A   12       5 ms", lines[1].toStdString());
    EXPECT_EQ("long name  Main.B   x\\x0ay  1.5 s", lines[2].toStdString());
    EXPECT_EQ("c          M.C      1       never", lines[3].toStdString());
    EXPECT_EQ("d          M.D      1       3 min", lines[4].toStdString());
}

TEST(Rows, JsonKeepsNumbersAndTextsApart)
{
    const auto json = [](const char* value, project::Format format) {
        return jsonLine(jsonOf({"n", "a", value, format, 7})).toStdString();
    };
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":-12})",
              json("-12", project::Format::signedNumber));
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":"0x12"})",
              json("0x12", project::Format::hex));
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":"12"})",
              json("12", project::Format::text));
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":1.5})",
              json("1.5", project::Format::floating));
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":"nan"})",
              json("nan", project::Format::floating));
    EXPECT_TRUE(jsonOf({"n", "a", "1", project::Format::bit, std::nullopt})["ageMs"].isNull());
}

TEST(Rows, CsvQuotesWhatNeedsIt)
{
    EXPECT_EQ("T,n,\"M[1,2]\",\"a\"\"b\",7",
              csvLine({"n", "M[1,2]", "a\"b", project::Format::text, 7}, "T").toStdString());
    EXPECT_EQ("T,n,a,1,",
              csvLine({"n", "a", "1", project::Format::bit, std::nullopt}, "T").toStdString());
}

TEST(Lines, ComeOneByOneUntilTheEnd)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    ASSERT_EQ(8, ::write(ends[1], "ab\n\ncd\ne", 8));
    ::close(ends[1]);
    LineReader reader(ends[0]);
    EXPECT_EQ("ab", reader.next().value());
    EXPECT_EQ("", reader.next().value());
    EXPECT_EQ("cd", reader.next().value());
    EXPECT_EQ("e", reader.next().value());
    EXPECT_FALSE(reader.next().has_value());
    ::close(ends[0]);
}

TEST(Lines, LongLinesComeInPieces)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    std::thread writer([&] {
        const QByteArray bytes(LineReader::kMaxLineBytes + 10000, 'x');
        EXPECT_EQ(bytes.size(),
                  ::write(ends[1], bytes.constData(), static_cast<size_t>(bytes.size())));
        ::close(ends[1]);
    });
    LineReader reader(ends[0]);
    int total = 0;
    while (const auto piece = reader.next()) {
        EXPECT_LE(piece->size(), LineReader::kMaxLineBytes + 4096);
        total += piece->size();
    }
    EXPECT_EQ(LineReader::kMaxLineBytes + 10000, total);
    writer.join();
    ::close(ends[0]);
}

TEST(Lines, StopEndsTheWait)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    LineReader reader(ends[0]);
    reader.stop();
    EXPECT_FALSE(reader.next().has_value());
    ::close(ends[0]);
    ::close(ends[1]);
}

namespace
{

const CommandDescription kAll = {
    "all", "[ADDRESS...]", "Everything.", kOutputOption | kExchangeOptions | kRunOptions, 0, 2};

std::string problem(const QStringList& arguments)
{
    return parseCommandLine(kAll, QStringList("host") + arguments).problem.toStdString();
}

} // namespace

TEST(CommandLines, OptionsAreTaken)
{
    const ParsedCommandLine parsed = parseCommandLine(
        kAll, {"host",       "p.json",   "--connect",  "[::1]:77", "--station", "9",
               "--format",   "csv",      "--as",       "hex",      "--timeout", "5",
               "--duration", "1.5",      "--interval", "20",       "--pause",   "3",
               "--stdin",    "--driver", "d.so",       "--log",    "A.b",       "C.d=-1"});
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
    EXPECT_EQ(3, line.pauseMs);
    EXPECT_TRUE(line.commandsFromInput);
    EXPECT_TRUE(line.driverLog);
    EXPECT_EQ("d.so", line.driverFile.toStdString());
}

TEST(CommandLines, DefaultsLeaveTheProjectAlone)
{
    const CommandLine line = parseCommandLine(kAll, {"host", "p.json"}).line;
    EXPECT_EQ(0, line.port);
    EXPECT_EQ(-1, line.durationMs);
    EXPECT_EQ(500, line.intervalMs);
    EXPECT_EQ(OutputFormat::table, line.output);
    EXPECT_FALSE(line.station.has_value());
    EXPECT_FALSE(line.commandsFromInput);
}

TEST(CommandLines, BadOnesAreRefused)
{
    EXPECT_EQ("usage: tavmir-host all PROJECT [ADDRESS...]", problem({}));
    EXPECT_EQ("usage: tavmir-host all PROJECT [ADDRESS...]", problem({"p", "1", "2", "3"}));
    EXPECT_EQ("Unknown option 'frmat'.", problem({"p", "--frmat", "x"}));
    EXPECT_EQ("--format xml: must be table, json or csv", problem({"p", "--format", "xml"}));
    EXPECT_EQ("--as octal: unknown format", problem({"p", "--as", "octal"}));
    for (const char* place : {"x", "x:", ":5", "x:0", "x:65536", "[]:5"}) {
        EXPECT_EQ(std::string("--connect ") + place + ": must be HOST:PORT",
                  problem({"p", "--connect", place}));
    }
    EXPECT_EQ("--station 256: must be a whole number from 0 to 255",
              problem({"p", "--station", "256"}));
    EXPECT_EQ("--interval 0: must be a whole number from 1 to 86400000",
              problem({"p", "--interval", "0"}));
    EXPECT_EQ("--pause x: must be a whole number from 0 to 86400000",
              problem({"p", "--pause", "x"}));
    EXPECT_EQ("--duration -1: must be a number of seconds", problem({"p", "--duration=-1"}));
    EXPECT_EQ("--duration nan: must be a number of seconds", problem({"p", "--duration", "nan"}));
}

TEST(CommandLines, HelpAndVersionAreAnsweredFirst)
{
    int argumentCount = 1;
    char program[] = "tavmir-host";
    char* arguments[] = {program, nullptr};
    const QCoreApplication application(argumentCount, arguments);
    EXPECT_TRUE(parseCommandLine(kAll, {"host", "--help"}).help.contains("--connect"));
    EXPECT_TRUE(parseCommandLine(kAll, {"host", "--version"}).help.startsWith("tavmir-host "));
}

} // namespace tavmir::host
