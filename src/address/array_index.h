// Index texts of arrays, and numbers in address texts. Private.
#ifndef TAVMIR_ADDRESS_ARRAY_INDEX_H
#define TAVMIR_ADDRESS_ARRAY_INDEX_H

#include "address/address_parts.h"

#include <QtCore/QList>

namespace tavmir
{

// A number as QString::toInt converts it: false when it is none, or out of range. Qt converts
// in the radixes 2 to 36, and in radix 0 as C writes numbers; other radixes have no numbers.
bool convertNumber(const TextPiece& text, int radix, qint32& number);

// Turns "1,2" into a linear index, row by row. Results are those of AddressResult: 0, 1 (number
// of indices, bounds missing), 3 (not a number, below a low bound); on 1 and 3 `index` and
// `end` are not written.
//   end  index plus the size of the last dimension
int linearIndex(const TextPiece& text, int dimensionCount, const QList<int>& arrayBounds,
                unsigned int& index, unsigned int* end);

} // namespace tavmir

#endif
