// Replies that are none, made of the right one. `variant` counts from 0 and goes through all kinds
// that the request allows, the same ones each time. The right reply is one of at least 9 bytes
// that refuses nothing.
#ifndef TAVMIR_JUDGE_WRONG_REPLIES_H
#define TAVMIR_JUDGE_WRONG_REPLIES_H

#include "event.h"

namespace tavmir::judge
{

// Whole, and of somebody else: another number, station, function, count, an exception of another
// number; of a read also another address.
Bytes foreignReply(const Bytes& request, const Bytes& right, int variant);

// Lacks one byte, an entry, all of them; its length field is that of the rest. A write's lacks its
// count.
Bytes shortReply(const Bytes& right, int variant);

// One byte, an entry, sixteen bytes too many; its length field counts them.
Bytes longReply(const Bytes& right, int variant);

// The first half; the length field promises the whole.
Bytes halfReply(const Bytes& right);

// The exception reply to a request.
Bytes refusalOf(const Bytes& request, std::uint8_t code);

} // namespace tavmir::judge

#endif
