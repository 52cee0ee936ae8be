// Puts values of project variables into the memory.
#ifndef TAVMIR_CONTROLLER_ELEMENT_STORE_H
#define TAVMIR_CONTROLLER_ELEMENT_STORE_H

#include "bit_memory.h"

#include "project/address_resolver.h"

#include <QtCore/QByteArray>

#include <cstdint>

namespace tavmir::controller
{

// `bytes` as the project's value encoding gives them: least significant byte first, one byte for
// a bit; missing bytes count as 0. False: no room, nothing changed.
bool storeElement(const project::Element& element, const QByteArray& bytes, std::uint8_t station,
                  BitMemory& memory);

} // namespace tavmir::controller

#endif
