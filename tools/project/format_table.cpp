// The rows, and how their formats show values.
#include "format_table.h"

#include "value_bytes.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace tavmir::project
{

namespace
{

bool isWhole(const Element& element)
{
    return !element.isBit() && (element.type == DataType::word || element.type == DataType::dword);
}

bool hasFloatBits(const Element& element)
{
    return !element.isBit() && (element.type == DataType::real || element.type == DataType::dword);
}

int widthOf(const Element& element)
{
    return std::min(valueBytes(element), 4);
}

// As QString::number() has it, in half the time.
QString decimal(qint64 number)
{
    char text[24];
    const char* const end = std::to_chars(text, text + sizeof text, number).ptr;
    return QString::fromLatin1(text, static_cast<int>(end - text));
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

// Fewer digits do not bring the float back.
int leastDigits(float value)
{
    char text[32];
    const char* const end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
    const char* const mantissa = std::find(static_cast<const char*>(text), end, 'e');
    return static_cast<int>(std::count_if(static_cast<const char*>(text), mantissa,
                                          [](char one) { return one >= '0' && one <= '9'; }));
}

// Up to nine digits bring every float back exactly; fewer are shown when they do too.
QString decodeFloat(float value)
{
    for (int digits = std::max(6, leastDigits(value));
         digits < std::numeric_limits<float>::max_digits10; ++digits) {
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
    return width == 2 ? decimal(static_cast<qint16>(number & 0xFFFF))
                      : decimal(static_cast<qint32>(number));
}

std::vector<FormatRow> rows()
{
    return {
        {Format::bit, "bit", [](const Element& element) { return element.isBit(); },
         [](const Element&, const QByteArray& bytes) {
             return QString(numberFrom(bytes, 1) == 0 ? "0" : "1");
         }},
        {Format::signedNumber, "signed", isWhole,
         [](const Element& element, const QByteArray& bytes) {
             return decodeSigned(numberFrom(bytes, widthOf(element)), widthOf(element));
         }},
        {Format::unsignedNumber, "unsigned", isWhole,
         [](const Element& element, const QByteArray& bytes) {
             return decimal(numberFrom(bytes, widthOf(element)));
         }},
        {Format::hex, "hex",
         [](const Element& element) { return isWhole(element) || hasFloatBits(element); },
         [](const Element& element, const QByteArray& bytes) {
             return decodeHex(numberFrom(bytes, widthOf(element)), widthOf(element));
         }},
        {Format::floating, "float", hasFloatBits,
         [](const Element&, const QByteArray& bytes) {
             return decodeFloat(floatOf(numberFrom(bytes, 4)));
         }},
        {Format::text, "text",
         [](const Element& element) { return !element.isBit() && element.type == DataType::text; },
         [](const Element& element, const QByteArray& bytes) {
             return decodeText(bytes.left(2 * element.words));
         }},
    };
}

} // namespace

const std::vector<FormatRow>& formatTable()
{
    static const std::vector<FormatRow> table = rows();
    return table;
}

const FormatRow* formatRow(Format format)
{
    for (const FormatRow& row : formatTable()) {
        if (row.format == format) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace tavmir::project
