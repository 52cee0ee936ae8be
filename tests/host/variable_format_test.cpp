// How a variable is meant holds for every command: what is written to it is what is read of it.
#include "programs.h"

#include "support/child_process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>

namespace tavmir::host
{

namespace
{

class VariableFormats : public testing::Test
{
protected:
    VariableFormats()
        : project_(QString::fromStdString(folder_.writeFile("formats.json", R"({
            "connection": { "replyTimeoutMs": 20000, "connectTimeoutMs": 20000 },
            "types": [ { "name": "S", "size": 96, "members": [
              { "name": "level", "type": "dword", "offset": 0 },
              { "name": "offset", "type": "word", "offset": 32, "format": "signed" },
              { "name": "temp", "type": "real", "offset": 64 } ] } ],
            "labels": [ { "name": "Main", "variables": [
              { "name": "F", "type": "dword", "address": 1600, "array": { "bounds": [[0, 9]] } },
              { "name": "G", "type": "dword", "address": 3200, "format": "float",
                "array": { "bounds": [[0, 9]] } },
              { "name": "S", "type": "S", "address": 4800, "array": { "bounds": [[0, 3]] } },
              { "name": "W", "type": "word", "address": 6400 },
              { "name": "I", "type": "word", "address": 6416, "format": "signed" },
              { "name": "R", "type": "real", "address": 6432 } ] } ],
            "polled": [ { "address": "Main.F", "format": "float" },
                        { "address": "Main.S[1]", "format": "float" },
                        { "address": "Main.I", "name": "declared" } ],
            "initial": [ { "address": "Main.G[7]", "value": 0.75 } ] })"))),
          controller_(0, project_)
    {
    }

    QStringList arguments(const QString& command, const QStringList& more) const
    {
        return QStringList{command, project_, "--connect", controller_.place()} + more;
    }
    test::ProcessResult host(const QString& command, const QStringList& more) const
    {
        return test::runProcess(TAVMIR_HOST_PROGRAM, arguments(command, more));
    }
    std::string written(const QStringList& assignments) const
    {
        const auto result = host("write", assignments);
        EXPECT_EQ(0, result.exitStatus) << result.errors.toStdString();
        return result.output.toStdString();
    }
    std::string read(const QStringList& addresses) const
    {
        const auto result = host("read", addresses);
        EXPECT_EQ(0, result.exitStatus) << result.errors.toStdString();
        return result.output.toStdString();
    }
    std::string refused(const QString& assignment) const
    {
        const auto result = host("write", {assignment});
        EXPECT_EQ(2, result.exitStatus) << result.output.toStdString();
        return result.errors.toStdString();
    }

    test::TemporaryFolder folder_;
    QString project_;
    Controller controller_;
};

} // namespace

TEST_F(VariableFormats, ElementsOfAPolledArrayAreMeantAsItIs)
{
    written({"Main.F[1]=20", "Main.F[02]=20.5"});
    EXPECT_EQ("Main.F[1] = 20\nMain.F[2] = 20.5\n", read({"Main.F[1]", "Main.F[2]"}));
    EXPECT_EQ("Main.F[1] = 0x41A00000\n", read({"Main.F[1]", "--as", "hex"}));
}

TEST_F(VariableFormats, MembersOfAPolledStructureAreMeantAsItIs)
{
    written({"Main.S[1].level=-2.5", "Main.S[1].offset=-3", "Main.S[1].temp=0.5"});
    EXPECT_EQ("Main.S[1].level = -2.5\nMain.S[1].offset = -3\nMain.S[1].temp = 0.5\n",
              read({"Main.S[1]"}));
    EXPECT_EQ("tavmir-host: \"-2.5\" is not a value of Main.S[2].level: unsigned, 0 to "
              "4294967295\n",
              refused("Main.S[2].level=-2.5"));
}

TEST_F(VariableFormats, WhatIsNotPolledIsMeantAsItIsDeclared)
{
    EXPECT_EQ("Main.G[7] = 0.75\n", read({"Main.G[7]"}));
    written({"Main.G[1]=20", "Main.S[0].offset=-7", "Main.R=7"});
    EXPECT_EQ("Main.G[1] = 20\nMain.S[0].offset = -7\nMain.R = 7\n",
              read({"Main.G[1]", "Main.S[0].offset", "Main.R"}));
    EXPECT_EQ("Main.R = 0x40E00000\n", read({"Main.R", "--as", "hex"}));
}

TEST_F(VariableFormats, WhatDoesNotFitIsRefusedWithRangeAndFormat)
{
    EXPECT_EQ("tavmir-host: \"65536\" is not a value of Main.W: unsigned, 0 to 65535\n",
              refused("Main.W=65536"));
    EXPECT_EQ("tavmir-host: \"-1\" is not a value of Main.W: unsigned, 0 to 65535\n",
              refused("Main.W=-1"));
    EXPECT_EQ("tavmir-host: \"32768\" is not a value of Main.I: signed, -32768 to 32767\n",
              refused("Main.I=32768"));
    EXPECT_EQ("tavmir-host: \"x\" is not a value of Main.F[1]: float, -3.40282e+38 to "
              "3.40282e+38\n",
              refused("Main.F[1]=x"));
}

TEST_F(VariableFormats, AnotherFormatMayBeAskedFor)
{
    written({"--as", "signed", "Main.W=-1"});
    EXPECT_EQ("Main.W = 65535\n", read({"Main.W"}));
    EXPECT_EQ("Main.W = -1\n", read({"Main.W", "--as", "signed"}));
    written({"--as", "unsigned", "Main.F[3]=20"});
    EXPECT_EQ("Main.F[3] = 20\n", read({"Main.F[3]", "--as", "unsigned"}));
    written({"Main.S[1].offset=-2"});
    EXPECT_EQ("Main.S[1].level = 0x00000000\nMain.S[1].offset = 0xFFFE\n"
              "Main.S[1].temp = 0x00000000\n",
              read({"Main.S[1]", "--as", "hex"}));
    EXPECT_EQ("Main.S[1].level = 0\nMain.S[1].offset = -2\nMain.S[1].temp = 0\n",
              read({"Main.S[1]", "--as", "text"}))
        << "fits none of them";
}

TEST_F(VariableFormats, ARunShowsAndTakesTheSame)
{
    Program run(TAVMIR_HOST_PROGRAM,
                arguments("run", {"--format", "csv", "--interval", "20", "--stdin"}));
    run.type("Main.F[4]=20.5");
    run.type("Main.I=-9");
    run.type("Main.S[1].level=1.25");
    run.type("Main.W=70000");
    EXPECT_TRUE(run.showsOutput([](const QString& csv) {
        return csv.contains(",Main.F[4],Main.F[4],20.5,") && csv.contains(",declared,Main.I,-9,") &&
               csv.contains(",Main.S[1].level,Main.S[1].level,1.25,");
    }));
    run.type("Main.G[7]");
    run.type("Main.F[4]");
    EXPECT_TRUE(run.showsError("Main.F[4] = 20.5: read"));
    EXPECT_TRUE(run.errors().contains("Main.G[7] = 0.75: read"));
    EXPECT_TRUE(
        run.errors().contains("\"70000\" is not a value of Main.W: unsigned, 0 to 65535\n"));
    run.signal(SIGTERM);
    EXPECT_EQ(1, run.waitForEnd()) << "one of its writes was refused";
}

} // namespace tavmir::host
