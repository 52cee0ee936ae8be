// How broken duties are told: one block each, once a place, whole, where the setting says.
#include "checked/forked_host.h"
#include "checked/small_host.h"
#include "support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

namespace tavmir::checked_tests
{
namespace
{

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

void handOverAnotherReply()
{
    setUpPolling(QList<const char*>() << "Main.Row[0]", 2);
    QByteArray reply = replyTo(*ComCommunication());
    reply[1] = 9;
    DataCom(&reply, reply.size());
}

void writeTooFew(int times)
{
    setUp();
    for (int i = 0; i < times; ++i) {
        QByteArray data(1, '\1');
        SetRegisterData("Main.W", 0, QString(), 1, &data, 1, 1, 1);
    }
}

TEST(CheckReport, NamesDutyCallThreadBytesConsequenceAndCallers)
{
    const HostRun run = runHost(&handOverAnotherReply, "report");
    EXPECT_THAT(run.reports, StartsWith("tavmir-check: reply-transaction\n  what:      DataCom on "
                                        "thread "));
    EXPECT_THAT(run.reports, HasSubstr("request: transaction 0, protocol 0, length 11, station 1, "
                                       "function 0x66, 2 elements\n"));
    EXPECT_THAT(run.reports, HasSubstr("reply:   transaction 9, "));
    EXPECT_THAT(run.reports, HasSubstr("bytes:   00 09 00 00 00 0F 01 66 02 00 00 27 10 00 00"));
    EXPECT_THAT(run.reports, HasSubstr("\n  duty:      Bytes 0 and 1 of a reply are "));
    EXPECT_THAT(run.reports, HasSubstr("\n  otherwise: The reply of another request is stored "));
    EXPECT_THAT(run.reports, HasSubstr("\n  called from:\n    #0  "));
    EXPECT_THAT(run.reports, HasSubstr("checked_driver_tests+0x")) << "the caller's file";
    EXPECT_THAT(run.reports, HasSubstr("\n    #1  ")) << "the caller's caller";
#if !defined(__arm__) // its C library starts a program by a function that has no symbol
    EXPECT_THAT(run.reports, HasSubstr("__libc_start_main")) << "a caller that has a symbol";
#endif
}

TEST(CheckReport, AReplyInALargerBufferIsComparedAllTheSame)
{
    const HostRun run = runHost(
        [] {
            setUpPolling(QList<const char*>() << "Main.Row[0]", 2);
            QByteArray buffer = replyTo(*ComCommunication());
            const int received = buffer.size();
            buffer[1] = 9;
            buffer += QByteArray(40, '\0');
            DataCom(&buffer, received);
        },
        "report");
    EXPECT_THAT(run.ids(), ElementsAre("received-size", "reply-transaction"));
}

TEST(CheckReport, APlaceIsToldOnceAndCountedAtTheEnd)
{
    const HostRun run = runHost([] { writeTooFew(7); }, "report", Ending::ByExit);
    EXPECT_THAT(run.ids(), ElementsAre("set-data-size"));
    EXPECT_THAT(run.reports, HasSubstr("tavmir-check: in all\n         7 times set-data-size, "
                                       "called from 0x"));
}

TEST(CheckReport, TwoPlacesAreToldBoth)
{
    const HostRun run = runHost(
        [] {
            setUp();
            QByteArray data(1, '\1');
            SetRegisterData("Main.W", 0, QString(), 1, &data, 1, 1, 1);
            SetRegisterData("Main.W", 0, QString(), 1, &data, 1, 1, 1);
        },
        "report");
    EXPECT_THAT(run.ids(), ElementsAre("set-data-size", "set-data-size"));
}

TEST(CheckReport, GoesToStandardErrorWithoutASetting)
{
    for (const char* setting : {static_cast<const char*>(nullptr), "", "report"}) {
        const HostRun run = runHostWith([] { writeTooFew(1); }, setting);
        EXPECT_THAT(run.errors, HasSubstr("tavmir-check: set-data-size\n"));
        EXPECT_TRUE(run.endedWell());
    }
}

TEST(CheckReport, AbortEndsTheProcessBehindTheFirstBlock)
{
    const HostRun run = runHost(
        [] {
            writeTooFew(1);
            RW_VAR var = goodWrite();
            var.count = 3;
            AddListWriteVar(&var);
        },
        "abort");
    EXPECT_THAT(run.ids(), ElementsAre("set-data-size"));
    EXPECT_TRUE(run.ended && WIFSIGNALED(run.status) && WTERMSIG(run.status) == SIGABRT);
}

TEST(CheckReport, OnlyAndNotChooseWhatIsTold)
{
    EXPECT_THAT(runHost([] { writeTooFew(1); }, "not:set-data-size").ids(), IsEmpty());
    EXPECT_THAT(runHost([] { writeTooFew(1); }, "only:cycle-thread").ids(), IsEmpty());
    EXPECT_THAT(runHost([] { writeTooFew(1); }, "only:set-data-size").ids(),
                ElementsAre("set-data-size"));
}

TEST(CheckReport, AnUnknownWordIsSaidOnceAndTheDefaultUsed)
{
    const HostRun run = runHostWith([] { writeTooFew(3); }, "loudly");
    const std::string said = "tavmir-check: TAVMIR_CHECK does not know \"loudly\"\n";
    EXPECT_THAT(run.errors, HasSubstr(said));
    EXPECT_EQ(run.errors.find(said, run.errors.find(said) + 1), std::string::npos);
    EXPECT_THAT(run.errors, HasSubstr("tavmir-check: set-data-size\n"));
}

TEST(CheckReport, ALogThatCannotBeWrittenLeavesStandardError)
{
    const HostRun run = runHostWith([] { writeTooFew(1); }, "log:/no-such-folder/log");
    EXPECT_THAT(run.errors, HasSubstr("cannot write \"/no-such-folder/log\""));
    EXPECT_THAT(run.errors, HasSubstr("tavmir-check: set-data-size\n"));
}

TEST(CheckReport, ControlCharactersInAnAddressDoNotBreakTheBlock)
{
    const HostRun run = runHost(
        [] {
            setUp();
            RW_VAR var = goodWrite();
            var.count = 0;
            var.addressText = "Main.\nW";
            AddListWriteVar(&var);
        },
        "report");
    EXPECT_THAT(run.reports, HasSubstr("\"Main.?W\""));
}

const int kThreads = 8;
std::atomic<int> waiting;

// All threads go on together.
void meet(int round)
{
    ++waiting;
    while (waiting < kThreads * (round + 1)) {
        std::this_thread::yield();
    }
}

// A place of its own for each number: the calls must not become one.
template <int number> __attribute__((noinline)) void breakHere()
{
    meet(number % 50);
    RW_VAR var = goodWrite(number);
    var.count = 0;
    AddListWriteVar(&var);
}

template <int first> void breakAtFifty()
{
    if constexpr (first % 50 != 49) {
        breakHere<first>();
        breakAtFifty<first + 1>();
    } else {
        breakHere<first>();
    }
}

TEST(CheckReport, EightThreadsLoseAndMixNothing)
{
    const HostRun run = runHost(
        [] {
            setUp();
            std::vector<std::thread> threads;
            void (*const all[])() = {&breakAtFifty<0>,   &breakAtFifty<50>,  &breakAtFifty<100>,
                                     &breakAtFifty<150>, &breakAtFifty<200>, &breakAtFifty<250>,
                                     &breakAtFifty<300>, &breakAtFifty<350>};
            for (void (*one)() : all) {
                threads.emplace_back(one);
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
        },
        "report", Ending::ByExit);
    ASSERT_TRUE(run.endedWell()) << run.errors;

    static const std::regex whole(
        "tavmir-check: write-var-count\n"
        "  what:      AddListWriteVar on thread [0-9]+ was given a write of 0 elements\\.\n"
        "  detail:    address \"\", element address ([0-9]+), [^\n]*\n"
        "  duty:      [^\n]+\n  otherwise: [^\n]+\n  called from:\n(    #[0-9]+ [^\n]*\n)+");
    std::set<int> told;
    std::size_t at = 0;
    const std::size_t end = run.reports.find("tavmir-check: in all\n");
    ASSERT_NE(end, std::string::npos);
    while (at < end) {
        const std::size_t blockEnd = run.reports.find("\n\n", at);
        ASSERT_NE(blockEnd, std::string::npos);
        const std::string block = run.reports.substr(at, blockEnd + 1 - at);
        std::smatch parts;
        ASSERT_TRUE(std::regex_match(block, parts, whole)) << block;
        told.insert(std::stoi(parts[1]));
        at = blockEnd + 2;
    }
    EXPECT_EQ(told.size(), 400u);
    EXPECT_EQ(run.ids().size(), 400u);
}

// Longer than what a pipe takes in one piece.
QString longAddress()
{
    return "Main.Row[" + QString(6000, '0') + "]";
}

template <int number> __attribute__((noinline)) void breakAtLength()
{
    meet(number % 4);
    QByteArray none;
    SetRegisterData(longAddress(), 0, QString(), 1, &none, 0, 1, number);
}

template <int first> void breakAtLengthFourTimes()
{
    breakAtLength<first>();
    breakAtLength<first + 1>();
    breakAtLength<first + 2>();
    breakAtLength<first + 3>();
}

// Reads the pipe more slowly than it is filled, until nobody holds its other end any more.
std::string readSlowly(int pipe)
{
    std::string all;
    char piece[4096];
    for (int waited = 0; waited < 60000; ++waited) {
        const ssize_t count = ::read(pipe, piece, sizeof piece);
        if (count > 0) {
            all.append(piece, static_cast<std::size_t>(count));
        } else if (count == 0 && !all.empty()) {
            break;
        }
        ::usleep(1000);
    }
    return all;
}

// A process of its own: one with threads could not begin a host.
pid_t readInto(const std::string& file, int pipe)
{
    const pid_t child = ::fork();
    if (child == 0) {
        std::ofstream(file) << readSlowly(pipe);
        ::_exit(0);
    }
    return child;
}

TEST(CheckReport, BlocksOfEightThreadsStayWholeInAPipeThatIsFull)
{
    const test::TemporaryFolder folder;
    const std::string name = folder.path() + "/pipe";
    ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);
    const int pipe = ::open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(pipe, 0);
    const pid_t reading = readInto(folder.path() + "/reports", pipe);
    ASSERT_GT(reading, 0);
    const HostRun run = runHostWith(
        [] {
            setUp();
            std::vector<std::thread> threads;
            void (*const all[])() = {&breakAtLengthFourTimes<0>,  &breakAtLengthFourTimes<4>,
                                     &breakAtLengthFourTimes<8>,  &breakAtLengthFourTimes<12>,
                                     &breakAtLengthFourTimes<16>, &breakAtLengthFourTimes<20>,
                                     &breakAtLengthFourTimes<24>, &breakAtLengthFourTimes<28>};
            for (void (*one)() : all) {
                threads.emplace_back(one);
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
        },
        ("log:" + name).c_str());
    ::waitpid(reading, nullptr, 0);
    ::close(pipe);
    ASSERT_TRUE(run.endedWell()) << run.errors;
    std::stringstream all;
    all << std::ifstream(folder.path() + "/reports").rdbuf();
    const std::string reports = all.str();

    const std::string detail =
        "\n  detail:    address \"" + longAddress().toStdString() + "\"\n  duty:      ";
    int blocks = 0;
    std::size_t at = 0;
    while (at < reports.size()) {
        const std::size_t end = reports.find("\n\n", at);
        ASSERT_NE(end, std::string::npos);
        const std::string block = reports.substr(at, end - at);
        ASSERT_THAT(block, StartsWith("tavmir-check: count-below-one\n  what:      "));
        ASSERT_EQ(block.find("tavmir-check: ", 1), std::string::npos) << block;
        ASSERT_THAT(block, HasSubstr(detail));
        ++blocks;
        at = end + 2;
    }
    EXPECT_EQ(blocks, 32);
}

} // namespace
} // namespace tavmir::checked_tests
