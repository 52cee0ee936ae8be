// Building the request lists: the rebuild and the one-shot reads. Arguments: elements.
#include "micro/measured_calls.h"
#include "support/plant.h"

namespace
{

using namespace tavmir::bench;

const int kOnceReadLimit = 1024;

// Measures `fill`, which adds `elements` entries to `list`, always from an empty list.
template <typename Fill>
void measureFilling(benchmark::State& state, QList<RW_VAR>& list, int elements, Fill fill)
{
    MeasuredCalls calls;
    for (auto _ : state) {
        fill();
        state.PauseTiming();
        calls.pause();
        list.clear();
        calls.resume();
        state.ResumeTiming();
    }
    calls.report(state, elements);
    resetDriver();
}

// "Main.Recipe[0]" and so on.
void passRecipe(int elements)
{
    QList<Label_Type_Info> labels;
    labels << label("Main", QList<Label_Type_Info>()
                                << arrayVariable("Recipe", kWord, 0, elements));
    PassVarName_2(&labels);
}

void measureRebuild(benchmark::State& state, QList<HOSTVAR> vars)
{
    measureFilling(state, PLC_driver.pendingReadList, static_cast<int>(state.range(0)),
                   [&] { benchmark::DoNotOptimize(ReCreatReadVarList(&vars)); });
}

// Each element a variable of its own, in the order of the project.
void rebuild(benchmark::State& state)
{
    const int elements = static_cast<int>(state.range(0));
    resetDriver();
    passPlant(elements, kWord);
    measureRebuild(state, polledVariables(elements));
}
BENCHMARK(rebuild)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

// The same in an order in which no variable's record lies beside the one before.
void rebuildShuffled(benchmark::State& state)
{
    const qint64 kStride = 7919; // a prime: every variable comes once
    const int elements = static_cast<int>(state.range(0));
    resetDriver();
    passPlant(elements, kWord);
    const QList<HOSTVAR> vars = polledVariables(elements);
    QList<HOSTVAR> shuffled;
    for (int i = 0; i < elements; ++i) {
        shuffled << vars.at(static_cast<int>(i * kStride % elements));
    }
    measureRebuild(state, shuffled);
}
BENCHMARK(rebuildShuffled)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);

// One array variable that makes all elements.
void rebuildArray(benchmark::State& state)
{
    const int elements = static_cast<int>(state.range(0));
    resetDriver();
    passRecipe(elements);
    HOSTVAR var;
    var.addressText = "Main.Recipe[0]";
    var.count = elements;
    measureRebuild(state, QList<HOSTVAR>() << var);
}
BENCHMARK(rebuildArray)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);

RW_VAR onceRead(const QString& address, int count)
{
    RW_VAR var;
    var.hostKey = 1;
    var.varKey = 2;
    var.addressText = address;
    var.count = count;
    return var;
}

// One call that fills the list.
void onceReadsInOneCall(benchmark::State& state)
{
    resetDriver();
    passRecipe(kOnceReadLimit);
    measureFilling(state, PLC_driver.onceReadList, kOnceReadLimit, [] {
        RW_VAR var = onceRead("Main.Recipe[0]", kOnceReadLimit);
        benchmark::DoNotOptimize(AddListOnceReadVar(&var));
    });
}
BENCHMARK(onceReadsInOneCall)->Unit(benchmark::kMicrosecond);

// 1024 calls, each for another variable of one element.
void onceReadsOneByOne(benchmark::State& state)
{
    resetDriver();
    passPlant(kOnceReadLimit, kWord);
    QList<RW_VAR> vars;
    for (int i = 0; i < kOnceReadLimit; ++i) {
        vars << onceRead("Main." + variableName(i), 1);
    }
    measureFilling(state, PLC_driver.onceReadList, kOnceReadLimit, [&] {
        for (int i = 0; i < kOnceReadLimit; ++i) {
            vars[i].count = 1; // the call changes it
            benchmark::DoNotOptimize(AddListOnceReadVar(&vars[i]));
        }
    });
}
BENCHMARK(onceReadsOneByOne)->Unit(benchmark::kMicrosecond);

// The yardstick for both: appending the same records to a list, nothing else.
void appendAlone(benchmark::State& state)
{
    resetDriver();
    const RW_VAR var = onceRead("Main.Recipe[0]", 1);
    measureFilling(state, PLC_driver.onceReadList, kOnceReadLimit, [&] {
        for (int i = 0; i < kOnceReadLimit; ++i) {
            PLC_driver.onceReadList.append(var);
        }
    });
}
BENCHMARK(appendAlone)->Unit(benchmark::kMicrosecond);

// The yardstick for single calls: the same call without a list to search.
void onceReadIntoEmptyList(benchmark::State& state)
{
    resetDriver();
    passPlant(kOnceReadLimit, kWord);
    RW_VAR var = onceRead("Main." + variableName(0), 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(AddListOnceReadVar(&var));
        PLC_driver.onceReadList.removeLast();
    }
    resetDriver();
}
BENCHMARK(onceReadIntoEmptyList);

} // namespace
