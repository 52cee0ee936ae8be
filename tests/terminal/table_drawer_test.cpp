// The table as a picture: what stands where, on screens of every size.
#include "terminal/table_drawer.h"

#include "characters_of.h"
#include "terminal/text_width.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using Kind = Key::Kind;
using Lines = std::vector<std::string>;

TableRow row(const char* name, const char* address, const char* value)
{
    return {QString::fromUtf8(name), address,  QString::fromUtf8(value), "5 ms", 5,
            Quality::good,           QString()};
}

std::string textOf(const PictureLine& line)
{
    QString text;
    for (const Span& span : line) {
        text += span.text;
    }
    while (text.endsWith(' ')) {
        text.chop(1);
    }
    return text.toStdString();
}

class Drawer : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(locale_.isThere());
        content_.connected = true;
        content_.state = "connected to h:1";
        content_.time = "12:00:00 UTC";
    }

    Picture draw(int lines, int columns)
    {
        return drawer_.draw(content_, control_, {lines, columns});
    }

    Lines drawn(int lines, int columns)
    {
        Lines texts;
        for (const PictureLine& line : draw(lines, columns).lines) {
            texts.push_back(textOf(line));
        }
        return texts;
    }

    void fill(int rows)
    {
        for (int i = 0; i < rows; ++i) {
            const QByteArray address = "M.w[" + QByteArray::number(i) + "]";
            content_.rows.push_back(row("Level", address, QByteArray::number(100 + i)));
        }
    }

    void type(const char* keys)
    {
        for (const char key : std::string(keys)) {
            control_.press({Kind::character, static_cast<uint>(key)});
        }
    }

    CharactersOf locale_{"C.UTF-8"};
    TableContent content_;
    TableControl control_{true};
    TableDrawer drawer_;
};

} // namespace

TEST_F(Drawer, ShowsStateFiguresValuesMessagesAndPlace)
{
    content_.rows = {row("Speed", "M.s", "1500"), row("Level", "M.l", "7")};
    content_.messages = QStringList{"M.s = 1500: written"};
    EXPECT_EQ((Lines{"connected to h:1                                          12:00:00 UTC",
                     "pass –  round trip –  last minute: no failures",
                     "  NAME   ADDRESS  VALUE   AGE", "  Speed  M.s      1500   5 ms",
                     "  Level  M.l      7      5 ms", "", "M.s = 1500: written",
                     "1-2 of 2                                             : command  ? keys"}),
              drawn(8, 70));
}

TEST_F(Drawer, NamesThatOnlyRepeatTheAddressAreLeftOut)
{
    content_.rows = {row("M.s", "M.s", "1"), row("M.l", "M.l", "2")};
    EXPECT_EQ("  ADDRESS  VALUE   AGE", drawn(8, 70)[2]);
    content_.rows[1].name = "Level";
    EXPECT_EQ("  NAME   ADDRESS  VALUE   AGE", drawn(8, 70)[2]);
    EXPECT_EQ("         M.s      1      5 ms", drawn(8, 70)[3]);
    EXPECT_EQ("  Level  M.l      2      5 ms", drawn(8, 70)[4]);
}

TEST_F(Drawer, WhatIsNotGoodHasAMarkAndItsReason)
{
    content_.rows = {row("a", "M.a", "1"), row("b", "M.b", "2"), row("c", "M.c", "3"),
                     row("d", "M.d", "4"), row("e", "M.e", "")};
    content_.rows[1].quality = Quality::bad;
    content_.rows[1].reason = "refused";
    content_.rows[2].quality = Quality::stale;
    content_.rows[3].quality = Quality::unconfirmed;
    content_.rows[4].quality = Quality::never;
    content_.rows[4].value = QString();
    const Picture picture = draw(12, 80);
    EXPECT_EQ("  a     M.a      1      5 ms", textOf(picture.lines[3]));
    EXPECT_EQ("! b     M.b      2      5 ms  bad: refused", textOf(picture.lines[4]));
    EXPECT_EQ("~ c     M.c      3      5 ms  stale", textOf(picture.lines[5]));
    EXPECT_EQ("? d     M.d      4      5 ms  unconfirmed", textOf(picture.lines[6]));
    EXPECT_EQ("  e     M.e      –      5 ms  never", textOf(picture.lines[7]));
    EXPECT_EQ(Style::plain, picture.lines[3].back().style);
    EXPECT_EQ(Style::bad, picture.lines[4].front().style);
    EXPECT_EQ(Style::stale, picture.lines[5].back().style);
    EXPECT_EQ(Style::unconfirmed, picture.lines[6].back().style);
    EXPECT_EQ(Style::never, picture.lines[7].back().style);
}

