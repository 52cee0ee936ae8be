// Builds label trees as a host hands them in.
#ifndef TAVMIR_TESTS_SUPPORT_LABEL_TREE_H
#define TAVMIR_TESTS_SUPPORT_LABEL_TREE_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{
namespace test
{

const quint16 kArray = 0x100;
const quint16 kStructureType = 0x200;
const quint16 kBitSuffix = 0x400;

// A variable or member without dimensions.
Label_Type_Info variable(const char* name, int typeFlags, int offset);

// The same as an array; `bounds` is low, high, low, high … of its dimensions.
Label_Type_Info arrayVariable(const char* name, int typeFlags, int offset, const QList<int>& bounds,
                              int radix = 10);

// A text variable (type 10) of the given element width.
Label_Type_Info textVariable(const char* name, int offset, int width);

Label_Type_Info structureType(const QList<Label_Type_Info>& members);

// An instance of a structure (type 12), alone or as an array with a stride.
Label_Type_Info structureVariable(const char* name, int offset, const Label_Type_Info& type);
Label_Type_Info structureArray(const char* name, int offset, const Label_Type_Info& type,
                               int strideBits, const QList<int>& bounds);

Label_Type_Info label(const char* name, const QList<Label_Type_Info>& variables);

// Hands the labels to the driver.
void passLabels(const QList<Label_Type_Info>& labels);

// The label "Main" with the bit Run, the word W with bit suffix, the two-dimensional word
// array M and the array of structures Axis with members Pos and Vel.
Label_Type_Info mainLabel();

} // namespace test
} // namespace tavmir

#endif
