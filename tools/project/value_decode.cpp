// From bytes to the text that a user sees, and to the number behind it.
#include "format_table.h"
#include "value_bytes.h"
#include "value_format.h"

#include <algorithm>
#include <cmath>

namespace tavmir::project
{

QString decodeValue(const Element& element, Format format, const QByteArray& bytes)
{
    return formatRow(effectiveFormat(element, format))->show(element, bytes);
}

std::optional<double> decodeNumber(const Element& element, Format format, const QByteArray& bytes)
{
    const Format shown = effectiveFormat(element, format);
    const quint32 number = numberFrom(bytes, std::min(valueBytes(element), 4));
    switch (shown) {
    case Format::text:
    case Format::automatic:
        return std::nullopt;
    case Format::bit:
        return number == 0 ? 0 : 1;
    case Format::signedNumber:
        return valueBytes(element) == 2 ? static_cast<qint16>(number) : static_cast<qint32>(number);
    case Format::unsignedNumber:
    case Format::hex:
        return number;
    case Format::floating:
        break;
    }
    const float value = floatOf(number);
    return std::isfinite(value) ? std::optional<double>(static_cast<double>(value)) : std::nullopt;
}

} // namespace tavmir::project