TEST_F(Drawer, FortyColumnsAndEightLinesStillShowValues)
{
    fill(20);
    content_.rows[0].name = "The level of the first tank";
    content_.rows[1].quality = Quality::bad;
    content_.rows[1].address = "Main.Station[3].Drive[2].Temperature";
    content_.messages = QStringList{"one", "two", "three"};
    const Lines lines = drawn(8, 40);
    ASSERT_EQ(8u, lines.size());
    EXPECT_EQ("  M.w[0]                     100    5 ms", lines[3]);
    EXPECT_EQ("! …[3].Drive[2].Temperature  101    5 ms", lines[4])
        << "the end of an address says more than its beginning";
    EXPECT_EQ("three", lines[6]);
}

TEST_F(Drawer, NoLineIsWiderThanTheScreenAndNoPictureHigher)
{
    fill(30);
    content_.rows[3] = row("温度温度温度温度", "M.e\u0301", "长值长值长值长值长值长值长值长值长值");
    content_.rows[4].quality = Quality::stale;
    content_.rows[4].reason = QString(300, 'r');
    content_.messages = QStringList{QString(300, 'm'), "second"};
    for (const char* keys : {"", "n", "/w", ":abc", "?"}) {
        control_.press({Kind::escape, 0});
        type(keys);
        for (int lines = 1; lines < 40; lines += 3) {
            for (int columns = 3; columns < 150; columns += 7) {
                const Picture picture = draw(lines, columns);
                ASSERT_LE(picture.lines.size(), static_cast<size_t>(lines));
                for (const PictureLine& line : picture.lines) {
                    QString text;
                    for (const Span& span : line) {
                        text += span.text;
                    }
                    ASSERT_LE(widthOf(text), columns) << keys << lines << ": " << textOf(line);
                }
            }
        }
    }
}

TEST_F(Drawer, ColumnsOfWideAndCombiningCharactersStandBelowEachOther)
{
    content_.rows = {row("温度", "M.a", "1"), row("Zu\u0308ge", "M.b", "2"),
                     row("abcd", "M.c", "3")};
    const Lines lines = drawn(9, 60);
    const auto columnOf = [&](int line, const char* text) {
        const QString whole = QString::fromStdString(lines[static_cast<size_t>(line)]);
        return widthOf(whole.left(whole.indexOf(text)));
    };
    EXPECT_EQ(columnOf(3, "M.a"), columnOf(5, "M.c"));
    EXPECT_EQ(columnOf(4, "M.b"), columnOf(5, "M.c"));
}

TEST_F(Drawer, LongValuesAreCut)
{
    content_.rows = {row("a", "M.a", std::string(200, 'x').c_str())};
    const std::string line = drawn(8, 60)[3];
    EXPECT_NE(std::string::npos, line.find("xxx…"));
    EXPECT_NE(std::string::npos, line.find("5 ms"));
}

TEST_F(Drawer, ColumnsStandStillWhileValuesGetShorter)
{
    content_.rows = {row("a", "M.a", "123456789")};
    drawn(8, 60);
    content_.rows[0].value = "1";
    EXPECT_EQ("  a     M.a      1          5 ms", drawn(8, 60)[3]);
}

