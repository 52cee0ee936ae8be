// Rhythms in words.
#include "diagnose/rhythm.h"

#include <gtest/gtest.h>

using namespace tavmir::diagnose;

namespace
{

std::string rhythm(const std::vector<double>& seconds, const std::vector<unsigned>& ordinals = {})
{
    std::vector<Occurrence> occurrences;
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        occurrences.push_back({static_cast<Nanoseconds>(seconds[i] * 1e9),
                               ordinals.empty() ? 0u : std::uint64_t{ordinals[i]}});
    }
    return rhythmOf(occurrences);
}

} // namespace

TEST(Rhythm, OfFewIsNone)
{
    EXPECT_EQ("", rhythm({}));
    EXPECT_EQ("", rhythm({1, 2}, {10, 20}));
}

TEST(Rhythm, IsToldInRequestsFirst)
{
    EXPECT_EQ("every 50th request", rhythm({1, 2, 3, 4}, {50, 100, 150, 200}));
    EXPECT_EQ("every 2nd request", rhythm({1, 2, 3, 4}, {1, 3, 5, 7}));
    EXPECT_EQ("every 11th request", rhythm({1, 2, 3, 4}, {0, 11, 22, 33}));
    EXPECT_EQ("every 23rd request", rhythm({1, 2, 3, 4}, {0, 23, 46, 69}));
    EXPECT_EQ("each request", rhythm({1, 2, 3, 9}, {7, 8, 9, 10}));
}

TEST(Rhythm, ThatSomeDoNotKeepIsToldAsSuch)
{
    EXPECT_EQ("mostly every 10th request", rhythm({1, 2, 3, 4, 5, 6}, {10, 20, 30, 40, 50, 61}));
    EXPECT_EQ("mostly each request", rhythm({1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 9}));
}

TEST(Rhythm, IsToldInTimeWhereRequestsDoNotAgree)
{
    EXPECT_EQ("every 5.0 s", rhythm({1, 6.1, 11, 16}, {3, 10, 30, 35}));
    EXPECT_EQ("every 250.0 ms", rhythm({1, 1.25, 1.5, 1.75}));
}

TEST(Rhythm, OfOneThatMissesABeatIsStillOne)
{
    EXPECT_EQ("every 5.0 s", rhythm({0, 5, 10, 15, 25, 30, 35}));
}

TEST(Rhythm, MayBeBursts)
{
    EXPECT_EQ("in 2 bursts, the longest of 4 within 300.0 ms",
              rhythm({0, 0.1, 0.25, 60, 60.1, 60.15, 60.3}, {1, 5, 6, 90, 94, 99, 100}));
}

TEST(Rhythm, ElseIsARate)
{
    EXPECT_EQ("irregularly, 6.0 a minute", rhythm({0, 4, 21, 23, 40}, {1, 5, 20, 90, 94}));
    EXPECT_EQ("", rhythm({0, 1, 4, 5.5}, {1, 5, 20, 90}));
}
