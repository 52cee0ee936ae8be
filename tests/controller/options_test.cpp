// The command line.
#include "controller/options.h"
#include "test_client.h"

#include <gtest/gtest.h>

using namespace tavmir::controller;

namespace
{

CommandLine parse(const QStringList& arguments)
{
    tavmir::test::haveApplication();
    return parseCommandLine(QStringList("tavmir-controller") + arguments);
}

std::string problemOf(const QStringList& arguments)
{
    return parse(arguments).problem.toStdString();
}

} // namespace

TEST(Options, WithoutAnyTheControllerListensOnLoopbackOnly)
{
    const CommandLine line = parse({});
    EXPECT_EQ(line.problem, QString());
    EXPECT_EQ(line.options.address, QHostAddress("127.0.0.1"));
    EXPECT_EQ(line.options.port, 5020);
    EXPECT_EQ(line.options.projectFile, QString());
    EXPECT_FALSE(line.options.trace);
    EXPECT_EQ(line.options.capture.file, "");
    EXPECT_TRUE(line.options.faults.empty());
    EXPECT_EQ(line.options.seed, 1u);
    EXPECT_TRUE(line.options.refused.empty());
    EXPECT_FALSE(line.options.admission.stations);
    EXPECT_FALSE(line.options.admission.silentForOthers);
    EXPECT_EQ(line.options.admission.mostRequestsPerSecond, 0);
    EXPECT_FALSE(line.options.admission.delaysAboveRate);
}

TEST(Options, TakesAllOfThem)
{
    const CommandLine line =
        parse({"--listen", "0.0.0.0:0", "--project", "plant.json", "--trace", "--fault", "drop=0.5",
               "--fault", "late@9", "--seed", "18446744073709551615", "--delay-ms", "1",
               "--late-ms", "2", "--refuse-ms", "3"});
    EXPECT_EQ(line.problem, QString());
    EXPECT_EQ(line.options.address, QHostAddress("0.0.0.0"));
    EXPECT_EQ(line.options.port, 0);
    EXPECT_EQ(line.options.projectFile, "plant.json");
    EXPECT_TRUE(line.options.trace);
    ASSERT_EQ(line.options.faults.size(), 2u);
    EXPECT_EQ(line.options.faults[0].kind, FaultKind::Drop);
    EXPECT_EQ(line.options.faults[1].kind, FaultKind::Late);
    EXPECT_EQ(line.options.seed, 18446744073709551615u);
    EXPECT_EQ(line.options.delayMs, 1);
    EXPECT_EQ(line.options.lateMs, 2);
    EXPECT_EQ(line.options.refuseMs, 3);
}

TEST(Options, TakesWhatIsServed)
{
    const CommandLine line =
        parse({"--refuse", "word:16-31=2", "--refuse", "Main.X=3", "--stations", "1-3",
               "--unknown-stations", "silent", "--max-rate", "50", "--over-rate", "delay"});
    EXPECT_EQ(line.problem, QString());
    ASSERT_EQ(line.options.refused.size(), 2u);
    EXPECT_EQ(line.options.refused[0].range.to, 31u);
    EXPECT_EQ(line.options.refused[1].variable, "Main.X");
    EXPECT_EQ(line.options.refused[1].range.code, 3);
    EXPECT_EQ(line.options.admission.stations->count(), 3u);
    EXPECT_TRUE(line.options.admission.silentForOthers);
    EXPECT_EQ(line.options.admission.mostRequestsPerSecond, 50);
    EXPECT_TRUE(line.options.admission.delaysAboveRate);
}

TEST(Options, ACaptureIsOneFileOrARing)
{
    EXPECT_EQ(parse({"--capture", "l.pcapng"}).options.capture.file, "l.pcapng");
    EXPECT_EQ(parse({"--capture", "l.pcapng"}).options.capture.limitBytes, 0u);
    const CommandLine ring =
        parse({"--capture", "l", "--capture-limit", "3", "--capture-files", "7"});
    EXPECT_EQ(ring.problem, QString());
    EXPECT_EQ(ring.options.capture.limitBytes, 3u << 20);
    EXPECT_EQ(ring.options.capture.files, 7);
    EXPECT_EQ(parse({"--capture", "l", "--capture-limit", "3"}).options.capture.files, 4);
    EXPECT_EQ(problemOf({"--capture", ""}), "--capture: the capture's file is missing");
    EXPECT_EQ(problemOf({"--capture-limit", "3"}),
              "--capture-limit: the capture's file is missing");
    EXPECT_EQ(problemOf({"--capture", "l", "--capture-files", "3"}),
              "--capture-files: divides a limit, so --capture-limit is needed");
    EXPECT_EQ(problemOf({"--capture", "l", "--capture-limit", "x"}),
              "--capture-limit: \"x\" is not a whole number from 1 to 1048576");
    EXPECT_EQ(problemOf({"--capture", "l", "--capture-limit", "3", "--capture-files", "1"}),
              "--capture-files: a capture has 2 to 1000 files");
    EXPECT_EQ(problemOf({"--capture", "l", "--capture-limit", "1", "--capture-files", "9"}),
              "--capture-files: the limit is too small for so many files: each needs 128 KiB");
}

