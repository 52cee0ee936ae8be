// Small makers of host records, and the bytes of replies.
#ifndef TAVMIR_TESTS_SUPPORT_RECORDS_H
#define TAVMIR_TESTS_SUPPORT_RECORDS_H

#include "tavmir_kx_tcp/host_interface.h"

#include <vector>

namespace tavmir
{
namespace test
{

// Bytes from hexadecimal digits; blanks are for the reader.
QByteArray hex(const char* digits);

// A one-element record to read.
RW_VAR element(int dataType, int elementAddress, int station = 1);

// A one-element record to write; `hostData2` is 1, as a write must carry.
RW_VAR writeOf(int dataType, int elementAddress, const QByteArray& value, int hostKey = 0,
               int varKey = 0);

// The host's record of one polled variable.
HOSTVAR hostVar(const char* address, int count, int station = 1, const char* auxText = "");

// Puts the elements into the batch, as the cycle does; they must outlive it.
void makeBatch(std::vector<RW_VAR>& elements);

// Element addresses of a list, in order.
std::vector<int> addressesOf(const QList<RW_VAR>& list);

// A read reply whose header and entry addresses are noise: the driver must not look at them.
//   valueBytes  1, 2 or 4: bytes of each value, sent most significant byte first
QByteArray readReply(int valueBytes, const std::vector<unsigned int>& values);

// What a test knows of every member of a record, for comparing whole records.
bool sameRecord(const RW_VAR& a, const RW_VAR& b);

} // namespace test
} // namespace tavmir

#endif
