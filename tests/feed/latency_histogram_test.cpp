// Round-trip times in constant memory.
#include "feed/latency_histogram.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

TEST(Latency, EmptyHistogramIsZero)
{
    const LatencyHistogram histogram;
    EXPECT_EQ(0u, histogram.count());
    EXPECT_EQ(0u, histogram.minimum());
    EXPECT_EQ(0u, histogram.percentile(0.99));
    EXPECT_EQ(0.0, histogram.mean());
}

TEST(Latency, PercentilesAreWithinASixteenth)
{
    LatencyHistogram histogram;
    for (uint64_t i = 1; i <= 10000; ++i) {
        histogram.add(i * 1000);
    }
    EXPECT_EQ(1000u, histogram.minimum());
    EXPECT_EQ(10000000u, histogram.maximum());
    EXPECT_DOUBLE_EQ(5000500.0, histogram.mean());
    for (const double share : {0.5, 0.9, 0.99}) {
        const double exact = share * 10000000;
        const auto found = static_cast<double>(histogram.percentile(share));
        EXPECT_GE(found, exact);
        EXPECT_LE(found, exact * 17 / 16);
    }
    EXPECT_EQ(10000000u, histogram.percentile(1.0));
}

TEST(Latency, SmallAndHugeTimesHaveABucket)
{
    LatencyHistogram histogram;
    for (const uint64_t value :
         {uint64_t{0}, uint64_t{15}, uint64_t{16}, uint64_t{17}, UINT64_MAX}) {
        histogram.add(value);
    }
    EXPECT_EQ(5u, histogram.count());
    EXPECT_EQ(0u, histogram.percentile(0.1));
    EXPECT_EQ(UINT64_MAX, histogram.percentile(1.0));
}

} // namespace tavmir::host
