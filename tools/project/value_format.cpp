// Values as text and as bytes.
#include "value_format.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace tavmir::project
{

namespace
{

struct NamedFormat {
    const char* name;
    Format format;
};

constexpr NamedFormat kFormats[] = {
    {"bit", Format::bit}, {"signed", Format::signedNumber}, {"unsigned", Format::unsignedNumber},
    {"hex", Format::hex}, {"float", Format::floating},      {"text", Format::text},
};

// The first number that rounds to no finite float: half a step above the largest.
constexpr double kBeyondFloat = 0x1.ffffffp127;

int valueBytes(const Element& element)
{
    if (element.isBit()) {
        return 1;
    }
    return memoryBits(element) / 8;
}

// Little-endian number of up to four bytes; missing bytes count as zero.
quint32 numberFrom(const QByteArray& bytes, int width)
{
    quint32 number = 0;
    for (int i = 0; i < width && i < bytes.size(); ++i) {
        number |= static_cast<quint32>(static_cast<unsigned char>(bytes.at(i))) << (8 * i);
    }
    return number;
}

QByteArray bytesOf(quint32 number, int width)
{
    QByteArray bytes(width, '\0');
    for (int i = 0; i < width; ++i) {
        bytes[i] = static_cast<char>((number >> (8 * i)) & 0xFF);
    }
    return bytes;
}

quint32 floatBits(float value)
{
    quint32 bits = 0;
    static_assert(sizeof bits == sizeof value, "a float has 32 bits");
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float floatOf(quint32 bits)
{
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

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

std::optional<Format> formatFromName(const QString& name)
{
    for (const NamedFormat& named : kFormats) {
        if (name == QLatin1String(named.name)) {
            return named.format;
        }
    }
    return std::nullopt;
}

QString formatName(Format format)
{
    for (const NamedFormat& named : kFormats) {
        if (format == named.format) {
            return QString::fromLatin1(named.name);
        }
    }
    return "automatic";
}

bool formatFits(const Element& element, Format format)
{
    if (format == Format::automatic) {
        return true;
    }
    if (element.isBit()) {
        return format == Format::bit;
    }
    const bool integer =
        format == Format::signedNumber || format == Format::unsignedNumber || format == Format::hex;
    switch (element.type) {
    case DataType::word:
        return integer;
    case DataType::dword:
        return integer || format == Format::floating;
    case DataType::real:
        return format == Format::floating || format == Format::hex;
    case DataType::text:
        return format == Format::text;
    case DataType::bit:
    case DataType::structure:
        break;
    }
    return false;
}

Format effectiveFormat(const Element& element, Format wanted)
{
    if (wanted != Format::automatic && formatFits(element, wanted)) {
        return wanted;
    }
    if (element.isBit()) {
        return Format::bit;
    }
    if (element.type == DataType::text) {
        return Format::text;
    }
    return element.type == DataType::real ? Format::floating : Format::unsignedNumber;
}

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
