// Handing over a large label tree. Arguments: variables under the label.
#include "micro/measured_calls.h"
#include "support/plant.h"

namespace
{

using namespace tavmir::bench;

void passPlainVariables(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    MeasuredCalls calls;
    for (auto _ : state) {
        state.PauseTiming();
        calls.pause();
        resetDriver();
        QList<Label_Type_Info> labels;
        labels << label("Main", variables(count, kWord));
        calls.resume();
        state.ResumeTiming();
        PassVarName_2(&labels);
        state.PauseTiming();
        calls.pause();
        resetDriver();
        labels.clear();
        calls.resume();
        state.ResumeTiming();
    }
    calls.report(state, count);
}
BENCHMARK(passPlainVariables)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);

// Structure variables that share one type of 100 members, each of which shares another type of
// 100 members.
void passSharedTypes(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    const int kMembers = 100;
    Label_Type_Info inner = variable(QString(), kStructure, 0);
    inner.elementType << structureType(variables(kMembers, kWord));
    QList<Label_Type_Info> innerMembers;
    for (int i = 0; i < kMembers; ++i) {
        inner.name = variableName(i);
        innerMembers << inner;
    }
    Label_Type_Info outer = variable(QString(), kStructure, 0);
    outer.elementType << structureType(innerMembers);
    QList<Label_Type_Info> outerVariables;
    for (int i = 0; i < count; ++i) {
        outer.name = variableName(i);
        outerVariables << outer;
    }
    QList<Label_Type_Info> labels;
    labels << label("Main", outerVariables);
    MeasuredCalls calls;
    for (auto _ : state) {
        state.PauseTiming();
        calls.pause();
        resetDriver();
        calls.resume();
        state.ResumeTiming();
        PassVarName_2(&labels);
    }
    calls.report(state, count);
    resetDriver();
}
BENCHMARK(passSharedTypes)->Arg(10000)->Unit(benchmark::kMicrosecond);

} // namespace
