// Lines of a trace.
#include "wire/trace_line.h"

#include <gtest/gtest.h>

namespace tavmir::wire
{

namespace
{

TraceLine someLine()
{
    TraceLine line;
    line.at = std::chrono::system_clock::time_point(std::chrono::milliseconds(1000000000007));
    line.who = "client 1";
    line.way = TraceWay::toController;
    line.words = "#7 station 1 read words: 116";
    return line;
}

} // namespace

TEST(TraceLine, SaysWhenWhoWhichWayAndWhat)
{
    TraceLine line = someLine();
    EXPECT_EQ("2001-09-09T01:46:40.007Z client 1 > #7 station 1 read words: 116", traceLine(line));
    line.way = TraceWay::fromController;
    line.words = "#7 station 1 read words: 116=1";
    EXPECT_EQ("2001-09-09T01:46:40.007Z client 1 < #7 station 1 read words: 116=1",
              traceLine(line));
    line.way = TraceWay::nothing;
    line.words = "connected";
    EXPECT_EQ("2001-09-09T01:46:40.007Z client 1 - connected", traceLine(line));
}

TEST(TraceLine, SaysWhyThenSinceTheRequestThenTheBytes)
{
    const unsigned char bytes[] = {0x00, 0x07, 0xAB, 0xFF};
    TraceLine line = someLine();
    line.words = "x";
    line.remarks = {"late"};
    line.hasRequest = true;
    line.sinceRequest = std::chrono::nanoseconds(1234567);
    EXPECT_EQ("2001-09-09T01:46:40.007Z client 1 > x [late] (+1.235 ms)", traceLine(line));
    line.remarks.emplace_back("wrong length");
    line.sinceRequest = std::chrono::nanoseconds(400);
    line.bytes = bytes;
    line.size = sizeof bytes;
    EXPECT_EQ(
        "2001-09-09T01:46:40.007Z client 1 > x [late, wrong length] (+0.000 ms) | 00 07 ab ff",
        traceLine(line));
}

} // namespace tavmir::wire