TEST_F(Drawer, ScrollingShowsOtherRowsAndSaysWhich)
{
    fill(20);
    control_.press({Kind::end, 0});
    const Lines lines = drawn(9, 60);
    EXPECT_EQ("  Level  M.w[15]  115    5 ms", lines[3]);
    EXPECT_EQ("  Level  M.w[19]  119    5 ms", lines[7]);
    EXPECT_EQ(0u, lines[8].find("16-20 of 20 "));
    EXPECT_EQ((std::vector<size_t>{15, 16, 17, 18, 19}), drawer_.drawn());
    EXPECT_EQ(20, drawer_.shownInAll());
}

TEST_F(Drawer, AFilterShowsWhatIsTypedAndTheCursorBehindIt)
{
    fill(20);
    type("/[1");
    const Picture picture = draw(12, 70);
    EXPECT_EQ("/[1                                     1-8 of 11 with \"[1\", 20 in all",
              textOf(picture.lines.back()));
    EXPECT_EQ(3, picture.cursor.value_or(-1));
    control_.press({Kind::enter, 0});
    EXPECT_FALSE(draw(12, 70).cursor.has_value());
}

TEST_F(Drawer, NothingThatFitsTheFilterIsSaid)
{
    fill(3);
    type("/zzz");
    EXPECT_NE(std::string::npos, drawn(12, 70).back().find("0 of 0 with \"zzz\", 3 in all"));
}

TEST_F(Drawer, TheHeadingSaysWhatIsSortedBy)
{
    content_.rows = {row("b", "M.1", "1"), row("a", "M.2", "2")};
    type("n");
    EXPECT_EQ("  NAME^  ADDRESS  VALUE   AGE", drawn(8, 70)[2]);
    EXPECT_EQ("  a      M.2      2      5 ms", drawn(8, 70)[3]);
    EXPECT_EQ(0u, drawn(8, 70)[7].find("1-2 of 2, by name"));
    type("n");
    EXPECT_EQ("  NAMEv  ADDRESS  VALUE   AGE", drawn(8, 70)[2]);
    type("a");
    EXPECT_EQ("  NAME   ADDRESS  VALUE  AGE^", drawn(8, 70)[2]);
    type("w");
    EXPECT_EQ("^ NAME   ADDRESS  VALUE   AGE", drawn(8, 70)[2]);
}

TEST_F(Drawer, WithoutNamesTheAddressIsWhatIsSortedByName)
{
    content_.rows = {row("M.2", "M.2", "1"), row("M.1", "M.1", "2")};
    type("n");
    EXPECT_EQ("  ADDRESS^  VALUE   AGE", drawn(8, 70)[2]);
}

TEST_F(Drawer, HelpNamesTheKeysAndTakesThePlaceOfTheValues)
{
    fill(3);
    type("?");
    const Lines lines = drawn(24, 70);
    EXPECT_EQ("arrows, PgUp, PgDn  scroll", lines[2]);
    EXPECT_EQ("connected to h:1", lines[0].substr(0, 16));
    EXPECT_EQ(0u, lines.back().find("1-14 of 14 lines"));
}

TEST_F(Drawer, ADeadLineIsDrawnAsSuch)
{
    EXPECT_EQ(Style::strong, draw(8, 70).lines[0][0].style);
    content_.connected = false;
    EXPECT_EQ(Style::bad, draw(8, 70).lines[0][0].style);
}

TEST_F(Drawer, ARecordingHasALineWhereThereIsRoom)
{
    content_.recording = "recording: 1.5 of 1024 MiB";
    EXPECT_EQ(drawn(20, 60)[2], "recording: 1.5 of 1024 MiB");
    EXPECT_EQ(draw(20, 60).lines[2].front().style, Style::plain);
    content_.recordingFails = true;
    EXPECT_EQ(draw(20, 60).lines[2].front().style, Style::bad);
    EXPECT_NE(drawn(6, 60)[2], "recording: 1.5 of 1024 MiB");
}

} // namespace tavmir::host
