// Round-trip times in constant memory: exact minimum, maximum and mean, percentiles within a
// sixteenth. One thread.
#ifndef TAVMIR_FEED_LATENCY_HISTOGRAM_H
#define TAVMIR_FEED_LATENCY_HISTOGRAM_H

#include <cstdint>

namespace tavmir::host
{

class LatencyHistogram
{
public:
    void add(uint64_t nanoseconds);

    uint64_t count() const { return count_; }
    uint64_t minimum() const; // 0 when nothing was added
    uint64_t maximum() const { return maximum_; }
    double mean() const;
    // The time that `share` (0..1) of all lie at or below; 0 when nothing was added.
    uint64_t percentile(double share) const;

private:
    // 16 steps to each power of two; the first 16 values have a step each.
    static constexpr int kStepBits = 4;
    static constexpr int kSteps = 1 << kStepBits;
    static constexpr int kBuckets = (64 - kStepBits + 1) * kSteps;

    static int bucketOf(uint64_t value);
    static uint64_t upperEdge(int bucket);

    uint64_t buckets_[kBuckets] = {};
    uint64_t count_ = 0;
    uint64_t sum_ = 0;
    uint64_t minimum_ = UINT64_MAX;
    uint64_t maximum_ = 0;
};

} // namespace tavmir::host

#endif
