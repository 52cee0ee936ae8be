// Between a user's text and a value's bytes as the driver's calls take and give them: least
// significant byte first; one byte for a bit; a text's first character in the low byte of its
// first word, unused words zero.
#ifndef TAVMIR_PROJECT_VALUE_FORMAT_H
#define TAVMIR_PROJECT_VALUE_FORMAT_H

#include "address_resolver.h"

#include <QtCore/QByteArray>

#include <optional>

namespace tavmir::project
{

// The format of a name as the project file and the command line spell it ("signed"), or none.
std::optional<Format> formatFromName(const QString& name);
QString formatName(Format format);
// All of them: "bit, signed, …, float or text".
QString formatNames();

// True when values of the element can be shown and written so; `automatic` always fits.
bool formatFits(const Element& element, Format format);
// `wanted` when it fits, else the format that the element is declared with, else what its type
// suggests; never `automatic`.
Format effectiveFormat(const Element& element, Format wanted);
// The formats that fit, for messages: "signed, unsigned or hex".
QString fittingFormats(const Element& element);

struct EncodedValue {
    bool ok = false;
    QByteArray bytes;
    QString problem; // not ok: "… is not a value of Main.W: unsigned, 0 to 65535"
};

// format  must fit. `hex` takes hexadecimal digits, with or without 0x. `automatic` takes what the
//         element is declared to be, and of words and double words that say nothing signed,
//         unsigned and 0x… texts.
EncodedValue encodeValue(const Element& element, Format format, const QString& text);

// The text as it is written for an element that is shown in this format: whole numbers are decimal
// or 0x…, and lie within the format's range. A float that is shown as hex is written as 0x… only.
EncodedValue encodeShown(const Element& element, Format format, const QString& text);

// bytes   as GetRegisterData gives them; missing ones count as zero.
QString decodeValue(const Element& element, Format format, const QByteArray& bytes);

// The same as a number, for a trend: of a bit 0 or 1, of hex the unsigned one. None of a text, and
// of a float that is no finite number.
std::optional<double> decodeNumber(const Element& element, Format format, const QByteArray& bytes);

// Smallest and largest number that the element holds in the format it is declared with; one that
// says nothing, as signed or unsigned whatever is wider (word: -32768..65535); text: 0, 0.
struct NumberRange {
    double low = 0;
    double high = 0;
};
NumberRange numberRange(const Element& element);

// A number as the element's bytes; rounded to the nearest integer for all but floats. The
// number must lie within numberRange.
QByteArray encodeNumber(const Element& element, double number);

} // namespace tavmir::project

#endif
