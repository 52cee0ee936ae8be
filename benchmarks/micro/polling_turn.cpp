// One polling turn: the request of a full batch, and its good reply. Arguments: entries of the
// polled list.
#include "micro/measured_calls.h"
#include "support/plant.h"

namespace
{

using namespace tavmir::bench;

void pollingTurn(benchmark::State& state, int type)
{
    const int entries = static_cast<int>(state.range(0));
    resetDriver();
    for (int i = 0; i < entries; ++i) {
        RW_VAR var;
        var.dataType = type;
        var.elementAddress = 64 * i; // no two adjacent
        var.count = 1;
        AddListReadVar(&var);
    }
    // Passes beforehand, so that the caches hold every value and the list has its room to turn,
    // as on a running panel.
    for (int covered = 0; covered < 3 * entries && goodTurn(); covered += PLC_driver.batchCount) {
    }

    const MeasuredCalls calls;
    for (auto _ : state) {
        benchmark::DoNotOptimize(goodTurn());
    }
    calls.report(state);
    state.counters["batch"] = PLC_driver.batchCount;
    resetDriver();
}

BENCHMARK_CAPTURE(pollingTurn, bits45, kBit)->Arg(100)->Arg(10000)->Arg(100000);
BENCHMARK_CAPTURE(pollingTurn, words38, kWord)->Arg(100)->Arg(10000)->Arg(100000);
BENCHMARK_CAPTURE(pollingTurn, dwords28, kDoubleWord)->Arg(100)->Arg(10000)->Arg(100000);

} // namespace
