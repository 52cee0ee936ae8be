// The trace of a feed in a file, on a full disk, and with a reader that does not read.
#include "feed/made_exchange.h"
#include "host/trace_output.h"
#include "support/temporary_folder.h"

#include <QtCore/QFile>

#include <gmock/gmock.h>

#include <atomic>
#include <climits>
#include <fcntl.h>
#include <functional>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

Exchange someExchange()
{
    Exchange exchange = madeRead(kReadWords, 1, {{160, 7}}, Clock::now());
    exchange.endedWall = WallClock::now();
    return exchange;
}

TraceOptions into(const std::string& file)
{
    return {true, false, QString::fromStdString(file)};
}

std::string contentOf(const std::string& name)
{
    QFile file(QString::fromStdString(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().toStdString();
}

// All that comes from a descriptor that does not block, until `done` is.
std::string readWhile(int descriptor, const std::function<void()>& done)
{
    std::string text;
    std::atomic<bool> isDone{false};
    std::thread reader([&] {
        char piece[65536];
        for (;;) {
            const bool isLast = isDone;
            const ssize_t got = ::read(descriptor, piece, sizeof piece);
            if (got > 0) {
                text.append(piece, static_cast<size_t>(got));
            } else if (isLast) {
                break;
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
    });
    done();
    isDone = true;
    reader.join();
    return text;
}

// Exchanges in a trace.
size_t toldIn(const std::string& text)
{
    size_t told = 0;
    for (size_t at = text.find(" > "); at != text.npos; at = text.find(" > ", at + 1)) {
        ++told;
    }
    return told;
}

// Those that it says are missing.
size_t missedIn(const std::string& text)
{
    const std::string words = "connection 0 - missed ";
    size_t missed = 0;
    for (size_t at = text.find(words); at != text.npos; at = text.find(words, at + 1)) {
        missed += std::stoul(text.substr(at + words.size(), 12));
    }
    return missed;
}

} // namespace

TEST(TraceOutput, WritesWhatTheFeedTellsIntoItsFile)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.writeFile("trace.txt", "what stood there before");
    Feed feed;
    TraceOutput trace(into(file), project::ElementNames());
    ASSERT_EQ("", trace.open().toStdString());
    EXPECT_EQ("", contentOf(file)) << "it is made anew";
    trace.start(feed);
    feed.publish(someExchange());
    trace.finish();
    EXPECT_EQ("", trace.takeProblem().toStdString());
    EXPECT_THAT(contentOf(file),
                testing::MatchesRegex(
                    "[^ ]*Z connection 0 > #4660 station 1 read words: 160\n"
                    "[^ ]*Z connection 0 < #4660 station 1 read words: 160=7 .\\+1.000 ms.\n"));
    EXPECT_FALSE(feed.isRead());
}

TEST(TraceOutput, AFileThatCannotBeMadeIsNamed)
{
    TraceOutput trace(into("/nowhere/trace.txt"), project::ElementNames());
    EXPECT_EQ("--trace=/nowhere/trace.txt: No such file or directory", trace.open().toStdString());
}

TEST(TraceOutput, AFullDiskIsToldOnceAndNothingMoreIsReadForIt)
{
    Feed feed;
    TraceOutput trace(into("/dev/full"), project::ElementNames());
    ASSERT_EQ("", trace.open().toStdString());
    trace.start(feed);
    while (feed.isRead()) { // until it has seen the error
        feed.publish(someExchange());
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ("the trace cannot be written: No space left on device",
              trace.takeProblem().toStdString());
    EXPECT_EQ("", trace.takeProblem().toStdString());
    trace.finish();
    EXPECT_EQ("", trace.takeProblem().toStdString());
}

TEST(TraceOutput, AReaderThatDoesNotReadHoldsNobodyUpAndFindsAGap)
{
    const test::TemporaryFolder folder;
    const std::string fifo = folder.writeFile("fifo", "");
    ::unlink(fifo.c_str());
    ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0600));
    const int reading = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reading, 0);
    Feed feed(64);
    TraceOutput trace(into(fifo), project::ElementNames());
    ASSERT_EQ("", trace.open().toStdString());
    trace.start(feed);
    // More than pipe, output and feed hold.
    const size_t most = Output::kMostWaiting / 60;
    for (size_t i = 0; i < most; ++i) {
        feed.publish(someExchange());
    }
    const std::string text = readWhile(reading, [&] { trace.finish(); });
    ::close(reading);
    EXPECT_EQ("", trace.takeProblem().toStdString());
    EXPECT_EQ('\n', text.back());
    EXPECT_GT(missedIn(text), 0U);
    EXPECT_EQ(most, toldIn(text) + missedIn(text));
}

TEST(TraceOutput, WhatASlowReaderLosesIsCountedToTheLastOne)
{
    const test::TemporaryFolder folder;
    const std::string fifo = folder.writeFile("fifo", "");
    ::unlink(fifo.c_str());
    ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0600));
    const int reading = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reading, 0);
    Feed feed(64);
    TraceOutput trace(into(fifo), project::ElementNames(), 2 * PIPE_BUF);
    ASSERT_EQ("", trace.open().toStdString());
    trace.start(feed);
    size_t published = 0;
    const auto publishSome = [&] {
        for (int i = 0; i < 16; ++i, ++published) {
            feed.publish(someExchange());
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    const auto waiting = [&] {
        int bytes = 0;
        ::ioctl(reading, FIONREAD, &bytes);
        return bytes;
    };
    const int halfAPipe = ::fcntl(reading, F_GETPIPE_SZ) / 2;
    while (waiting() < halfAPipe) {
        publishSome();
    }
    for (int i = 0; i < 300; ++i) { // now that nobody takes anything
        publishSome();
    }
    const std::string text = readWhile(reading, [&] { trace.finish(); });
    ::close(reading);
    EXPECT_EQ("", trace.takeProblem().toStdString());
    EXPECT_GT(missedIn(text), 0U);
    EXPECT_EQ(published, toldIn(text) + missedIn(text));
}

} // namespace tavmir::host
