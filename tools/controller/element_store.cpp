#include "element_store.h"

#include "frame_bytes.h"

#include <vector>

namespace tavmir::controller
{

bool storeElement(const project::Element& element, const QByteArray& bytes, std::uint8_t station,
                  BitMemory& memory)
{
    if (element.isBit()) {
        const auto bit = static_cast<std::uint32_t>(element.bitNumber.value_or(0));
        const bool set = !bytes.isEmpty() && byteAt(bytes, 0) != 0;
        return memory.write(station, element.address + bit, 1, set ? 1 : 0);
    }
    // Byte by byte from the lowest: bit i of the value lands at address + i, whatever the width.
    std::vector<BitValue> values;
    for (int i = 0; i < project::memoryBits(element) / 8; ++i) {
        const std::uint32_t address = element.address + static_cast<std::uint32_t>(8 * i);
        values.push_back({address, i < bytes.size() ? byteAt(bytes, i) : std::uint8_t{0}});
    }
    return memory.write(station, 8, values);
}

} // namespace tavmir::controller
