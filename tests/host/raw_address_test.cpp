// Reads and writes by class and bit address, of what is no variable of the project.
#include "programs.h"

#include "support/child_process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>

namespace tavmir::host
{

namespace
{

class RawAddresses : public testing::Test
{
protected:
    std::string done(const QString& command, const QStringList& more) const
    {
        const auto result = test::runProcess(TAVMIR_HOST_PROGRAM,
                                             hostArguments(command, controller_.place(), more));
        EXPECT_EQ(0, result.exitStatus) << result.errors.toStdString();
        return result.output.toStdString();
    }
    std::string refused(const QString& command, const QString& argument) const
    {
        const auto result = test::runProcess(
            TAVMIR_HOST_PROGRAM, hostArguments(command, controller_.place(), {argument}));
        EXPECT_EQ(2, result.exitStatus) << argument.toStdString();
        EXPECT_EQ("", result.output.toStdString());
        return result.errors.toStdString();
    }

    Controller controller_;
};

} // namespace

TEST_F(RawAddresses, AreReadByClassAndBitAddress)
{
    EXPECT_EQ("@word:3016 = 1500\n@bit:100 = 1\n@dword:4128 = 4000000000\n",
              done("read", {"@word:3016", "@bit:100", "@dword:4128"}));
    EXPECT_EQ("@word:6000 = 26950\n@word:6016 = 27756\n", done("read", {"@word:6000:2"}));
    EXPECT_EQ("@dword:4128 = -294967296\n", done("read", {"@dword:4128", "--as", "signed"}));
    EXPECT_EQ("@word:3016 = 0x05DC\n", done("read", {"@word:3016", "--as", "hex"}));
    EXPECT_EQ(
        "{\"address\":\"@word:3016\",\"ageMs\":0,\"name\":\"@word:3016\",\"quality\":\"good\","
        "\"reason\":null,\"value\":1500}\n",
        done("read", {"@word:3016", "--format", "json"}));
}

TEST_F(RawAddresses, AreWrittenToo)
{
    EXPECT_EQ("@word:3016 = 5: written\n@bit:17 = 1: written\n@dword:2147483648 = 7: written\n"
              "@word:4294967280 = 0x8001: written\n",
              done("write", {"@word:3016=5", "@bit:17=1", "@dword:2147483648=7",
                             "@word:4294967280=0x8001"}));
    EXPECT_EQ(
        "Main.Setpoint = 5\n@bit:16 = 0\n@bit:17 = 1\n@bit:18 = 0\n"
        "@dword:2147483648 = 7\n@word:4294967280 = 32769\n",
        done("read", {"Main.Setpoint", "@bit:16:3", "@dword:2147483648", "@word:4294967280"}));
    done("write", {"@dword:90000=-0.5", "--as", "float"});
    EXPECT_EQ("@dword:90000 = -0.5\n", done("read", {"@dword:90000", "--as", "float"}));
}

TEST_F(RawAddresses, AreMeantAsThePolledElementThere)
{
    done("write", {"@dword:1144=2.5"});
    EXPECT_EQ("Main.Axis[1].Vel = 2.5\n@dword:1144 = 2.5\n",
              done("read", {"Main.Axis[1].Vel", "@dword:1144"}));
}

TEST_F(RawAddresses, AreAtTheStationOfTheCommandLineElseTheProjects)
{
    done("write", {"@word:50000=22", "--station", "2"});
    EXPECT_EQ("@word:50000 = 0\n", done("read", {"@word:50000"}));
    EXPECT_EQ("@word:50000 = 22\n", done("read", {"@word:50000", "--station", "2"}));
    const test::TemporaryFolder folder;
    const QString own = QString::fromStdString(folder.writeFile("own.json", R"({
        "connection": { "replyTimeoutMs": 20000, "stationMode": "own", "station": 2 },
        "labels": [ { "name": "L", "variables": [ { "name": "w", "type": "word", "address": 50000 } ] } ],
        "polled": [ { "address": "L.w", "station": 3 } ] })"));
    const QStringList arguments = {"read", own,          "--connect", controller_.place(),
                                   "L.w",  "@word:50000"};
    EXPECT_EQ("L.w = 0\n@word:50000 = 22\n",
              test::runProcess(TAVMIR_HOST_PROGRAM, arguments).output.toStdString());
}

TEST_F(RawAddresses, MayBeTypedWhileValuesRun)
{
    Program run(TAVMIR_HOST_PROGRAM,
                hostArguments("run", controller_.place(), {"--format", "csv", "--stdin"}));
    run.type("@word:3016=4711");
    run.type("@word:3016");
    EXPECT_TRUE(run.showsError("@word:3016 = 4711: read"));
    EXPECT_TRUE(run.errors().contains("@word:3016 = 4711: written"));
    run.signal(SIGTERM);
    EXPECT_EQ(0, run.waitForEnd());
}

TEST_F(RawAddresses, ThatAreNoneSayWhatIsAllowed)
{
    EXPECT_EQ("tavmir-host: address \"@real:5000\": no class \"real\": bit, word or dword\n",
              refused("read", "@real:5000"));
    EXPECT_EQ(
        "tavmir-host: address \"@word:3017\": a word begins at a multiple of 8, such as 3016, "
        "not at 3017\n",
        refused("read", "@word:3017"));
    EXPECT_EQ("tavmir-host: address \"@dword:4294967296\": \"4294967296\" is no bit address of a "
              "dword: 0 to 4294967264\n",
              refused("write", "@dword:4294967296=1"));
    EXPECT_EQ("tavmir-host: address \"@word:16:2\": stands for 2 elements\n",
              refused("write", "@word:16:2=1"));
    EXPECT_EQ("tavmir-host: \"70000\" is not a value of @word:16: unsigned, 0 to 65535\n",
              refused("write", "@word:16=70000"));
}

} // namespace tavmir::host
