// The command as a program: exit status, names of a project, bad arguments.
#include "made_capture.h"

#include "support/child_process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

using namespace tavmir::test;

namespace
{

class DiagnoseProgram : public testing::Test
{
protected:
    ProcessResult diagnose(const QStringList& arguments)
    {
        return runProcess(TAVMIR_HOST_PROGRAM, QStringList("diagnose") + arguments);
    }

    // A capture with one exchange about Main.Setpoint of the example project.
    QString captureOf(const std::string& reply)
    {
        MadeCapture capture(kRawIp, FileKind::pcapng);
        MadeConnection line(capture);
        line.connect(0);
        line.request(1, readWords(0, {3016}));
        line.reply(2, reply);
        line.close(3, true);
        return QString::fromStdString(folder.writeFile("made.pcapng", capture.bytes()));
    }

    TemporaryFolder folder;
};

} // namespace

TEST_F(DiagnoseProgram, EndsWithZeroWhenAllIsWell)
{
    const auto result = diagnose({captureOf(words(0, {{3016, 1500}}))});
    EXPECT_EQ(0, result.exitStatus);
    EXPECT_EQ("", result.errors.toStdString());
    EXPECT_TRUE(result.output.contains("all is well")) << result.output.toStdString();
}

TEST_F(DiagnoseProgram, EndsWithOneWhenSomethingIsWrongAndNamesItAsTheProjectDoes)
{
    const auto result = diagnose({captureOf(refused(0, 102, 2)), TAVMIR_EXAMPLE_PROJECT});
    EXPECT_EQ(1, result.exitStatus);
    EXPECT_EQ("", result.errors.toStdString());
    EXPECT_TRUE(result.output.contains("Main.Setpoint (word at 3016 of station 1)"))
        << result.output.toStdString();
}

TEST_F(DiagnoseProgram, PrintsOneJsonObject)
{
    const auto result = diagnose({"--json", captureOf(words(0, {{3016, 1500}}))});
    EXPECT_EQ(0, result.exitStatus);
    EXPECT_TRUE(result.output.startsWith("{\"begin\":\"2001-09-09T01:46:40.000Z\""));
    EXPECT_EQ(1, result.output.count('\n'));
}

TEST_F(DiagnoseProgram, LooksAtTheAskedPortOnly)
{
    const QString file = captureOf(words(0, {{3016, 1500}}));
    EXPECT_EQ(0, diagnose({file, "--port", "5020"}).exitStatus);
    const auto result = diagnose({file, "--port", "5021"});
    EXPECT_EQ(1, result.exitStatus);
    EXPECT_TRUE(result.output.contains("no frame of this protocol is in it\n"));
}

TEST_F(DiagnoseProgram, RefusesWhatItCannotRead)
{
    const QString good = captureOf(words(0, {{3016, 1500}}));
    const QString text =
        QString::fromStdString(folder.writeFile("text", "this is no capture at all"));
    struct Case {
        QStringList arguments;
        QString says;
    };
    for (const Case& one :
         {Case{{}, "usage: tavmir-host diagnose FILE [PROJECT]"},
          Case{{good, "a", "b"}, "usage: tavmir-host diagnose FILE [PROJECT]"},
          Case{{good, "--port", "0"}, "--port 0: must be a whole number from 1 to 65535"},
          Case{{good, "--color"}, "Unknown option 'color'."},
          Case{{"/none/such"}, "/none/such: No such file or directory"},
          Case{{text}, text + ": unknown file format"}, Case{{good, text}, text + ":"}}) {
        const auto result = diagnose(one.arguments);
        EXPECT_EQ(2, result.exitStatus) << one.says.toStdString();
        EXPECT_TRUE(result.errors.startsWith("tavmir-host: " + one.says))
            << result.errors.toStdString();
        EXPECT_EQ("", result.output.toStdString());
    }
}

TEST_F(DiagnoseProgram, ListsItsOptions)
{
    const auto result = diagnose({"--help"});
    EXPECT_EQ(0, result.exitStatus);
    for (const char* option : {"--port <N>", "--json", "diagnose FILE [PROJECT]"}) {
        EXPECT_TRUE(result.output.contains(option)) << option << result.output.toStdString();
    }
}
