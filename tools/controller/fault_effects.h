// What the faults that change a reply's bytes make of it. Each takes a whole reply frame of at
// least 9 bytes.
#ifndef TAVMIR_CONTROLLER_FAULT_EFFECTS_H
#define TAVMIR_CONTROLLER_FAULT_EFFECTS_H

#include "request.h"
#include "seeded_random.h"

#include <QtCore/QByteArray>

namespace tavmir::controller
{

constexpr int kMostBytesAdded = 16;

// At least one byte shorter and at least 8 bytes long; the length field says so.
QByteArray truncated(const QByteArray& reply, SeededRandom& random);

// 1 to 16 bytes longer; the length field says so.
QByteArray oversized(const QByteArray& reply, SeededRandom& random);

// The first bytes, at least one; the length field promises the whole.
QByteArray cutShort(const QByteArray& reply, SeededRandom& random);

// The top bit of one header byte flipped. Values are left alone: nothing in the protocol could
// tell a client that one is wrong (see garbled). And only the top bit, so that a transaction id
// never becomes that of a neighbouring request.
QByteArray corrupted(const QByteArray& reply, SeededRandom& random);

// One value changed, the frame otherwise right: of a read's reply one that it brings, of a write
// one that it asks for. What carries no value stays as it is.
QByteArray garbled(const QByteArray& reply, SeededRandom& random);
void garble(Request& request, SeededRandom& random);

} // namespace tavmir::controller

#endif
