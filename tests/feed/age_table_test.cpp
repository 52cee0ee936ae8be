// When each element was last read.
#include "feed/age_table.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

TEST(Ages, NeighboursAndStrangersAreFound)
{
    const Clock::time_point now = Clock::now();
    AgeTable ages(
        {{ValueClass::words, 16}, {ValueClass::words, 48}, {ValueClass::doubleWords, 16}});
    const unsigned char addresses[] = {0, 0, 0, 16, 0, 0, 0, 48, 0, 0, 9, 9};
    ages.readNow(ValueClass::words, addresses, 3, now);
    project::Element word;
    word.type = project::DataType::word;
    word.address = 48;
    EXPECT_EQ(now, ages.lastRead(word).value());
    word.address = 32;
    EXPECT_FALSE(ages.lastRead(word).has_value());
    project::Element dword;
    dword.type = project::DataType::dword;
    dword.address = 16;
    EXPECT_FALSE(ages.lastRead(dword).has_value());
}

TEST(Ages, TextIsAsOldAsItsOldestWord)
{
    const Clock::time_point early = Clock::now();
    AgeTable ages({{ValueClass::words, 16}, {ValueClass::words, 32}});
    const unsigned char addresses[] = {0, 0, 0, 16, 0, 0, 0, 32};
    project::Element text;
    text.type = project::DataType::text;
    text.address = 16;
    text.words = 2;
    ages.readNow(ValueClass::words, addresses, 1, early);
    EXPECT_FALSE(ages.lastRead(text).has_value());
    ages.readNow(ValueClass::words, addresses + 4, 1, early + std::chrono::seconds(1));
    EXPECT_EQ(early, ages.lastRead(text).value());
}

} // namespace tavmir::host
