// The probe as a program: what it says last, and the status that it ends with.
#include "probe/scripted_controller.h"
#include "support/child_process.h"

#include <gtest/gtest.h>

using namespace tavmir::test;

namespace
{

ProcessResult probe(const QStringList& arguments)
{
    return runProcess(TAVMIR_PROBE_PROGRAM, arguments);
}

QStringList ofDriver(const QStringList& more)
{
    return QStringList() << "--library" << TAVMIR_DRIVER_FILE << more;
}

std::string lastLineOf(const QString& output)
{
    return output.trimmed().section('\n', -1).toStdString();
}

TEST(ProbeProgram, TheDriverIsOk)
{
    const ProcessResult result = probe(ofDriver(QStringList()));
    EXPECT_EQ(0, result.exitStatus);
    EXPECT_EQ("OK", lastLineOf(result.output));
    EXPECT_TRUE(result.output.contains("version    " TAVMIR_VERSION " (probe " TAVMIR_VERSION ")"));
    EXPECT_TRUE(result.output.contains("names      22 of 22 resolved\n"));
}

TEST(ProbeProgram, ALibraryThatIsNotThereIsNot)
{
    const ProcessResult result = probe(QStringList() << "--library"
                                                     << "/nowhere/driver.so");
    EXPECT_EQ(1, result.exitStatus);
    EXPECT_EQ("NOT OK", lastLineOf(result.output));
}

TEST(ProbeProgram, ALibraryWithOneNameOnlyIsNot)
{
    const ProcessResult result = probe(QStringList() << "--library" << TAVMIR_ONE_NAME_LIBRARY);
    EXPECT_EQ(1, result.exitStatus);
    EXPECT_EQ("NOT OK", lastLineOf(result.output));
    EXPECT_TRUE(result.output.contains("names      1 of 22 resolved\n"));
    EXPECT_TRUE(result.output.contains("missing    DataCom\n"));
}

TEST(ProbeProgram, AReadIsShown)
{
    const ScriptedController controller(addressPlusFive);
    const QString place = QString("127.0.0.1:%1").arg(controller.port());
    const ProcessResult result = probe(ofDriver(QStringList() << "--connect" << place << "--read"
                                                              << "word:3000:2"));
    EXPECT_EQ(0, result.exitStatus);
    EXPECT_TRUE(
        result.output.contains("value      [0] 3005 (0xBBD)\nvalue      [1] 3021 (0xBCD)\n"));
    EXPECT_EQ("OK", lastLineOf(result.output));
}

TEST(ProbeProgram, AReadThatFailsIsAFailure)
{
    const ScriptedController controller([](const QByteArray&) { return QByteArray("nothing"); });
    const QString place = QString("127.0.0.1:%1").arg(controller.port());
    const ProcessResult result = probe(ofDriver(QStringList() << "--connect" << place << "--read"
                                                              << "word:3000"));
    EXPECT_EQ(1, result.exitStatus);
    EXPECT_EQ("NOT OK", lastLineOf(result.output));
}

TEST(ProbeProgram, WrongUsageHasAStatusOfItsOwn)
{
    const ProcessResult result = probe(QStringList() << "--connect"
                                                     << "nowhere");
    EXPECT_EQ(2, result.exitStatus);
    EXPECT_EQ("", result.output.toStdString());
    EXPECT_TRUE(result.errors.contains("--connect wants HOST:PORT"));
}

TEST(ProbeProgram, HelpAndVersionAreNoFailures)
{
    EXPECT_EQ(0, probe(QStringList() << "--help").exitStatus);
    const ProcessResult version = probe(QStringList() << "--version");
    EXPECT_EQ(0, version.exitStatus);
    EXPECT_EQ("tavmir-probe " TAVMIR_VERSION "\n", version.output.toStdString());
}

} // namespace
