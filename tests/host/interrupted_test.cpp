// Writes under way when a program is interrupted are reported: what was sent may have been
// carried out, what was not sent has not.
#include "programs.h"

#include "session/fake_controller.h"
#include "support/wait_until.h"

#include <gtest/gtest.h>

#include <csignal>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

const QString kHost = TAVMIR_HOST_PROGRAM;

class Interrupted : public testing::Test
{
protected:
    QString place() const { return QString("127.0.0.1:%1").arg(controller_.port()); }

    // The line about the write; empty: none.
    static std::string lineOf(const QString& text, const QString& assignment)
    {
        std::string found;
        for (const QString& line : text.split('\n')) {
            if (line.contains(assignment + ": ")) {
                found += line.toStdString();
            }
        }
        return found;
    }

    static bool says(const QString& text, const QString& assignment, const std::string& words)
    {
        return lineOf(text, assignment).find(words) != std::string::npos;
    }

    FakeController controller_;
};

} // namespace

TEST_F(Interrupted, WriteSaysWhatMayHaveBeenCarriedOutAndWhatWasNotSent)
{
    for (const int number : {SIGINT, SIGTERM}) {
        controller_.treat("gm", Mood::loses);
        const size_t before = controller_.count("g");
        Program host(kHost, hostArguments("write", place(),
                                          {"Main.Setpoint=1", "Main.Recipe[0]=2",
                                           "Main.Mode.b[2]=1", "Main.Temp=2.5"}));
        ASSERT_TRUE(test::waitUntil([&] { return controller_.count("g") > before; }));
        host.signal(number);
        EXPECT_EQ(1, host.waitForEnd());
        const QString& errors = host.errors();
        EXPECT_TRUE(says(errors, "Main.Setpoint = 1", "unknown")) << errors.toStdString();
        EXPECT_TRUE(says(errors, "Main.Recipe[0] = 2", "not sent")) << errors.toStdString();
        EXPECT_TRUE(says(errors, "Main.Mode.b[2] = 1", "not sent")) << errors.toStdString();
        EXPECT_TRUE(says(errors, "Main.Temp = 2.5", "not sent")) << errors.toStdString();
        EXPECT_EQ("", host.output().toStdString());
    }
}

TEST_F(Interrupted, WriteSaysWhatWasDoneBefore)
{
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::answers : Mood::loses;
    });
    Program host(kHost, hostArguments("write", place(),
                                      {"Main.Mode.b[2]=1", "Main.Setpoint=1", "Main.Recipe[0]=2"}));
    ASSERT_TRUE(test::waitUntil([&] { return controller_.count("g") > 1; }));
    host.signal(SIGINT);
    EXPECT_EQ(1, host.waitForEnd());
    EXPECT_EQ("Main.Mode.b[2] = 1: written\n", host.output().toStdString());
    EXPECT_TRUE(says(host.errors(), "Main.Setpoint = 1", "unknown")) << host.errors().toStdString();
    EXPECT_TRUE(says(host.errors(), "Main.Recipe[0] = 2", "not sent"))
        << host.errors().toStdString();
}

TEST_F(Interrupted, WriteThatWaitsForTheControllerIsNotSent)
{
    controller_.unplug();
    Program host(kHost, hostArguments("write", place(),
                                      {"Main.Setpoint=1", "--timeout", "60000", "--trace"}));
    // Several attempts: it goes on waiting.
    ASSERT_TRUE(host.showsErrors([](const QString& text) {
        return text.count("cannot connect") > 3;
    })) << host.errors().toStdString();
    ASSERT_FALSE(host.hasEnded());
    host.signal(SIGINT);
    EXPECT_EQ(1, host.waitForEnd());
    EXPECT_TRUE(says(host.errors(), "Main.Setpoint = 1", "not sent"))
        << host.errors().toStdString();
}

TEST_F(Interrupted, RunReportsTheWriteUnderWay)
{
    controller_.treat("g", Mood::loses);
    Program host(kHost, hostArguments("run", place(), {"--format", "csv", "--stdin"}));
    host.type("Main.Setpoint=1");
    ASSERT_TRUE(test::waitUntil([&] { return controller_.count("g") > 0; }));
    host.signal(SIGINT);
    EXPECT_EQ(1, host.waitForEnd()) << "a write was not done";
    EXPECT_TRUE(says(host.errors(), "Main.Setpoint = 1", "unknown")) << host.errors().toStdString();
    EXPECT_FALSE(host.errors().contains("1 dropped")) << host.errors().toStdString();
}

} // namespace tavmir::host
