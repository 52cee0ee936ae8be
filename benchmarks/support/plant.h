// Label trees and variable records of any size, for a driver that is linked in.
#ifndef TAVMIR_BENCHMARKS_SUPPORT_PLANT_H
#define TAVMIR_BENCHMARKS_SUPPORT_PLANT_H

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

// Elements of the array of `passMixedPlant`.
const int kArrayElements = 100;

// The label "Main" with one variable of each shape: the word Speed, the word State with bits, the
// array Recipe, and Axis, an array of structures with the members Position and Velocity.
void passMixedPlant();

// One label "Main" with `count` such variables, and its address texts "Main.Variable17".
void passPlant(int count, int typeFlags);
QList<HOSTVAR> polledVariables(int count);

// Back to a driver that nothing has used, then a connection record and callbacks for it.
void resetDriver();

// How often each callback of `resetDriver` was called.
unsigned long varDoneCount();
unsigned long commFailCount();

// One good turn: asks for the request and answers it. False when there is nothing to send.
bool goodTurn();

// One turn without an answer.
bool failedTurn();

} // namespace bench
} // namespace tavmir

#endif
