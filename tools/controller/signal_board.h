// Moves the project's signals in the memory. A variable with a signal belongs to it: what a
// client writes there lasts until the board is next advanced.
#ifndef TAVMIR_CONTROLLER_SIGNAL_BOARD_H
#define TAVMIR_CONTROLLER_SIGNAL_BOARD_H

#include "bit_memory.h"
#include "signal_generator.h"

#include "project/address_resolver.h"

#include <cstdint>
#include <vector>

namespace tavmir::controller
{

class SignalBoard
{
public:
    // `element`: a single value, no text.
    void add(const project::Signal& signal, const project::Element& element);

    bool isEmpty() const { return moved_.empty(); }

    // Writes every signal's value at `ms` milliseconds since the start. False when the memory had
    // no room for one of them; the others are written all the same.
    bool advanceTo(std::int64_t ms, std::uint8_t station, BitMemory& memory);

private:
    struct Moved {
        SignalGenerator generator;
        project::Element element;
    };
    std::vector<Moved> moved_;
};

} // namespace tavmir::controller

#endif
