// What each micro benchmark shows beside its time: heap blocks and diagnostic lines per call.
#ifndef TAVMIR_BENCHMARKS_MICRO_MEASURED_CALLS_H
#define TAVMIR_BENCHMARKS_MICRO_MEASURED_CALLS_H

#include "support/allocation_counter.h"
#include "support/quiet_messages.h"

#include <benchmark/benchmark.h>

namespace tavmir
{
namespace bench
{

// Counts from its construction until `report`.
class MeasuredCalls
{
public:
    MeasuredCalls() : allocations_(allocationCount()), messages_(messageCount()) {}

    // Leaves out what was counted since `pause`.
    void pause()
    {
        pausedAllocations_ = allocationCount();
        pausedMessages_ = messageCount();
    }
    void resume()
    {
        allocations_ += allocationCount() - pausedAllocations_;
        messages_ += messageCount() - pausedMessages_;
    }

    // Counters "allocs" and "lines" per iteration and, for calls that handle `elements`
    // elements each, the time "per_element" in seconds.
    void report(benchmark::State& state, double elements = 1) const
    {
        const double iterations = static_cast<double>(state.iterations());
        state.counters["allocs"] =
            static_cast<double>(allocationCount() - allocations_) / iterations;
        state.counters["lines"] = static_cast<double>(messageCount() - messages_) / iterations;
        if (elements > 1) {
            state.counters["per_element"] =
                benchmark::Counter(elements, benchmark::Counter::kIsIterationInvariantRate |
                                                 benchmark::Counter::kInvert);
        }
    }

private:
    unsigned long allocations_;
    unsigned long messages_;
    unsigned long pausedAllocations_ = 0;
    unsigned long pausedMessages_ = 0;
};

} // namespace bench
} // namespace tavmir

#endif
