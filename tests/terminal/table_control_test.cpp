// What keys do.
#include "terminal/table_control.h"

#include <QtCore/QVector>

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using Kind = Key::Kind;

class Control : public testing::Test
{
protected:
    TableWish press(Kind kind) { return control_.press({kind, 0}); }

    // The wish of the last one.
    TableWish type(const char* text)
    {
        TableWish wish = TableWish::nothing;
        for (const uint character : QString::fromUtf8(text).toUcs4()) {
            wish = control_.press({Kind::character, character});
        }
        return wish;
    }

    std::string filter() const { return control_.filter().toStdString(); }
    std::string command() const { return control_.command().toStdString(); }

    TableControl control_{true};
};

} // namespace

TEST_F(Control, QEndsTheRun)
{
    EXPECT_EQ(TableWish::nothing, type("x"));
    EXPECT_EQ(TableWish::end, type("q"));
}

TEST_F(Control, AFilterWorksWhileItIsTyped)
{
    type("/");
    EXPECT_EQ(TableMode::filter, control_.mode());
    EXPECT_EQ(TableWish::nothing, type("nqä"));
    EXPECT_EQ("nqä", filter()) << "no keys of the table";
    EXPECT_EQ(SortBy::project, control_.order().by);
    press(Kind::backspace);
    EXPECT_EQ("nq", filter());
    EXPECT_EQ(TableWish::nothing, press(Kind::enter));
    EXPECT_EQ(TableMode::table, control_.mode());
    EXPECT_EQ("nq", filter()) << "stays";
}

TEST_F(Control, EscapeClearsTheFilter)
{
    type("/abc");
    press(Kind::escape);
    EXPECT_EQ("", filter());
    EXPECT_EQ(TableMode::table, control_.mode());
    type("/abc");
    press(Kind::enter);
    press(Kind::escape);
    EXPECT_EQ("", filter());
}

TEST_F(Control, ABackspaceTakesAWholeCharacter)
{
    type("/a\U0001F600");
    press(Kind::backspace);
    EXPECT_EQ("a", filter());
    press(Kind::backspace);
    press(Kind::backspace);
    EXPECT_EQ("", filter());
}

TEST_F(Control, SortsByTheKeyAndTheOtherWayWhenPressedAgain)
{
    type("n");
    EXPECT_EQ(SortBy::name, control_.order().by);
    EXPECT_FALSE(control_.order().reversed);
    type("n");
    EXPECT_TRUE(control_.order().reversed);
    type("a");
    EXPECT_EQ(SortBy::age, control_.order().by);
    EXPECT_FALSE(control_.order().reversed);
    type("w");
    EXPECT_EQ(SortBy::quality, control_.order().by);
    type("p");
    EXPECT_EQ(SortBy::project, control_.order().by);
}

TEST_F(Control, ScrollsByRowsAndPagesWithinWhatThereIs)
{
    EXPECT_EQ(0, control_.firstOf(100, 10));
    press(Kind::up);
    EXPECT_EQ(0, control_.firstOf(100, 10));
    press(Kind::down);
    EXPECT_EQ(1, control_.firstOf(100, 10));
    press(Kind::pageDown);
    EXPECT_EQ(10, control_.firstOf(100, 10)) << "one row stays to be seen";
    press(Kind::pageUp);
    EXPECT_EQ(1, control_.firstOf(100, 10));
    press(Kind::end);
    EXPECT_EQ(90, control_.firstOf(100, 10));
    press(Kind::down);
    EXPECT_EQ(90, control_.firstOf(100, 10));
    press(Kind::up);
    EXPECT_EQ(89, control_.firstOf(100, 10));
    press(Kind::home);
    EXPECT_EQ(0, control_.firstOf(100, 10));
    press(Kind::down);
    EXPECT_EQ(0, control_.firstOf(3, 10)) << "all of them fit";
}

TEST_F(Control, AnotherOrderOrFilterBeginsAtItsStart)
{
    for (const char* keys : {"n", "/a"}) {
        press(Kind::end);
        EXPECT_EQ(90, control_.firstOf(100, 10));
        type(keys);
        EXPECT_EQ(0, control_.firstOf(100, 10)) << keys;
    }
}

TEST_F(Control, HelpScrollsByItselfAndAnyOtherKeyLeavesIt)
{
    press(Kind::down);
    type("?");
    EXPECT_EQ(TableMode::help, control_.mode());
    press(Kind::end);
    EXPECT_EQ(5, control_.firstOf(15, 10));
    EXPECT_EQ(TableWish::nothing, type("q")) << "leaves the help, not the program";
    EXPECT_EQ(TableMode::table, control_.mode());
    EXPECT_EQ(1, control_.firstOf(100, 10)) << "where the table was";
    type("?");
    EXPECT_EQ(0, control_.firstOf(15, 10));
}

TEST_F(Control, ACommandIsHandedOverWhole)
{
    EXPECT_EQ(TableWish::nothing, type(":Main.Speed=1"));
    EXPECT_EQ(TableMode::command, control_.mode());
    EXPECT_EQ(TableWish::command, press(Kind::enter));
    EXPECT_EQ("Main.Speed=1", command());
    EXPECT_EQ(TableMode::table, control_.mode());
    type(":");
    EXPECT_EQ("", command());
    EXPECT_EQ(TableWish::nothing, press(Kind::enter)) << "nothing was typed";
    type(":abc");
    press(Kind::escape);
    EXPECT_EQ(TableMode::table, control_.mode());
    EXPECT_EQ(TableWish::nothing, press(Kind::enter));
}

TEST_F(Control, WithoutCommandsThereIsNoLineForThem)
{
    TableControl control(false);
    control.press({Kind::character, ':'});
    EXPECT_EQ(TableMode::table, control.mode());
}

TEST_F(Control, ControlLDrawsAnewInEveryMode)
{
    for (const char* mode : {"", "/", ":", "?"}) {
        type(mode);
        EXPECT_EQ(TableWish::redraw, press(Kind::redraw)) << mode;
        press(Kind::escape);
    }
}

} // namespace tavmir::host
