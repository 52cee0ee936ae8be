// Output that never waits for who reads it.
#include "host/output.h"

#include "support/wait_until.h"

#include <QtCore/QList>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

constexpr int kPatientMs = 30000;
constexpr int kPipeBytes = 4096; // the least a pipe can have

class Pipe
{
public:
    Pipe()
    {
        int ends[2] = {-1, -1};
        EXPECT_EQ(0, ::pipe2(ends, O_CLOEXEC));
        reading_ = ends[0];
        writing_ = ends[1];
        EXPECT_EQ(kPipeBytes, ::fcntl(writing_, F_SETPIPE_SZ, kPipeBytes));
    }
    ~Pipe()
    {
        closeReading();
        closeWriting();
    }

    int writing() const { return writing_; }
    void closeReading() { closeOne(reading_); }
    void closeWriting() { closeOne(writing_); }

    // Not one byte more fits.
    void fill()
    {
        const QByteArray filling(kPipeBytes, '.');
        EXPECT_EQ(kPipeBytes, ::write(writing_, filling.constData(), kPipeBytes));
    }

    // What comes until nothing does for `quietMs`, or the end.
    QByteArray readUntilQuiet(int quietMs)
    {
        QByteArray all;
        pollfd wait = {reading_, POLLIN, 0};
        while (::poll(&wait, 1, quietMs) > 0) {
            const QByteArray piece = readSome();
            if (piece.isEmpty()) {
                break;
            }
            all += piece;
        }
        return all;
    }

    QByteArray readBytes(int count)
    {
        QByteArray all;
        while (all.size() < count) {
            pollfd wait = {reading_, POLLIN, 0};
            if (::poll(&wait, 1, kPatientMs) <= 0) {
                break;
            }
            all += readSome();
        }
        return all;
    }

private:
    static void closeOne(int& descriptor)
    {
        if (descriptor >= 0) {
            ::close(descriptor);
            descriptor = -1;
        }
    }
    QByteArray readSome() const
    {
        QByteArray piece(kPipeBytes, '\0');
        const ssize_t size = ::read(reading_, piece.data(), kPipeBytes);
        piece.resize(static_cast<int>(std::max<ssize_t>(0, size)));
        return piece;
    }

    int reading_ = -1;
    int writing_ = -1;
};

// A full pipe is emptied down to what was written behind the filling.
QByteArray behindFilling(const QByteArray& bytes)
{
    EXPECT_EQ(QByteArray(kPipeBytes, '.'), bytes.left(kPipeBytes));
    return bytes.mid(kPipeBytes);
}

class OutputTest : public testing::Test
{
protected:
    void SetUp() override { ::signal(SIGPIPE, SIG_IGN); }

    Pipe pipe_;
};

int msSince(std::chrono::steady_clock::time_point start)
{
    return static_cast<int>((std::chrono::steady_clock::now() - start) /
                            std::chrono::milliseconds(1));
}

} // namespace

TEST_F(OutputTest, PiecesComeWholeAndInOrder)
{
    Output output(pipe_.writing());
    QByteArray expected;
    for (int i = 0; i < 2000; ++i) {
        const QByteArray piece = QByteArray::number(i) + '\n';
        expected += piece;
        output.write(piece);
    }
    EXPECT_EQ(expected, pipe_.readBytes(expected.size()));
    EXPECT_TRUE(output.finish(kPatientMs));
    EXPECT_FALSE(output.isBehind());
    EXPECT_EQ(0u, output.dropped());
    EXPECT_EQ(0, output.error());
}

TEST_F(OutputTest, APieceMayBeLongerThanThePipe)
{
    Output output(pipe_.writing());
    QByteArray piece;
    for (int i = 0; i < 100000; ++i) {
        piece += static_cast<char>(i * 31 >> 3);
    }
    output.write(piece);
    EXPECT_EQ(piece, pipe_.readBytes(piece.size()));
    EXPECT_TRUE(output.finish(kPatientMs));
}

