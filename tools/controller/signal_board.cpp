#include "signal_board.h"

#include "element_store.h"

#include "project/value_format.h"

namespace tavmir::controller
{

void SignalBoard::add(const project::Signal& signal, const project::Element& element)
{
    moved_.push_back({SignalGenerator(signal), element});
}

bool SignalBoard::advanceTo(std::int64_t ms, std::uint8_t station, BitMemory& memory)
{
    bool allStored = true;
    for (Moved& moved : moved_) {
        const QByteArray bytes = project::encodeNumber(moved.element, moved.generator.at(ms));
        allStored = storeElement(moved.element, bytes, station, memory) && allStored;
    }
    return allStored;
}

} // namespace tavmir::controller
