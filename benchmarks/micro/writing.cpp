// Write turns, and giving up with writes queued. Arguments: writes waiting in the list.
#include "micro/measured_calls.h"
#include "support/plant.h"

namespace
{

using namespace tavmir::bench;

const int kBatchOfWords = 38;

RW_VAR writeOf(int i)
{
    RW_VAR var;
    var.hostKey = 7;
    var.varKey = i;
    var.hostData2 = 1;
    var.dataType = kWord;
    var.elementAddress = 16 * i;
    var.count = 1;
    var.value = QByteArray("\x12\x34", 2);
    return var;
}

void queueWrites(int count)
{
    static int next = 0;
    for (int i = 0; i < count; ++i, ++next) {
        const RW_VAR var = writeOf(next % 100000);
        AddListWriteVar(&var);
    }
}

// A turn that sends 38 distinct variables and leaves `range(0)` others waiting.
void writeTurn(benchmark::State& state)
{
    resetDriver();
    queueWrites(static_cast<int>(state.range(0)));
    MeasuredCalls calls;
    for (auto _ : state) {
        state.PauseTiming();
        calls.pause();
        queueWrites(kBatchOfWords);
        PLC_driver.writeTurns = 0;
        calls.resume();
        state.ResumeTiming();
        benchmark::DoNotOptimize(goodTurn());
    }
    calls.report(state);
    state.counters["batch"] = PLC_driver.batchCount;
    resetDriver();
}
BENCHMARK(writeTurn)->Arg(0)->Arg(100)->Arg(10000);

// A failed turn that gives up a batch of 38 and drops `range(0)` writes behind it.
void giveUp(benchmark::State& state)
{
    MeasuredCalls calls;
    for (auto _ : state) {
        state.PauseTiming();
        calls.pause();
        resetDriver();
        queueWrites(kBatchOfWords + static_cast<int>(state.range(0)));
        calls.resume();
        state.ResumeTiming();
        benchmark::DoNotOptimize(failedTurn());
    }
    calls.report(state);
    state.counters["reported"] = static_cast<double>(varDoneCount());
    resetDriver();
}
BENCHMARK(giveUp)->Arg(0)->Arg(10000);

} // namespace