TEST_F(OutputTest, ADescriptorThatDoesNotBlockIsWaitedForToo)
{
    ASSERT_EQ(0, ::fcntl(pipe_.writing(), F_SETFL, O_NONBLOCK));
    Output output(pipe_.writing());
    const QByteArray piece(50000, 'x');
    output.write(piece);
    EXPECT_EQ(piece, pipe_.readBytes(piece.size()));
    EXPECT_TRUE(output.finish(kPatientMs));
    EXPECT_EQ(0, output.error());
}

TEST_F(OutputTest, WhatIsTooMuchIsDroppedWholeAndCounted)
{
    pipe_.fill();
    Output output(pipe_.writing(), 1000);
    QByteArray expected;
    for (char letter = 'a'; letter < 'a' + 10; ++letter) {
        output.write(QByteArray(100, letter));
        expected += QByteArray(100, letter);
    }
    EXPECT_EQ(0u, output.dropped()) << "exactly what may wait";
    EXPECT_TRUE(output.isBehind());
    output.write("x");
    EXPECT_EQ(1u, output.dropped());
    output.write(QByteArray(500, 'y'));
    EXPECT_EQ(2u, output.dropped());
    EXPECT_EQ(expected, behindFilling(pipe_.readBytes(kPipeBytes + 1000)));
    EXPECT_TRUE(output.finish(kPatientMs));
    output.write(QByteArray(1000, 'z'));
    EXPECT_EQ(QByteArray(1000, 'z'), pipe_.readBytes(1000)) << "there is room again";
    EXPECT_TRUE(output.finish(kPatientMs));
    EXPECT_EQ(2u, output.dropped());
    EXPECT_EQ(0, output.error());
}

TEST_F(OutputTest, APieceThatNothingWaitsBeforeIsTakenHoweverLarge)
{
    Output output(pipe_.writing(), 1000);
    output.write(QByteArray(5000, 'z'));
    EXPECT_EQ(QByteArray(5000, 'z'), pipe_.readBytes(5000));
    EXPECT_EQ(0u, output.dropped());
}

TEST_F(OutputTest, WhoWaitsForRoomLosesNothingUntilItIsToldToHurry)
{
    pipe_.fill();
    Output output(pipe_.writing(), 1000);
    output.waitForRoom();
    std::atomic<int> written{0};
    std::thread writer([&] {
        for (int i = 0; i < 4; ++i) {
            output.write(QByteArray(600, static_cast<char>('a' + i)));
            ++written;
        }
    });
    EXPECT_TRUE(test::waitUntil([&] { return written == 1; }));
    EXPECT_EQ(QByteArray(600, 'a') + QByteArray(600, 'b'),
              behindFilling(pipe_.readBytes(kPipeBytes + 1200)));
    output.hurry();
    writer.join();
    EXPECT_LE(output.dropped(), 2u) << "only what waited when it was told to hurry";
    EXPECT_EQ(4, written);
}

TEST_F(OutputTest, FourMillionBytesMayWait)
{
    pipe_.fill();
    Output output(pipe_.writing());
    constexpr int kPiece = 1 << 16;
    for (int i = 0; i < 64; ++i) {
        output.write(QByteArray(kPiece, 'x'));
    }
    EXPECT_EQ(0u, output.dropped());
    output.write("x");
    EXPECT_EQ(1u, output.dropped());
}

TEST_F(OutputTest, WritingNeverWaits)
{
    pipe_.fill();
    const auto start = std::chrono::steady_clock::now();
    {
        Output output(pipe_.writing(), 1 << 16);
        const QByteArray piece(1 << 12, 'x');
        for (int i = 0; i < 10000; ++i) {
            output.write(piece);
        }
        EXPECT_EQ(10000u - 16, output.dropped());
        EXPECT_EQ(0, output.error()) << "a reader that does not read is no error";
    }
    EXPECT_LT(msSince(start), kPatientMs / 2) << "nor is it waited for at the end";
    EXPECT_EQ("", behindFilling(pipe_.readUntilQuiet(50)).toStdString())
        << "what waited is given up";
}

TEST_F(OutputTest, NothingIsNoPiece)
{
    pipe_.fill();
    Output output(pipe_.writing(), 0);
    output.write(QByteArray());
    EXPECT_FALSE(output.isBehind());
    EXPECT_EQ(0u, output.dropped());
    EXPECT_TRUE(output.finish(0));
}

