// From a user's text, or a number, to bytes.
#include "value_bytes.h"
#include "value_format.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavmir::project
{

namespace
{

// The first number that rounds to no finite float: half a step above the largest.
constexpr double kBeyondFloat = 0x1.ffffffp127;

EncodedValue refuse(const QString& problem)
{
    EncodedValue refused;
    refused.problem = problem;
    return refused;
}

EncodedValue accept(const QByteArray& bytes)
{
    EncodedValue accepted;
    accepted.ok = true;
    accepted.bytes = bytes;
    return accepted;
}

EncodedValue encodeBit(const QString& text)
{
    if (text == "0" || text == "1") {
        return accept(QByteArray(1, text == "1" ? '\1' : '\0'));
    }
    return refuse(QString("\"%1\" is no bit: 0 or 1").arg(text));
}

EncodedValue encodeFloat(const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number)) {
        return refuse(QString("\"%1\" is no number").arg(text));
    }
    if (std::abs(number) >= kBeyondFloat) {
        return refuse(QString("%1 is outside the range of a 32-bit float").arg(text));
    }
    return accept(bytesOf(floatBits(static_cast<float>(number)), 4));
}

EncodedValue encodeText(const Element& element, const QString& text)
{
    const int room = 2 * element.words;
    if (text.size() > room) {
        return refuse(
            QString("a text of %1 characters does not fit into %2").arg(text.size()).arg(room));
    }
    for (const QChar character : text) {
        if (character.unicode() == 0 || character.unicode() > 0xFF) {
            return refuse("a text holds characters from U+0001 to U+00FF only");
        }
    }
    return accept(text.toLatin1().leftJustified(room, '\0'));
}

EncodedValue encodeInteger(const Element& element, Format format, const QString& text)
{
    const int width = valueBytes(element);
    const qint64 span = Q_INT64_C(1) << (8 * width);
    const bool prefixed = text.startsWith("0x", Qt::CaseInsensitive);
    const bool hex = format == Format::hex || (prefixed && format != Format::signedNumber);
    bool isNumber = false;
    const QString digits = prefixed ? text.mid(2) : text;
    const bool signedDigits = hex && (digits.startsWith('-') || digits.startsWith('+'));
    const qint64 number = hex ? digits.toLongLong(&isNumber, 16) : text.toLongLong(&isNumber, 10);
    if (!isNumber || signedDigits) {
        return refuse(QString("\"%1\" is no %2number").arg(text, hex ? "hexadecimal " : "whole "));
    }
    const bool negatives = !hex && (format == Format::signedNumber || format == Format::automatic);
    const qint64 low = negatives ? -span / 2 : 0;
    const qint64 high = format == Format::signedNumber ? span / 2 - 1 : span - 1;
    if (number < low || number > high) {
        return refuse(QString("%1 is outside %2..%3").arg(text).arg(low).arg(high));
    }
    return accept(bytesOf(static_cast<quint32>(number), width));
}

} // namespace

EncodedValue encodeValue(const Element& element, Format format, const QString& text)
{
    if (!formatFits(element, format)) {
        return refuse(QString("the value is not written as %1").arg(formatName(format)));
    }
    if (element.isBit()) {
        return encodeBit(text);
    }
    if (element.type == DataType::text) {
        return encodeText(element, text);
    }
    const bool real = element.type == DataType::real && format != Format::hex;
    if (real || format == Format::floating) {
        return encodeFloat(text);
    }
    return encodeInteger(element, format, text);
}

NumberRange numberRange(const Element& element)
{
    if (element.isBit()) {
        return {0, 1};
    }
    switch (element.type) {
    case DataType::word:
        return {-32768.0, 65535.0};
    case DataType::dword:
        return {-2147483648.0, 4294967295.0};
    case DataType::real: {
        const double largest = static_cast<double>(std::numeric_limits<float>::max());
        return {-largest, largest};
    }
    default:
        return {0, 0};
    }
}

QByteArray encodeNumber(const Element& element, double number)
{
    if (element.type == DataType::real) {
        return bytesOf(floatBits(static_cast<float>(number)), 4);
    }
    const NumberRange range = numberRange(element);
    const double bounded = std::min(std::max(number, range.low), range.high);
    return bytesOf(static_cast<quint32>(std::llround(bounded)), valueBytes(element));
}

} // namespace tavmir::project
