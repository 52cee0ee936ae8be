// Address parsing alone. Arguments: variables under the label.
#include "address/Func_Check.h"
#include "micro/measured_calls.h"
#include "support/plant.h"

namespace
{

using namespace tavmir::bench;

enum Place { kFirst, kLast, kMissing };

void parse(benchmark::State& state, Place place)
{
    const int count = static_cast<int>(state.range(0));
    resetDriver();
    passPlant(count, kWord);
    const int number = place == kFirst ? 0 : place == kLast ? count - 1 : count;
    const QString address = "Main." + variableName(number);

    const MeasuredCalls calls;
    for (auto _ : state) {
        ControlInformationM info;
        benchmark::DoNotOptimize(get_label_address_info(address, info));
    }
    calls.report(state);
    resetDriver();
}
BENCHMARK_CAPTURE(parse, first, kFirst)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK_CAPTURE(parse, last, kLast)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK_CAPTURE(parse, missing, kMissing)->RangeMultiplier(10)->Range(100, 100000);

} // namespace