TEST(Options, SaysItsVersion)
{
    EXPECT_TRUE(parse({"--version"}).printOnly.startsWith("tavmir-controller "));
}

TEST(Options, SaysWhatIsWrong)
{
    EXPECT_NE(problemOf({"--refuse", "word:x=2"}).find("--refuse: "), std::string::npos);
    EXPECT_NE(problemOf({"--stations", "1;2"}).find("--stations: \"1;2\" is not a list"),
              std::string::npos);
    EXPECT_NE(problemOf({"--unknown-stations", "x"}).find("is not refuse or silent"),
              std::string::npos);
    EXPECT_NE(problemOf({"--over-rate", "drop"}).find("is not refuse or delay"), std::string::npos);
    for (const char* rate : {"0", "-1", "x", "1000001"}) {
        EXPECT_NE(problemOf({"--max-rate", rate}).find("--max-rate: "), std::string::npos) << rate;
    }

    EXPECT_NE(problemOf({"--listen", "5020"}).find("--listen: \"5020\" is not HOST:PORT"),
              std::string::npos);
    EXPECT_NE(problemOf({"--fault", "boom=1"}).find("--fault: unknown fault \"boom\""),
              std::string::npos);
    EXPECT_NE(problemOf({"--seed", "x"}).find("--seed: \"x\" is not a number"), std::string::npos);
    EXPECT_NE(problemOf({"--delay-ms", "-1"}).find("--delay-ms"), std::string::npos);
    EXPECT_NE(problemOf({"--late-ms", "3600001"}).find("--late-ms"), std::string::npos);
    EXPECT_NE(problemOf({"--refuse-ms", "soon"}).find("--refuse-ms"), std::string::npos);
    EXPECT_NE(problemOf({"plant.json"}).find("unexpected argument \"plant.json\""),
              std::string::npos);
    EXPECT_NE(problemOf({"--prject", "x"}).find("prject"), std::string::npos);
    EXPECT_NE(problemOf({"--project", ""}).find("--project"), std::string::npos);
    EXPECT_NE(problemOf({"--project"}).find("project"), std::string::npos);
}

TEST(Options, HelpNamesEveryOptionAndFault)
{
    const QString help = parse({"--help"}).printOnly;
    for (const char* option : {"--listen", "--project", "--trace", "--fault", "--seed",
                               "--delay-ms", "--late-ms", "--refuse-ms", "--refuse ", "--stations",
                               "--unknown-stations", "--max-rate", "--over-rate", "--version"}) {
        EXPECT_TRUE(help.contains(option)) << option;
    }
    for (std::size_t i = 1; i < kFaultKinds; ++i) {
        const QString line =
            QString("\n  %1%2").arg(kFaultTable[i].name, -12).arg(kFaultTable[i].help);
        EXPECT_TRUE(help.contains(line)) << line.toStdString();
    }
    EXPECT_FALSE(help.contains("\n  none"));
}

TEST(Options, EndpointsAreReadAndWritten)
{
    for (const char* text : {"127.0.0.1:5020", "0.0.0.0:0", "[::1]:65535"}) {
        QHostAddress address;
        quint16 port = 1;
        EXPECT_TRUE(parseEndpoint(text, &address, &port)) << text;
        EXPECT_EQ(endpointText(address, port), text);
    }
    QHostAddress address;
    quint16 port = 0;
    EXPECT_TRUE(parseEndpoint("localhost:80", &address, &port));
    EXPECT_EQ(endpointText(address, port), "127.0.0.1:80");
}

TEST(Options, BadEndpointsAreRefused)
{
    for (const char* text :
         {"", ":", ":5020", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:65536",
          "127.0.0.1:-1", "somewhere:80", "1.2.3.4.5:80", "::1:80", "[::1:80", "[]:80"}) {
        QHostAddress address;
        quint16 port = 0;
        EXPECT_FALSE(parseEndpoint(text, &address, &port)) << text;
    }
}

TEST(Options, JudgesAHostByAScript)
{
    const CommandLine line = parse({"--check-host", "a.script", "--json", "report.json"});
    EXPECT_EQ(line.problem, QString());
    EXPECT_EQ(line.options.checkScript, "a.script");
    EXPECT_EQ(line.options.reportFile, "report.json");
    EXPECT_EQ(parse({}).options.checkScript, QString());
}

TEST(Options, WhatIsPlayedToAJudgedHostOnlyItsScriptSays)
{
    EXPECT_EQ(problemOf({"--check-host", ""}), "--check-host: a file name is missing");
    EXPECT_EQ(problemOf({"--check-host", "s", "--json", ""}), "--json: a file name is missing");
    EXPECT_EQ(problemOf({"--json", "r"}),
              "--json: only the verdicts of --check-host are printed so");
    EXPECT_EQ(problemOf({"--check-host", "s", "--fault", "drop@1"}),
              "--fault: what is played to a host that is judged, its script says");
    EXPECT_EQ(problemOf({"--check-host", "s", "--max-rate", "5"}),
              "--max-rate: what is played to a host that is judged, its script says");
}
