// Write records of any type, count and value length, through to their frames and callbacks.
#include "driver_pair.h"
#include "fuzz_values.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tavmir;
    FuzzedDataProvider bytes(data, size);
    fuzz::DriverPair pair;
    pair.setWord(model::RetryLimit, bytes.ConsumeIntegralInRange<int>(0, 1));
    while (bytes.remaining_bytes() > 0) {
        const int next = bytes.ConsumeIntegralInRange<int>(0, 7);
        if (next < 5) {
            pair.addWrite(fuzz::recordOf(bytes));
        } else if (next < 7) {
            pair.communicate();
        } else {
            pair.answer(model::Bytes(9, 0), bytes.ConsumeBool() ? 9 : 0);
        }
    }
    for (int turn = 0; turn < 3; ++turn) {
        pair.communicate();
        pair.answer(model::Bytes(9, 0), 9);
    }
    return 0;
}
