#include "address/array_index.h"

#include "address/Func_Check.h"
#include "core/wrapping.h"

#include <algorithm>

namespace tavmir
{

namespace
{

const int kDecimal = 10;
const int kDigitsThatFit = 9; // any number of so many decimal digits fits 32 bits

// Plain decimal digits need no help from Qt; false when they are not plain.
bool convertDigits(const TextPiece& text, qint32& number)
{
    if (text.size < 1 || text.size > kDigitsThatFit) {
        return false;
    }
    qint32 value = 0;
    for (int i = 0; i < text.size; ++i) {
        const int digit = text.text[i].unicode() - '0';
        if (digit < 0 || digit > 9) {
            return false;
        }
        value = kDecimal * value + digit;
    }
    number = value;
    return true;
}

// Takes the characters up to the next ',' off the front of `rest`.
TextPiece takeItem(TextPiece& rest)
{
    const QChar* const end = rest.text + rest.size;
    const QChar* const comma = std::find(rest.text, end, QLatin1Char(','));
    const TextPiece item = {rest.text, static_cast<int>(comma - rest.text)};
    const int taken = comma == end ? item.size : item.size + 1;
    rest.text += taken;
    rest.size -= taken;
    return item;
}

} // namespace

bool convertNumber(const TextPiece& text, int radix, qint32& number)
{
    if (radix == kDecimal && convertDigits(text, number)) {
        return true;
    }
    if (radix != 0 && (radix < 2 || radix > 36)) {
        return false;
    }
    bool converted = false;
    number = text.toString().toInt(&converted, radix);
    return converted;
}

int linearIndex(const TextPiece& text, int dimensionCount, const QList<int>& arrayBounds,
                unsigned int& index, unsigned int* end)
{
    const std::ptrdiff_t items =
        1 + std::count(text.text, text.text + text.size, QChar(QLatin1Char(',')));
    if (items != dimensionCount) {
        return kAddressRefused;
    }
    if (arrayBounds.size() < 1 + 2 * static_cast<qint64>(dimensionCount)) {
        return kAddressRefused;
    }

    // What is summed so far counts once for each element of the next dimension. A size is high
    // minus low, and an index above the high bound is accepted.
    TextPiece rest = text;
    qint32 linear = 0;
    qint32 size = 0;
    for (int d = 0; d < dimensionCount; ++d) {
        const int low = arrayBounds.at(1 + 2 * d);
        qint32 offset = 0;
        if (!convertNumber(takeItem(rest), arrayBounds.first(), offset)) {
            return kIndexRefused;
        }
        offset = wrapSubtract(offset, low);
        if (offset < 0) {
            return kIndexRefused;
        }
        size = wrapSubtract(arrayBounds.at(2 + 2 * d), low);
        linear = wrapAdd(wrapMultiply(linear, size), offset);
    }
    index = static_cast<unsigned int>(linear);
    *end = static_cast<unsigned int>(wrapAdd(linear, size));
    return kAddressResolved;
}

} // namespace tavmir
