// Wide and combining characters, cutting, and a locale that cannot draw them.
#include "terminal/text_width.h"

#include "characters_of.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

const QString kWide = QString::fromUtf8("温度");         // two columns each
const QString kCombined = QString::fromUtf8("e\u0301x"); // an accent of its own
const QString kRare = QString::fromUtf8("\U0001F600");   // two columns, a pair of QChars

class TextWidth : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(locale_.isThere()); }

private:
    CharactersOf locale_{"C.UTF-8"};
};

std::string text(const QString& from)
{
    return from.toStdString();
}

} // namespace

TEST_F(TextWidth, CountsColumnsNotCharacters)
{
    EXPECT_EQ(0, widthOf(QString()));
    EXPECT_EQ(3, widthOf("abc"));
    EXPECT_EQ(4, widthOf(kWide));
    EXPECT_EQ(2, widthOf(kCombined));
    EXPECT_EQ(2, widthOf(kRare));
}

TEST_F(TextWidth, WhatIsTooLongIsCutAndSaysSo)
{
    EXPECT_EQ("abc", text(cutAtEnd("abc", 3)));
    EXPECT_EQ("ab…", text(cutAtEnd("abcd", 3)));
    EXPECT_EQ("…cd", text(cutAtStart("abcd", 3)));
    EXPECT_EQ("…", text(cutAtEnd("abcd", 1)));
    EXPECT_EQ("…", text(cutAtStart("abcd", 1)));
    EXPECT_EQ("", text(cutAtEnd("abcd", 0)));
    EXPECT_EQ("", text(cutAtStart("abcd", 0)));
}

TEST_F(TextWidth, NoCharacterIsCutInHalves)
{
    EXPECT_EQ("温…", text(cutAtEnd(kWide, 3)));
    EXPECT_EQ("…", text(cutAtEnd(kWide, 2)));
    EXPECT_EQ("…度", text(cutAtStart(kWide, 3)));
    EXPECT_EQ("…", text(cutAtStart(kWide, 2)));
    EXPECT_EQ("…", text(cutAtEnd(kRare + "a", 2)));
    EXPECT_EQ(text(kCombined.left(2)) + "…", text(cutAtEnd(kCombined + "yz", 2)));
    const QString accentInFront = "ab" + kCombined + "y";
    EXPECT_EQ("…xy", text(cutAtStart(accentInFront, 3))) << "an accent alone stands on nothing";
}

TEST_F(TextWidth, ColumnsAreFilledToTheirWidth)
{
    EXPECT_EQ("ab  ", text(fitted("ab", 4)));
    EXPECT_EQ("  ab", text(fittedRight("ab", 4)));
    EXPECT_EQ("温度 ", text(fitted(kWide, 5)));
    EXPECT_EQ("温… ", text(fitted(kWide + kWide, 4)));
    EXPECT_EQ(3, widthOf(fitted(kCombined, 3)));
}

TEST_F(TextWidth, WhatCannotBeDrawnIsAQuestionMark)
{
    EXPECT_EQ("a?b", text(drawable("a\x01"
                                   "b")));
    EXPECT_EQ(text(kWide + kCombined + kRare), text(drawable(kWide + kCombined + kRare)));
    EXPECT_EQ("…", text(ellipsis()));
    EXPECT_EQ("–", text(nothingRead()));
}

TEST(TextWidthInPlainAscii, EverythingElseIsReplaced)
{
    const CharactersOf locale("C");
    ASSERT_TRUE(locale.isThere());
    EXPECT_EQ("??", text(drawable(kWide)));
    EXPECT_EQ("m?", text(drawable(QString::fromUtf8("mü"))));
    EXPECT_EQ("?", text(drawable(kRare)));
    EXPECT_EQ("~", text(ellipsis()));
    EXPECT_EQ("-", text(nothingRead()));
    EXPECT_EQ("ab~", text(cutAtEnd("abcd", 3)));
}

} // namespace tavmir::host
