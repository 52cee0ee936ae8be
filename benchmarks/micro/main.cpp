// The micro benchmarks' program: Google Benchmark's, with Qt's messages dropped.
#include "support/quiet_messages.h"

#include <benchmark/benchmark.h>

int main(int argc, char** argv)
{
    tavmir::bench::discardMessages();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
