// Reads and writes wait for a controller that is not there yet, as long as --timeout says.
#include "programs.h"

#include "link/test_server.h"
#include "support/child_process.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

const QString kHost = TAVMIR_HOST_PROGRAM;

// Many times what a program needs that does not wait at all, or waits for the retries only.
constexpr int kAbsentMs = 2500;

QString placeOf(int port)
{
    return QString("127.0.0.1:%1").arg(port);
}

} // namespace

TEST(WaitingForController, WriteIsDoneWhenItComes)
{
    const int port = closedPort();
    Program host(kHost, hostArguments("write", placeOf(port),
                                      {"Main.Setpoint=4711", "Main.Mode.b[2]=1", "Main.Title=late",
                                       "--timeout", "60000"}));
    ASSERT_FALSE(host.endsWithin(kAbsentMs)) << host.errors().toStdString();
    const Controller controller(port);
    ASSERT_EQ(port, controller.port());
    EXPECT_EQ(0, host.waitForEnd()) << host.errors().toStdString();
    EXPECT_EQ("Main.Setpoint = 4711: written\nMain.Mode.b[2] = 1: written\n"
              "Main.Title = late: written\n",
              host.output().toStdString());
}

TEST(WaitingForController, ReadIsDoneWhenItComes)
{
    const int port = closedPort();
    Program host(kHost, hostArguments("read", placeOf(port),
                                      {"Main.Setpoint", "Main.Title", "--timeout", "60000"}));
    ASSERT_FALSE(host.endsWithin(kAbsentMs)) << host.errors().toStdString();
    const Controller controller(port);
    ASSERT_EQ(port, controller.port());
    EXPECT_EQ(0, host.waitForEnd()) << host.errors().toStdString();
    EXPECT_EQ("Main.Setpoint = 1500\nMain.Title = Filling line 1\n", host.output().toStdString());
}

TEST(WaitingForController, WriteIsNotSentWhenItDoesNotCome)
{
    const auto written = test::runProcess(
        kHost, hostArguments("write", placeOf(closedPort()),
                             {"Main.Setpoint=1", "Main.Title=x", "--timeout", "300"}));
    EXPECT_EQ(1, written.exitStatus);
    EXPECT_EQ("", written.output.toStdString());
    EXPECT_EQ(2, written.errors.count("not sent")) << written.errors.toStdString();
    EXPECT_EQ(2, written.errors.count('\n')) << written.errors.toStdString();
}

} // namespace tavmir::host
