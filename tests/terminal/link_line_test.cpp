// The line's figures in words, and in short words where there is no room.
#include "terminal/link_line.h"

#include "characters_of.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

std::string shown(const RecentLine& line, int width)
{
    const CharactersOf locale("C.UTF-8");
    EXPECT_TRUE(locale.isThere());
    return linkLine(line, width).toStdString();
}

const RecentLine kGood = {12.34, 0.208, FailureCounts()};
const RecentLine kBad = {1234.4, 99.94, {120, 1, 60, 5, 0, 0}};

} // namespace

TEST(LinkLine, SaysWhatIsKnown)
{
    EXPECT_EQ("pass –  round trip –  last minute: no failures", shown(RecentLine(), 80));
    EXPECT_EQ("pass 12.3 ms  round trip 0.21 ms  last minute: no failures", shown(kGood, 80));
}

TEST(LinkLine, NamesEachKindOfFailureThatHappened)
{
    EXPECT_EQ("pass 1234 ms  round trip 99.9 ms  last minute: 120 time-outs, 1 retry, 60 give-ups, "
              "5 exceptions",
              shown(kBad, 120));
    EXPECT_EQ("pass –  round trip –  last minute: 1 exception",
              shown({std::nullopt, std::nullopt, {0, 0, 0, 1, 0, 0}}, 80));
    EXPECT_EQ("pass –  round trip –  last minute: 1 lost connection, 9 failed connects",
              shown({std::nullopt, std::nullopt, {0, 0, 0, 0, 1, 9}}, 80));
}

TEST(LinkLine, IsShortWhereThereIsNoRoomAndBeginsWithTheFailures)
{
    EXPECT_EQ("1 min 120 t/o 1 retr 60 g/u 5 exc  pass 1234 ms  trip 99.9 ms", shown(kBad, 80));
    EXPECT_EQ("1 min ok  pass 12.3 ms  trip 0.21 ms", shown(kGood, 40));
    EXPECT_EQ("1 min 120 t/o 1 ret…", shown(kBad, 20));
    EXPECT_EQ("1 min 1 lost 9 no conn  pass –  trip –",
              shown({std::nullopt, std::nullopt, {0, 0, 0, 0, 1, 9}}, 40));
}

} // namespace tavmir::host
