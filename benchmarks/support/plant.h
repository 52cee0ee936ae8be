// A plant of any size passed to a driver that is linked in, and turns of its cycle.
#ifndef TAVMIR_BENCHMARKS_SUPPORT_PLANT_H
#define TAVMIR_BENCHMARKS_SUPPORT_PLANT_H

#include "support/label_records.h"

namespace tavmir
{
namespace bench
{

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
