// From bytes to the text that a user sees.
#include "value_bytes.h"
#include "value_format.h"

#include <algorithm>
#include <limits>

namespace tavmir::project
{

namespace
{

QString decodeText(const QByteArray& bytes)
{
    const int end = bytes.indexOf('\0');
    return QString::fromLatin1(end < 0 ? bytes : bytes.left(end));
}

QString decodeHex(quint32 number, int width)
{
    return "0x" + QString::number(number, 16).toUpper().rightJustified(2 * width, '0');
}

// Up to nine digits bring every float back exactly; fewer are shown when they do too.
QString decodeFloat(float value)
{
    for (int digits = 6; digits < std::numeric_limits<float>::max_digits10; ++digits) {
        const QString text = QString::number(static_cast<double>(value), 'g', digits);
        if (floatBits(static_cast<float>(text.toDouble())) == floatBits(value)) {
            return text;
        }
    }
    return QString::number(static_cast<double>(value), 'g',
                           std::numeric_limits<float>::max_digits10);
}

QString decodeSigned(quint32 number, int width)
{
    return width == 2 ? QString::number(static_cast<qint16>(number & 0xFFFF))
                      : QString::number(static_cast<qint32>(number));
}

} // namespace

QString decodeValue(const Element& element, Format format, const QByteArray& bytes)
{
    const int width = std::min(valueBytes(element), 4);
    switch (effectiveFormat(element, format)) {
    case Format::text:
        return decodeText(bytes.left(2 * element.words));
    case Format::bit:
        return numberFrom(bytes, 1) == 0 ? "0" : "1";
    case Format::signedNumber:
        return decodeSigned(numberFrom(bytes, width), width);
    case Format::hex:
        return decodeHex(numberFrom(bytes, width), width);
    case Format::floating:
        return decodeFloat(floatOf(numberFrom(bytes, 4)));
    case Format::unsignedNumber:
    case Format::automatic:
        break;
    }
    return QString::number(numberFrom(bytes, width));
}

} // namespace tavmir::project
