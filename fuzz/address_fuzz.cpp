// Address texts against label trees, both out of the bytes: parser, reads and writes, held
// against the model.
#include "driver_pair.h"
#include "fuzz_values.h"

namespace
{

using namespace tavmir;

model::Text nameOf(FuzzedDataProvider& bytes)
{
    const char16_t* const names[] = {u"A", u"B", u"Run", u"Axis", u"Pos"};
    return names[bytes.ConsumeIntegralInRange<std::size_t>(0, 4)];
}

model::Label labelOf(FuzzedDataProvider& bytes, int depth)
{
    model::Label label;
    label.name = nameOf(bytes);
    label.typeFlags = static_cast<std::uint16_t>(bytes.ConsumeIntegral<std::uint16_t>() & 0x70F);
    label.offset = bytes.ConsumeIntegral<std::int32_t>();
    if ((label.typeFlags & 0x100) != 0) {
        label.dimensionCount = bytes.ConsumeIntegralInRange<int>(-1, 3);
        const int bounds = bytes.ConsumeIntegralInRange<int>(0, 7);
        for (int i = 0; i < bounds; ++i) {
            label.arrayBounds.push_back(i == 0 ? bytes.ConsumeIntegralInRange<int>(-1, 38)
                                               : bytes.ConsumeIntegral<std::int8_t>());
        }
    }
    if (bytes.ConsumeBool()) {
        label.elementSizes.push_back(bytes.ConsumeIntegral<std::int16_t>());
    }
    if (depth >= 3) {
        return label;
    }
    for (int i = bytes.ConsumeIntegralInRange<int>(0, 2); i > 0; --i) {
        label.members.push_back(labelOf(bytes, depth + 1));
    }
    label.memberCount = bytes.ConsumeIntegralInRange<std::uint32_t>(0, 3);
    if (bytes.ConsumeBool()) {
        label.elementType.push_back(labelOf(bytes, depth + 1));
    }
    return label;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider bytes(data, size);
    fuzz::DriverPair pair;
    pair.setWord(model::WriteMode, bytes.ConsumeBool() ? 2 : 0);
    std::vector<model::Label> labels;
    for (int i = bytes.ConsumeIntegralInRange<int>(1, 2); i > 0; --i) {
        labels.push_back(labelOf(bytes, 0));
    }
    pair.passLabels(labels);
    const int count = bytes.ConsumeIntegralInRange<int>(-2, 40);
    while (bytes.remaining_bytes() > 0) {
        const model::Text address = fuzz::printableOf(bytes.ConsumeRandomLengthString(60));
        pair.resolve(address);
        pair.write(address, {1, 2, 3, 4, 5}, count);
        pair.read(address, count);
    }
    return 0;
}
