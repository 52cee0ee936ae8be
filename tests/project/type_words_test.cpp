// One word for one type, and one for one thing.
#include "project/counted.h"
#include "project/type_words.h"

#include "support/qt_printers.h"

#include <gtest/gtest.h>

namespace tavmir::project
{

TEST(TypeWords, AreThoseOfTheProjectFile)
{
    for (const char* word : {"bit", "word", "dword", "real", "text"}) {
        const std::optional<DataType> type = typeFromWord(word);
        ASSERT_TRUE(type) << word;
        EXPECT_STREQ(word, typeWord(*type));
    }
    EXPECT_FALSE(typeFromWord("structure"));
    EXPECT_FALSE(typeFromWord("double word"));
}

TEST(TypeWords, OneBitOfAWordIsABit)
{
    Element element;
    element.type = DataType::dword;
    EXPECT_STREQ("dword", typeWord(element));
    element.bitNumber = 3;
    EXPECT_STREQ("bit", typeWord(element));
    EXPECT_EQ("bit", typeInWords(element));
}

TEST(TypeWords, OfATextSayHowLongItIs)
{
    Element element;
    element.type = DataType::text;
    element.words = 1;
    EXPECT_EQ("text of 1 word", typeInWords(element));
    element.words = 8;
    EXPECT_EQ("text of 8 words", typeInWords(element));
    EXPECT_STREQ("text", typeWord(element));
}

TEST(Counted, OneThingIsNotSeveral)
{
    EXPECT_EQ("0 addresses", counted(0, "address", "addresses"));
    EXPECT_EQ("1 address", counted(1, "address", "addresses"));
    EXPECT_EQ("2 addresses", counted(2, "address", "addresses"));
}

} // namespace tavmir::project
