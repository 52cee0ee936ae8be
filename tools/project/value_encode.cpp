// From a user's text, or a number, to bytes.
#include "json_object.h"
#include "raw_address.h"
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

// How the digits of a whole number are taken.
enum class Digits { decimal, decimalOrPrefixed, hexadecimal, prefixed };

struct WholeRange {
    qint64 low = 0;
    qint64 high = 0;
};

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

// values  what would be one: "unsigned, 0 to 65535"
EncodedValue refuseValue(const Element& element, const QString& text, const QString& values)
{
    return refuse(
        QString("%1 is not a value of %2: %3").arg(quoted(text), shownAddress(element), values));
}

EncodedValue encodeBit(const Element& element, const QString& text)
{
    if (text == "0" || text == "1") {
        return accept(QByteArray(1, text == "1" ? '\1' : '\0'));
    }
    return refuseValue(element, text, "bit, 0 or 1");
}

EncodedValue encodeFloat(const Element& element, const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber || !(std::abs(number) < kBeyondFloat)) {
        return refuseValue(element, text, "float, -3.40282e+38 to 3.40282e+38");
    }
    return accept(bytesOf(floatBits(static_cast<float>(number)), 4));
}

EncodedValue encodeText(const Element& element, const QString& text)
{
    const int room = 2 * element.words;
    const bool holds = std::all_of(text.begin(), text.end(), [](QChar character) {
        return character.unicode() > 0 && character.unicode() <= 0xFF;
    });
    if (text.size() > room || !holds) {
        return refuseValue(element, text,
                           QString("text, at most %1 characters from U+0001 to U+00FF").arg(room));
    }
    return accept(text.toLatin1().leftJustified(room, '\0'));
}

WholeRange wholeRange(const Element& element, Format format)
{
    const qint64 span = Q_INT64_C(1) << (8 * valueBytes(element));
    const bool negatives = format == Format::signedNumber || format == Format::automatic;
    return {negatives ? -span / 2 : 0, format == Format::signedNumber ? span / 2 - 1 : span - 1};
}

QString wholeValues(const Element& element, Format format)
{
    const WholeRange range = wholeRange(element, format);
    if (format == Format::hex) {
        const QString high = QString::number(range.high, 16).toUpper();
        return QString("hex, 0x%1 to 0x%2").arg(QString(high.size(), '0'), high);
    }
    const QString name = format == Format::automatic ? "signed or unsigned" : formatName(format);
    return QString("%1, %2 to %3").arg(name).arg(range.low).arg(range.high);
}

std::optional<qint64> wholeNumber(const QString& text, Digits digits)
{
    const bool prefixed = digits != Digits::decimal && text.startsWith("0x", Qt::CaseInsensitive);
    const bool hexadecimal = prefixed || digits == Digits::hexadecimal;
    const QString number = prefixed ? text.mid(2) : text;
    const bool isSigned = number.startsWith('-') || number.startsWith('+');
    if ((hexadecimal && isSigned) || (digits == Digits::prefixed && !prefixed)) {
        return std::nullopt;
    }
    bool isNumber = false;
    const qint64 value = number.toLongLong(&isNumber, hexadecimal ? 16 : 10);
    return isNumber ? std::optional<qint64>(value) : std::nullopt;
}

EncodedValue encodeWhole(const Element& element, Format format, const QString& text, Digits digits)
{
    const std::optional<qint64> number = wholeNumber(text, digits);
    const WholeRange range = wholeRange(element, format);
    if (!number || *number < range.low || *number > range.high) {
        return refuseValue(element, text, wholeValues(element, format));
    }
    return accept(bytesOf(static_cast<quint32>(*number), valueBytes(element)));
}

EncodedValue encodeAs(const Element& element, Format format, const QString& text, Digits digits)
{
    if (!formatFits(element, format)) {
        return refuse(QString("%1 is not written as %2: %3")
                          .arg(shownAddress(element), formatName(format), fittingFormats(element)));
    }
    if (element.isBit()) {
        return encodeBit(element, text);
    }
    if (element.type == DataType::text) {
        return encodeText(element, text);
    }
    const bool real = element.type == DataType::real && format != Format::hex;
    if (real || format == Format::floating) {
        return encodeFloat(element, text);
    }
    return encodeWhole(element, format, text, digits);
}

} // namespace

EncodedValue encodeValue(const Element& element, Format format, const QString& text)
{
    if (format == Format::automatic) {
        return encodeShown(element, element.format, text);
    }
    const bool prefixable = format == Format::unsignedNumber;
    const Digits decimal = prefixable ? Digits::decimalOrPrefixed : Digits::decimal;
    return encodeAs(element, format, text, format == Format::hex ? Digits::hexadecimal : decimal);
}

EncodedValue encodeShown(const Element& element, Format format, const QString& text)
{
    // The format of a word says nothing of one of its bits.
    const Format fitting = formatFits(element, format) ? format : Format::automatic;
    // The bits of a float: 20 would more likely be meant as 20.0 than as 0x00000014.
    const bool bitsOfFloat =
        fitting == Format::hex && effectiveFormat(element, Format::automatic) == Format::floating;
    return encodeAs(element, fitting, text,
                    bitsOfFloat ? Digits::prefixed : Digits::decimalOrPrefixed);
}

NumberRange numberRange(const Element& element)
{
    if (element.isBit()) {
        return {0, 1};
    }
    if (element.type == DataType::text) {
        return {0, 0};
    }
    if (effectiveFormat(element, Format::automatic) == Format::floating) {
        const double largest = static_cast<double>(std::numeric_limits<float>::max());
        return {-largest, largest};
    }
    const WholeRange range = wholeRange(element, element.format);
    return {static_cast<double>(range.low), static_cast<double>(range.high)};
}

QByteArray encodeNumber(const Element& element, double number)
{
    if (effectiveFormat(element, Format::automatic) == Format::floating) {
        return bytesOf(floatBits(static_cast<float>(number)), 4);
    }
    const NumberRange range = numberRange(element);
    const double bounded = std::min(std::max(number, range.low), range.high);
    return bytesOf(static_cast<quint32>(std::llround(bounded)), valueBytes(element));
}

} // namespace tavmir::project
