// How a command's outputs end.
#include "captured_console.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <thread>

namespace tavmir::host
{

TEST(Console, LinesGoWhereTheyBelong)
{
    CapturedConsole captured;
    captured.console().print("a value – shown");
    captured.console().say("a message");
    captured.console().complain("something is wrong");
    const bool broken = captured.console().isBroken();
    const bool whole = captured.finish();
    EXPECT_TRUE(whole);
    EXPECT_FALSE(broken);
    EXPECT_EQ("a value – shown\n", captured.out());
    EXPECT_EQ("a message\ntavmir-host: something is wrong\n", captured.err());
}

TEST(Console, WhatCannotBeWrittenIsSaid)
{
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    CapturedConsole captured(full);
    captured.console().print("lost");
    const bool whole = captured.finish();
    ::close(full);
    EXPECT_FALSE(whole);
    EXPECT_EQ("tavmir-host: standard output cannot be written: No space left on device\n",
              captured.err());
}

TEST(Console, AReaderThatWentAwayIsNoFailure)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(0, ::pipe2(ends, O_CLOEXEC));
    ::close(ends[0]);
    CapturedConsole captured(ends[1]);
    captured.console().print("lost");
    captured.console().out().finish(10000);
    const bool broken = captured.console().isBroken();
    const bool whole = captured.finish();
    ::close(ends[1]);
    EXPECT_TRUE(broken);
    EXPECT_TRUE(whole);
    EXPECT_EQ("", captured.err());
}

TEST(Console, AReaderThatDoesNotReadMissesSomething)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(0, ::pipe2(ends, O_CLOEXEC));
    CapturedConsole captured(ends[1]);
    captured.console().print(QString(1 << 20, 'x'));
    const bool whole = captured.finish();
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_FALSE(whole);
    EXPECT_EQ("tavmir-host: standard output was not read in time: parts of it are missing\n",
              captured.err());
}

TEST(Console, WhatWasDroppedIsMissingThoughTheRestWasRead)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(0, ::pipe2(ends, O_CLOEXEC));
    CapturedConsole captured(ends[1]);
    for (int i = 0; i < 2;
         ++i) { // nobody reads yet: the first piece waits, so the second is dropped
        captured.console().out().write(QByteArray(Output::kMostWaiting, 'x'));
    }
    std::thread reader([&] {
        char bytes[65536];
        for (size_t left = Output::kMostWaiting; left > 0;) {
            left -= static_cast<size_t>(::read(ends[0], bytes, sizeof bytes));
        }
    });
    const bool whole = captured.finish();
    reader.join();
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_FALSE(whole);
    EXPECT_EQ("tavmir-host: standard output was not read in time: parts of it are missing\n",
              captured.err());
}

} // namespace tavmir::host