TEST_F(OutputTest, FinishWaitsNoLongerThanSaidWhileNobodyReads)
{
    pipe_.fill();
    Output output(pipe_.writing());
    output.write("late");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(output.finish(60));
    EXPECT_GE(msSince(start), 60);
    EXPECT_LT(msSince(start), kPatientMs / 2);
    EXPECT_TRUE(output.isBehind());
    EXPECT_EQ("late", behindFilling(pipe_.readBytes(kPipeBytes + 4)).toStdString());
    EXPECT_TRUE(output.finish(kPatientMs));
    EXPECT_FALSE(output.isBehind());
}

TEST_F(OutputTest, FinishGoesOnWhileSomebodyReads)
{
    constexpr int kPieces = 30;
    Output output(pipe_.writing());
    output.write(QByteArray(kPieces * kPipeBytes, 'x')); // one: each bit of it is progress
    std::thread reader([&] {
        for (int i = 0; i < kPieces; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            pipe_.readBytes(kPipeBytes);
        }
    });
    EXPECT_TRUE(output.finish(5000)) << "less than all of it takes";
    reader.join();
}

TEST_F(OutputTest, AReaderThatWentAwayIsAnErrorOfItsOwn)
{
    pipe_.closeReading();
    Output output(pipe_.writing());
    output.write("nobody");
    EXPECT_FALSE(output.finish(kPatientMs));
    EXPECT_EQ(EPIPE, output.error());
    EXPECT_EQ(1u, output.dropped());
    EXPECT_FALSE(output.isBehind());
    output.write("more");
    EXPECT_EQ(2u, output.dropped());
    EXPECT_FALSE(output.isBehind());
    EXPECT_FALSE(output.finish(kPatientMs)) << "at once";
}

TEST_F(OutputTest, AReaderThatGoesAwayLaterEndsTheWriting)
{
    pipe_.fill();
    Output output(pipe_.writing());
    output.write("one");
    output.write("two");
    EXPECT_EQ(0, output.error());
    pipe_.closeReading();
    EXPECT_TRUE(test::waitUntil([&] { return output.error() == EPIPE; }));
    EXPECT_EQ(2u, output.dropped());
    EXPECT_FALSE(output.finish(kPatientMs));
}

TEST_F(OutputTest, AFullDiskIsAnError)
{
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    {
        Output output(full);
        output.write("anything");
        EXPECT_FALSE(output.finish(kPatientMs));
        EXPECT_EQ(ENOSPC, output.error());
        EXPECT_EQ(1u, output.dropped());
    }
    ::close(full);
}

TEST_F(OutputTest, EndsAtOnceWithAReaderThatNeverReads)
{
    for (int i = 0; i < 20; ++i) {
        Pipe pipe;
        pipe.fill();
        const auto start = std::chrono::steady_clock::now();
        {
            Output output(pipe.writing());
            output.write(QByteArray(100000, 'x'));
            if (i % 2 == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5)); // it waits by now
            }
        }
        EXPECT_LT(msSince(start), 10000);
        pipe.closeWriting();
        EXPECT_EQ(QByteArray(kPipeBytes, '.'), pipe.readUntilQuiet(kPatientMs));
    }
}

TEST_F(OutputTest, PiecesOfSeveralThreadsAreNotMixed)
{
    constexpr int kThreads = 4;
    constexpr int kEach = 300;
    constexpr int kLine = 900; // more than one of them fits the pipe, less than five
    Output output(pipe_.writing());
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < kEach; ++i) {
                output.write(QByteArray(kLine - 1, static_cast<char>('a' + thread)) + '\n');
            }
        });
    }
    const QByteArray all = pipe_.readBytes(kThreads * kEach * kLine);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(0u, output.dropped());
    int counts[kThreads] = {};
    for (const QByteArray& line : all.split('\n')) {
        if (line.isEmpty()) {
            continue;
        }
        EXPECT_EQ(QByteArray(kLine - 1, line.at(0)), line);
        ++counts[line.at(0) - 'a'];
    }
    for (const int count : counts) {
        EXPECT_EQ(kEach, count);
    }
}

} // namespace tavmir::host
