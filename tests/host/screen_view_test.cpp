// The live table as a view: what it leaves behind, and that it never runs ahead of the terminal.
// Standard output of these tests is no terminal: the screen has the usual 24 lines of 80 columns.
#include "host/screen_view.h"

#include "captured_console.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

using project::Format;

const LineState kConnected = {true, "connected to h:1"};

ValueRow row(const QString& name, const QString& address, const QString& value)
{
    return {name, address, value, Format::unsignedNumber, 5, Quality::good, QString()};
}

const std::vector<ValueRow> kRows = {row("level", "M.w", "12"), row("speed", "M.s", "1500")};

size_t countOf(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

class OnAScreen : public testing::Test
{
protected:
    void SetUp() override { ::setenv("TERM", "xterm", 1); }

    // What a view puts on standard output.
    static std::string shownBy(const std::function<void(RunView&)>& use)
    {
        CapturedConsole captured;
        {
            const std::unique_ptr<RunView> view = ScreenView::open(captured.console(), false);
            if (view) {
                use(*view);
            }
        }
        captured.finish();
        EXPECT_EQ("", captured.err());
        return captured.out();
    }

    // The same, behind the place where the terminal got back what it had shown before.
    static std::string leftBy(const std::function<void(RunView&)>& use)
    {
        const std::string shown = shownBy(use);
        const size_t end = shown.find("\x1b[?1049l");
        EXPECT_NE(std::string::npos, end);
        return end == std::string::npos ? std::string() : shown.substr(end);
    }
};

} // namespace

TEST_F(OnAScreen, TheLastValuesAllMessagesAndTheClosingLinesAreLeftOnce)
{
    const std::string left = leftBy([](RunView& view) {
        view.message("connected");
        view.show(kRows, kConnected);
        view.message("M.w = 12: written");
        view.show(kRows, kConnected);
        view.leave();
        view.message("lost");
        view.close({"statistics", "requests: 1"}, {{"not", "shown"}});
    });
    EXPECT_EQ(1u, countOf(left, "connected to h:1\n")) << left;
    EXPECT_EQ(1u, countOf(left, "\nlevel  M.w ")) << left;
    EXPECT_EQ(1u, countOf(left, "speed")) << left;
    EXPECT_NE(std::string::npos,
              left.find("\nconnected\nM.w = 12: written\nlost\nstatistics\nrequests: 1\n"))
        << left;
}

TEST_F(OnAScreen, OnlyTheRowsThatWereShownAreLeft)
{
    const std::string left = leftBy([](RunView& view) {
        view.show(std::vector<ValueRow>(100, row("level", "M.w", "12")), kConnected);
        view.close({"end"}, {});
    });
    EXPECT_EQ(20u, countOf(left, "M.w")) << "24 lines without state, figures, heading and place";
    EXPECT_NE(std::string::npos, left.find("… 80 more\nend\n")) << left;
}

TEST_F(OnAScreen, WithoutValuesTheClosingLinesAreLeft)
{
    const std::string left = leftBy([](RunView& view) { view.close({"end"}, {}); });
    EXPECT_NE(std::string::npos, left.find("end\n"));
    EXPECT_EQ(std::string::npos, left.find("ADDRESS"));
}

TEST_F(OnAScreen, WhatCannotBePrintedIsEscaped)
{
    const std::string shown =
        shownBy([](RunView& view) { view.show({row("a\x1b[31m", "M.w", "b\nc")}, kConnected); });
    EXPECT_NE(std::string::npos, shown.find("a\\x1b[31m"));
    EXPECT_NE(std::string::npos, shown.find("b\\x0ac"));
}

TEST_F(OnAScreen, APictureThatNobodyTakesIsFollowedByNoOther)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(0, ::pipe(ends));
    quint64 dropped = 1;
    {
        CapturedConsole captured(ends[1]);
        captured.console().print(QString(static_cast<int>(Output::kMostWaiting) - 10, 'x'));
        {
            const std::unique_ptr<RunView> view = ScreenView::open(captured.console(), false);
            ASSERT_NE(nullptr, view);
            view->show(kRows, kConnected);
            view->look();
            dropped = captured.console().out().dropped();
            ::close(ends[0]);
        }
        captured.finish();
    }
    ::close(ends[1]);
    EXPECT_EQ(0u, dropped) << "it was not even tried";
}

TEST_F(OnAScreen, ATerminalThatCannotShowItGetsNoView)
{
    ::setenv("TERM", "dumb", 1);
    CapturedConsole captured;
    EXPECT_EQ(nullptr, ScreenView::open(captured.console(), false));
    captured.finish();
    EXPECT_EQ("", captured.out());
}

} // namespace tavmir::host
