// Values that the random host hands over, and how a trace shows them.
#ifndef TAVMIR_TESTS_MODEL_SESSION_VALUES_H
#define TAVMIR_TESTS_MODEL_SESSION_VALUES_H

#include "model/qt_side.h"
#include "model/seeded_random.h"

namespace tavmir::model
{

inline std::string shownVar(const Var& var)
{
    return "type " + std::to_string(var.dataType) + " at " + std::to_string(var.elementAddress) +
           " station " + std::to_string(var.station) + " count " + std::to_string(var.count) +
           " key " + std::to_string(var.hostKey) + "," + std::to_string(var.varKey) + " " +
           shown(var.addressText) + " value " + shown(var.value) + " hostData2 " +
           std::to_string(var.hostData2);
}

// A quarter of them zero.
inline Bytes randomBytes(SeededRandom& random, std::size_t count)
{
    Bytes bytes(count);
    for (unsigned char& byte : bytes) {
        byte = random.percent(25) ? 0 : static_cast<unsigned char>(random.next());
    }
    return bytes;
}

} // namespace tavmir::model

#endif
