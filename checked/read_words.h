// Which words were received or written before a bit of them is written. A bit that is read of a
// word never received enters a zero into the cache: these zeros are known here. Private.
#ifndef TAVMIR_CHECKED_READ_WORDS_H
#define TAVMIR_CHECKED_READ_WORDS_H

#include <QtCore/QtGlobal>

struct ControlInformationM;

namespace tavmir
{
namespace checked
{

// Before a bit is read.
void noteBitRead(const ControlInformationM& info);

// After a value was stored under the address.
void noteStored(int dataType, qint32 elementAddress);

bool wasRead(const ControlInformationM& info);

} // namespace checked
} // namespace tavmir

#endif
