// What a screen refresh and an operator's input cost: GetRegisterData and SetRegisterData.
#include "micro/measured_calls.h"
#include "support/plant.h"

namespace
{

using namespace tavmir::bench;

struct Access {
    const char* address;
    int count;
};

const Access kPlain = {"Main.Speed", 1};
const Access kArrayOf100 = {"Main.Recipe[0]", kArrayElements};
const Access kOneBit = {"Main.State.bit[5]", 1};
const Access kMember = {"Main.Axis[3].Position", 2};

void get(benchmark::State& state, const Access& access)
{
    resetDriver();
    passMixedPlant();
    const QString address = QString::fromLatin1(access.address);
    QByteArray data(4 * kArrayElements, '\1');
    // Every element is in the cache, as it is once its variable is polled.
    PLC_driver.comInfo->writeMode = 0;
    SetRegisterData(address, 0, QString(), 1, &data, access.count, 1, 1);

    const MeasuredCalls calls;
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetRegisterData(address, 0, 0, 0, &data, access.count));
    }
    calls.report(state);
    resetDriver();
}
BENCHMARK_CAPTURE(get, plain, kPlain);
BENCHMARK_CAPTURE(get, array100, kArrayOf100);
BENCHMARK_CAPTURE(get, bit, kOneBit);
BENCHMARK_CAPTURE(get, member, kMember);

void set(benchmark::State& state, const Access& access)
{
    const int kWritesKept = 1000;
    resetDriver();
    passMixedPlant();
    const QString address = QString::fromLatin1(access.address);
    QByteArray data(4 * kArrayElements, '\1');
    MeasuredCalls calls;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            SetRegisterData(address, 0, QString(), 1, &data, access.count, 1, 1));
        if (PLC_driver.writeVarList.size() < kWritesKept) {
            continue;
        }
        state.PauseTiming();
        calls.pause();
        PLC_driver.writeVarList.clear();
        calls.resume();
        state.ResumeTiming();
    }
    calls.report(state);
    resetDriver();
}
BENCHMARK_CAPTURE(set, plain, kPlain);
BENCHMARK_CAPTURE(set, array100, kArrayOf100);
BENCHMARK_CAPTURE(set, bit, kOneBit);
BENCHMARK_CAPTURE(set, member, kMember);

// The first, the last, or one variable after another of `range(0)` under the label.
enum Which { kFirst, kLast, kEachInTurn };

void getOfMany(benchmark::State& state, Which which)
{
    const int count = static_cast<int>(state.range(0));
    resetDriver();
    passPlant(count, kWord);
    QList<QString> addresses;
    for (int i = 0; i < count; ++i) {
        addresses << "Main." + variableName(i);
    }
    QByteArray data(2, '\1');
    PLC_driver.comInfo->writeMode = 0;
    for (int i = 0; i < count; ++i) {
        PLC_driver.wordCache.insert(64 * i, 1);
    }

    int i = which == kLast ? count - 1 : 0;
    const MeasuredCalls calls;
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetRegisterData(addresses.at(i), 0, 0, 0, &data, 1));
        if (which == kEachInTurn && ++i == count) {
            i = 0;
        }
    }
    calls.report(state);
    resetDriver();
}
BENCHMARK_CAPTURE(getOfMany, first, kFirst)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK_CAPTURE(getOfMany, last, kLast)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK_CAPTURE(getOfMany, each, kEachInTurn)->RangeMultiplier(10)->Range(100, 100000);

} // namespace
