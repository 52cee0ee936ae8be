// Moments in words.
#include "wire/time_words.h"

#include <gtest/gtest.h>

namespace tavmir::wire
{

namespace
{

std::string at(long long ms)
{
    return utcInWords(std::chrono::system_clock::time_point(std::chrono::milliseconds(ms)));
}

} // namespace

TEST(TimeWords, AreUtcWithMilliseconds)
{
    EXPECT_EQ("1970-01-01T00:00:00.000Z", at(0));
    EXPECT_EQ("2001-09-09T01:46:40.007Z", at(1000000000007));
    EXPECT_EQ("2024-02-29T23:59:59.999Z", at(1709251199999));
}

TEST(TimeWords, AreCutNotRounded)
{
    const std::chrono::system_clock::time_point start;
    EXPECT_EQ("1970-01-01T00:00:00.001Z", utcInWords(start + std::chrono::microseconds(1999)));
}

} // namespace tavmir::wire
