// What goes to a terminal: only what has changed, and everything back in the end.
#include "terminal/curses_screen.h"

#include "characters_of.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <unistd.h>
#include <vector>

namespace tavmir::host
{

namespace
{

std::vector<void (*)(int)> signalHandlers()
{
    std::vector<void (*)(int)> handlers;
    for (const int number : {SIGINT, SIGTERM, SIGTSTP, SIGWINCH}) {
        struct sigaction action;
        ::sigaction(number, nullptr, &action);
        handlers.push_back(action.sa_handler);
    }
    return handlers;
}

// Before any screen: ncurses sets its handlers with the first one only.
const std::vector<void (*)(int)> kHandlersAtStart = signalHandlers();

class Screen : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(locale_.isThere());
        ::setenv("TERM", "xterm", 1);
    }

    static Picture pictureOf(const char* text, Style style = Style::plain)
    {
        Picture picture;
        picture.lines = {{{"first", Style::plain}}, {{QString::fromUtf8(text), style}}};
        return picture;
    }

private:
    CharactersOf locale_{"C.UTF-8"};
};

} // namespace

TEST_F(Screen, DrawsWhatHasChangedOnly)
{
    const auto screen = CursesScreen::open(-1, false);
    ASSERT_NE(nullptr, screen);
    screen->resize({10, 40});
    const QByteArray first = screen->draw(pictureOf("value 1"));
    EXPECT_TRUE(first.contains("first")) << first.toStdString();
    EXPECT_TRUE(first.contains("value 1")) << first.toStdString();
    const QByteArray second = screen->draw(pictureOf("value 2"));
    EXPECT_FALSE(second.contains("first")) << second.toStdString();
    EXPECT_TRUE(second.contains("2")) << second.toStdString();
    EXPECT_LT(second.size(), 20);
    screen->redraw();
    EXPECT_TRUE(screen->draw(pictureOf("value 2")).contains("value 2"));
}

TEST_F(Screen, AnotherSizeIsDrawnAnew)
{
    const auto screen = CursesScreen::open(-1, false);
    ASSERT_NE(nullptr, screen);
    screen->resize({10, 40});
    screen->draw(pictureOf("value"));
    screen->resize({8, 30});
    EXPECT_TRUE(screen->draw(pictureOf("value")).contains("value"));
}

TEST_F(Screen, GivesTheTerminalBack)
{
    const auto screen = CursesScreen::open(-1, false);
    ASSERT_NE(nullptr, screen);
    EXPECT_TRUE(screen->draw(pictureOf("value")).contains("\x1b[?1049h"));
    EXPECT_TRUE(screen->leave().contains("\x1b[?1049l"));
}

TEST_F(Screen, WideCharactersAreDrawn)
{
    const auto screen = CursesScreen::open(-1, false);
    ASSERT_NE(nullptr, screen);
    EXPECT_TRUE(screen->draw(pictureOf("温度 é")).contains("温度 é"));
}

TEST_F(Screen, ColoursAreLeftOutWhereTheyAreNotWanted)
{
    for (const bool colours : {true, false}) {
        const auto screen = CursesScreen::open(-1, colours);
        ASSERT_NE(nullptr, screen);
        const QByteArray bytes = screen->draw(pictureOf("value", Style::bad));
        EXPECT_EQ(colours, bytes.contains("\x1b[31m")) << bytes.toStdString();
        screen->leave();
    }
}

TEST_F(Screen, SignalsAreLeftToOthers)
{
    const auto screen = CursesScreen::open(-1, false);
    ASSERT_NE(nullptr, screen);
    screen->draw(pictureOf("value"));
    EXPECT_EQ(kHandlersAtStart, signalHandlers());
}

TEST_F(Screen, ATerminalThatIsNotKnownOrCannotPlaceItsCursorIsRefused)
{
    for (const char* name : {"no-such-terminal", "dumb", ""}) {
        ::setenv("TERM", name, 1);
        EXPECT_EQ(nullptr, CursesScreen::open(-1, false)) << name;
    }
}

TEST_F(Screen, ATerminalWhoseKindHasNoSizeIsDrawnToo)
{
    ::setenv("TERM", "linux", 1);
    const auto screen = CursesScreen::open(-1, false);
    ASSERT_NE(nullptr, screen);
    screen->resize({10, 40});
    EXPECT_TRUE(screen->draw(pictureOf("value")).contains("value"));
}

TEST_F(Screen, KeysComeOneByOneAndNobodyWaitsForThem)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(0, ::pipe(ends));
    const auto screen = CursesScreen::open(ends[0], false);
    ASSERT_NE(nullptr, screen);
    EXPECT_FALSE(screen->key().has_value());
    const std::string typed = "n\xc3\xa4\x1b[6~\x7f\n\x0c";
    ASSERT_EQ(static_cast<ssize_t>(typed.size()), ::write(ends[1], typed.data(), typed.size()));
    const Key::Kind kinds[] = {Key::Kind::character, Key::Kind::character, Key::Kind::pageDown,
                               Key::Kind::backspace, Key::Kind::enter,     Key::Kind::redraw};
    for (const Key::Kind kind : kinds) {
        const std::optional<Key> key = screen->key();
        ASSERT_TRUE(key.has_value());
        EXPECT_EQ(kind, key->kind);
    }
    EXPECT_FALSE(screen->key().has_value());
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace tavmir::host
