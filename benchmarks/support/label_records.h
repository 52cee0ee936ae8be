// Label records of any size. They call nothing of the driver: a program that loads it takes them
// too.
#ifndef TAVMIR_BENCHMARKS_SUPPORT_LABEL_RECORDS_H
#define TAVMIR_BENCHMARKS_SUPPORT_LABEL_RECORDS_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{
namespace bench
{

// Codes and bits of `typeFlags`.
const int kBit = 1;
const int kWord = 4;
const int kDoubleWord = 6;
const int kStructure = 12;
const int kArray = 0x100;
const int kStructureType = 0x200;
const int kBitSuffix = 0x400;

Label_Type_Info variable(const QString& name, int typeFlags, int offset);

// An array of one dimension, indices 0 to `high`, written in decimal.
Label_Type_Info arrayVariable(const QString& name, int typeFlags, int offset, int high);

Label_Type_Info structureType(const QList<Label_Type_Info>& members);

Label_Type_Info label(const QString& name, const QList<Label_Type_Info>& variables);

// "Variable17"
QString variableName(int i);

// `count` variables of one type, no two adjacent.
QList<Label_Type_Info> variables(int count, int typeFlags);

} // namespace bench
} // namespace tavmir

#endif
