// The soak's plant: who owns which variable, and what values may stand in it. A value tells
// where it belongs, so that a reader can say of any value whether it may be there.
#ifndef TAVMIR_TESTS_SOAK_LAYOUT_H
#define TAVMIR_TESTS_SOAK_LAYOUT_H

#include "tavmir_kx_tcp/host_interface.h"

#include <cstdint>

namespace tavmir::soak
{

const int kWriters = 2;
const int kElements = 60; // of every array
const int kStation = 1;

// Arrays of the label "Soak", in the order of their addresses. Each writer has one of its own
// of double words and of words; the constants are the controller's and never written.
enum Area { DoubleWords0, DoubleWords1, Words0, Words1, Constants, Flags, kAreas };

// The bit address of an element.
std::int32_t addressOf(Area area, int index);
int bitsOf(Area area);

// "Soak.D0[7]".
QString addressText(Area area, int index);

// The value of one write: it bears its index and the writer's running number.
std::uint32_t valueOf(Area area, int index, std::uint32_t number);

// What the controller holds in a constant.
std::uint32_t constantOf(int index);

// Whether the value may stand in the element once `written` writes were begun there.
bool mayHold(Area area, int index, std::uint32_t value, std::uint32_t written);

Label_Type_Info soakLabel();

} // namespace tavmir::soak

#endif
