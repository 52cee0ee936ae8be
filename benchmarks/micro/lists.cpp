// Building the request lists: the rebuild and the one-shot reads. Arguments: elements.
#include "micro/measured_calls.h"
#include "support/plant.h"

namespace
{

using namespace tavmir::bench;

const int kOnceReadLimit = 1024;

// The host's variables in an order that is not that of their addresses.
QList<HOSTVAR> shuffled(const QList<HOSTVAR>& vars)
{
    const qint64 kStride = 7919; // a prime: every variable comes once
    QList<HOSTVAR> list;
    for (int i = 0; i < vars.size(); ++i)
        list << vars.at(static_cast<int>(i * kStride % vars.size()));
    return list;
}

void rebuildOf(benchmark::State& state, QList<HOSTVAR> vars)
{
    MeasuredCalls calls;
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReCreatReadVarList(&vars));
        state.PauseTiming();
        calls.pause();
        PLC_driver.pendingReadList.clear();
        calls.resume();
        state.ResumeTiming();
    }
    calls.report(state, static_cast<int>(state.range(0)));
    resetDriver();
}

// Each element a variable of its own, in the order of the project.
void rebuild(benchmark::State& state)
{
    const int elements = static_cast<int>(state.range(0));
    resetDriver();
    passPlant(elements, kWord);
    rebuildOf(state, polledVariables(elements));
}
BENCHMARK(rebuild)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

// The same in an order in which no variable's record lies beside the one before.
void rebuildShuffled(benchmark::State& state)
{
    const int elements = static_cast<int>(state.range(0));
    resetDriver();
    passPlant(elements, kWord);
    rebuildOf(state, shuffled(polledVariables(elements)));
}
BENCHMARK(rebuildShuffled)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);

// One array variable that makes all elements.
void rebuildArray(benchmark::State& state)
{
    const int elements = static_cast<int>(state.range(0));
    resetDriver();
    QList<Label_Type_Info> labels;
    labels << label(QString::fromLatin1("Main"),
                    QList<Label_Type_Info>()
                        << arrayVariable(QString::fromLatin1("Recipe"), kWord, 0, elements));
    PassVarName_2(&labels);
    HOSTVAR var;
    var.addressText = QString::fromLatin1("Main.Recipe[0]");
    var.count = elements;
    rebuildOf(state, QList<HOSTVAR>() << var);
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
    QList<Label_Type_Info> labels;
    labels << label(QString::fromLatin1("Main"),
                    QList<Label_Type_Info>()
                        << arrayVariable(QString::fromLatin1("Recipe"), kWord, 0, kOnceReadLimit));
    PassVarName_2(&labels);
    MeasuredCalls calls;
    for (auto _ : state) {
        RW_VAR var = onceRead(QString::fromLatin1("Main.Recipe[0]"), kOnceReadLimit);
        benchmark::DoNotOptimize(AddListOnceReadVar(&var));
        state.PauseTiming();
        calls.pause();
        PLC_driver.onceReadList.clear();
        calls.resume();
        state.ResumeTiming();
    }
    calls.report(state, kOnceReadLimit);
    resetDriver();
}
BENCHMARK(onceReadsInOneCall)->Unit(benchmark::kMicrosecond);

// 1024 calls, each for another variable of one element.
void onceReadsOneByOne(benchmark::State& state)
{
    resetDriver();
    passPlant(kOnceReadLimit, kWord);
    QList<RW_VAR> vars;
    for (int i = 0; i < kOnceReadLimit; ++i)
        vars << onceRead(QString::fromLatin1("Main.") + variableName(i), 1);
    MeasuredCalls calls;
    for (auto _ : state) {
        for (int i = 0; i < kOnceReadLimit; ++i)
            benchmark::DoNotOptimize(AddListOnceReadVar(&vars[i]));
        state.PauseTiming();
        calls.pause();
        PLC_driver.onceReadList.clear();
        for (int i = 0; i < kOnceReadLimit; ++i)
            vars[i].count = 1;
        calls.resume();
        state.ResumeTiming();
    }
    calls.report(state, kOnceReadLimit);
    resetDriver();
}
BENCHMARK(onceReadsOneByOne)->Unit(benchmark::kMicrosecond);

// The yardstick for both: appending the same records to a list, nothing else.
void appendAlone(benchmark::State& state)
{
    resetDriver();
    const RW_VAR var = onceRead(QString::fromLatin1("Main.Recipe[0]"), 1);
    MeasuredCalls calls;
    for (auto _ : state) {
        for (int i = 0; i < kOnceReadLimit; ++i)
            PLC_driver.onceReadList.append(var);
        state.PauseTiming();
        calls.pause();
        PLC_driver.onceReadList.clear();
        calls.resume();
        state.ResumeTiming();
    }
    calls.report(state, kOnceReadLimit);
    resetDriver();
}
BENCHMARK(appendAlone)->Unit(benchmark::kMicrosecond);

// The yardstick for single calls: the same call without a list to search.
void onceReadIntoEmptyList(benchmark::State& state)
{
    resetDriver();
    passPlant(kOnceReadLimit, kWord);
    RW_VAR var = onceRead(QString::fromLatin1("Main.") + variableName(0), 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(AddListOnceReadVar(&var));
        PLC_driver.onceReadList.removeLast();
    }
    resetDriver();
}
BENCHMARK(onceReadIntoEmptyList);

} // namespace
