// Whoever reads the host's output may stop reading: that holds up neither the communication nor
// the end.
#include "full_pipe.h"
#include "programs.h"

#include "session/fake_controller.h"
#include "support/wait_until.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

const QString kHost = TAVMIR_HOST_PROGRAM;
constexpr int kEndMs = 60000; // the programs need a fraction of it
const char kReads[] = "dfl";

// Long enough for a program with --interval 20 to have run into the full pipe many times.
constexpr int kSettleMs = 600;

void settle()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(kSettleMs));
}

class BlockedOutput : public testing::Test
{
protected:
    QString place() const { return QString("127.0.0.1:%1").arg(controller_.port()); }

    QStringList run(const QStringList& more = {})
    {
        return hostArguments("run", place(), QStringList{"--interval", "20"} + more);
    }

    bool polled(size_t more)
    {
        const size_t before = controller_.count(kReads);
        return test::waitUntil([&] { return controller_.count(kReads) > before + more; }, kEndMs);
    }

    // The controller closes its connections: the program comes back each time.
    void expectReconnects()
    {
        const int before = controller_.connections();
        controller_.judge(kReads, [](const QByteArray&, int number) {
            return number % 40 == 0 ? Mood::closes : Mood::answers;
        });
        ASSERT_TRUE(test::waitUntil([&] { return controller_.connections() > before + 5; }, kEndMs))
            << controller_.connections();
        EXPECT_TRUE(polled(100));
    }

    FakeController controller_;
    FullPipe pipe_;
};

} // namespace

TEST_F(BlockedOutput, OfLinesHoldsUpNoReconnect)
{
    Program host(kHost, run({"--format", "csv"}), pipe_.path());
    ASSERT_TRUE(polled(50));
    settle();
    expectReconnects();
}

TEST_F(BlockedOutput, OfObjectsHoldsUpNoReconnect)
{
    Program host(kHost, run({"--format", "json"}), pipe_.path());
    ASSERT_TRUE(polled(50));
    settle();
    expectReconnects();
}

TEST_F(BlockedOutput, OfTablesHoldsUpNoReconnect)
{
    Program host(kHost, run(), pipe_.path());
    ASSERT_TRUE(polled(50));
    settle();
    expectReconnects();
}

TEST_F(BlockedOutput, OfMessagesHoldsUpNoReconnect)
{
    Program host(kHost, run({"--format", "csv"}), "/dev/null", pipe_.path());
    ASSERT_TRUE(polled(50));
    settle();
    expectReconnects();
}

TEST_F(BlockedOutput, OfBothHoldsUpNoReconnect)
{
    Program host(kHost, run(), pipe_.path(), pipe_.path());
    ASSERT_TRUE(polled(50));
    settle();
    expectReconnects();
}

TEST_F(BlockedOutput, EndsWithOneSignal)
{
    for (const int number : {SIGTERM, SIGINT}) {
        for (const char* format : {"csv", "json", "table"}) {
            Program host(kHost, run({"--format", format}), pipe_.path());
            ASSERT_TRUE(polled(50));
            settle();
            host.signal(number);
            ASSERT_TRUE(host.endsWithin(kEndMs)) << format << ", signal " << number;
        }
    }
}

TEST_F(BlockedOutput, OfMessagesEndsWithOneSignal)
{
    Program host(kHost, run({"--format", "csv"}), "/dev/null", pipe_.path());
    ASSERT_TRUE(polled(50));
    settle();
    host.signal(SIGTERM);
    ASSERT_TRUE(host.endsWithin(kEndMs));
}

TEST_F(BlockedOutput, EndsAfterItsDuration)
{
    Program host(kHost, run({"--duration", "0.5"}), pipe_.path());
    ASSERT_TRUE(host.endsWithin(kEndMs));
}

TEST_F(BlockedOutput, SecondInterruptEndsAtOnce)
{
    Program host(kHost, run({"--format", "csv"}), pipe_.path(), pipe_.path());
    ASSERT_TRUE(polled(50));
    settle();
    host.signal(SIGINT);
    host.signal(SIGINT);
    ASSERT_TRUE(host.endsWithin(kEndMs));
}

// A report that nobody takes does not keep a program that is interrupted.
TEST_F(BlockedOutput, OfAWritesReportEndsWithTheSecondInterrupt)
{
    controller_.treat("g", Mood::silent);
    Program host(kHost, hostArguments("write", place(), {"Main.Setpoint=1"}), pipe_.path(),
                 pipe_.path());
    ASSERT_TRUE(test::waitUntil([&] { return controller_.count("g") > 0; }));
    host.signal(SIGINT);
    settle();
    host.signal(SIGINT);
    ASSERT_TRUE(host.endsWithin(kEndMs));
}

// Rows may be left out while nobody reads; those that come are whole, and the heading is first.
TEST_F(BlockedOutput, LinesAreWholeWhenSomebodyReadsAgain)
{
    Program host(kHost, run({"--format", "csv"}), pipe_.path());
    ASSERT_TRUE(polled(50));
    settle();
    ASSERT_TRUE(pipe_.gives([](const QByteArray& text) { return text.count('\n') > 300; }));
    const QList<QByteArray> lines = pipe_.taken().split('\n');
    EXPECT_TRUE(lines.first().startsWith("time,")) << lines.first().toStdString();
    const int commas = lines.first().count(',');
    for (int i = 1; i + 1 < lines.size(); ++i) {
        int found = 0;
        bool quoted = false;
        for (const char byte : lines[i]) {
            quoted = quoted != (byte == '"');
            found += byte == ',' && !quoted ? 1 : 0;
        }
        EXPECT_EQ(commas, found) << lines[i].toStdString();
    }
    host.signal(SIGTERM);
    EXPECT_TRUE(pipe_.gives([&](const QByteArray&) { return host.endsWithin(1); }));
}

} // namespace tavmir::host
