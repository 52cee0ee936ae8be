// Buckets that grow with the value.
#include "latency_histogram.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

int topBit(uint64_t value)
{
    return 63 - __builtin_clzll(value);
}

} // namespace

int LatencyHistogram::bucketOf(uint64_t value)
{
    if (value < kSteps) {
        return static_cast<int>(value);
    }
    const int shift = topBit(value) - kStepBits;
    return (shift + 1) * kSteps + static_cast<int>((value >> shift) - kSteps);
}

uint64_t LatencyHistogram::upperEdge(int bucket)
{
    if (bucket < kSteps) {
        return static_cast<uint64_t>(bucket);
    }
    const int shift = bucket / kSteps - 1;
    const uint64_t step = static_cast<uint64_t>(kSteps + bucket % kSteps);
    return (step << shift) + ((uint64_t{1} << shift) - 1);
}

void LatencyHistogram::add(uint64_t nanoseconds)
{
    ++buckets_[bucketOf(nanoseconds)];
    sum_ += nanoseconds;
    ++count_;
    minimum_ = std::min(minimum_, nanoseconds);
    maximum_ = std::max(maximum_, nanoseconds);
}

uint64_t LatencyHistogram::minimum() const
{
    return count() == 0 ? 0 : minimum_;
}

double LatencyHistogram::mean() const
{
    const uint64_t all = count();
    return all == 0 ? 0 : static_cast<double>(sum_) / static_cast<double>(all);
}

uint64_t LatencyHistogram::percentile(double share) const
{
    const uint64_t all = count();
    if (all == 0) {
        return 0;
    }
    const double wanted = std::max(1.0, share * static_cast<double>(all));
    uint64_t seen = 0;
    for (int i = 0; i < kBuckets; ++i) {
        seen += buckets_[i];
        if (static_cast<double>(seen) >= wanted) {
            return std::min(upperEdge(i), maximum());
        }
    }
    return maximum();
}

} // namespace tavmir::host
