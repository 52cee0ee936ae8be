// Between bytes and what is kept.
#include "recorded_value.h"

#include "project/raw_address.h"
#include "project/type_words.h"
#include "project/value_format.h"

#include <cmath>
#include <cstring>

namespace tavmir::recorder
{

namespace
{

using project::DataType;
using project::Element;
using project::Format;

// An element of which values are such; it lies nowhere.
Element elementOf(const RecordedVariable& variable)
{
    Element element;
    element.type = project::typeFromWord(variable.type).value_or(element.type);
    element.words = variable.words;
    return element;
}

quint32 numberFrom(const QByteArray& bytes)
{
    quint32 number = 0;
    for (int i = 0; i < bytes.size() && i < 4; ++i) {
        number |= static_cast<quint32>(static_cast<unsigned char>(bytes.at(i))) << (8 * i);
    }
    return number;
}

QByteArray bytesOf(quint32 number)
{
    QByteArray bytes;
    for (int i = 0; i < 4; ++i) {
        bytes.append(static_cast<char>(number >> (8 * i) & 0xFF));
    }
    return bytes;
}

double floatOf(quint32 bits)
{
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return static_cast<double>(value);
}

QByteArray bytesOfFloat(double number)
{
    const auto value = static_cast<float>(number);
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bytesOf(bits);
}

qint64 signedOf(quint32 number, int width)
{
    return width == 2 ? static_cast<qint64>(static_cast<qint16>(number & 0xFFFF))
                      : static_cast<qint64>(static_cast<qint32>(number));
}

} // namespace

RecordedValue RecordedValue::of(qint64 number)
{
    RecordedValue value;
    value.kind = Kind::integer;
    value.integer = number;
    return value;
}

RecordedValue RecordedValue::of(double number)
{
    if (std::isnan(number)) {
        return of(QString("nan"));
    }
    RecordedValue value;
    value.kind = Kind::real;
    value.real = number;
    return value;
}

RecordedValue RecordedValue::of(const QString& text)
{
    RecordedValue value;
    value.kind = Kind::text;
    value.text = text.isNull() ? QString("") : text;
    return value;
}

bool RecordedValue::operator==(const RecordedValue& other) const
{
    if (kind != other.kind) {
        return false;
    }
    switch (kind) {
    case Kind::none:
        return true;
    case Kind::integer:
        return integer == other.integer;
    case Kind::real:
        return std::memcmp(&real, &other.real, sizeof real) == 0;
    case Kind::text:
        break;
    }
    return text == other.text;
}

bool RecordedVariable::operator==(const RecordedVariable& other) const
{
    return address == other.address && name == other.name && type == other.type &&
           format == other.format && words == other.words && station == other.station;
}

RecordedVariable recordedVariable(const host::PolledElement& variable)
{
    const Element& element = variable.element;
    RecordedVariable recorded;
    recorded.address = project::shownAddress(element);
    recorded.name = variable.name;
    recorded.type = project::typeWord(element);
    recorded.format = project::formatName(project::effectiveFormat(element, variable.format));
    recorded.words = element.words;
    recorded.station = variable.station;
    return recorded;
}

RecordedValue recordedValue(const host::PolledElement& variable, const QByteArray& bytes)
{
    if (bytes.isEmpty()) {
        return RecordedValue();
    }
    const Element& element = variable.element;
    const quint32 number = numberFrom(bytes);
    switch (project::effectiveFormat(element, variable.format)) {
    case Format::automatic:
    case Format::text:
        return RecordedValue::of(project::decodeValue(element, variable.format, bytes));
    case Format::floating:
        return RecordedValue::of(floatOf(number));
    case Format::signedNumber:
        return RecordedValue::of(signedOf(number, project::memoryBits(element) / 8));
    case Format::bit:
    case Format::unsignedNumber:
    case Format::hex:
        break;
    }
    return RecordedValue::of(static_cast<qint64>(number));
}

QString textOf(const RecordedVariable& variable, const RecordedValue& value)
{
    const auto format = project::formatFromName(variable.format).value_or(Format::automatic);
    switch (value.kind) {
    case RecordedValue::Kind::none:
        return QString();
    case RecordedValue::Kind::text:
        return value.text;
    case RecordedValue::Kind::integer:
        return project::decodeValue(elementOf(variable), format,
                                    bytesOf(static_cast<quint32>(value.integer)));
    case RecordedValue::Kind::real:
        break;
    }
    return project::decodeValue(elementOf(variable), format, bytesOfFloat(value.real));
}

std::optional<double> numberOf(const RecordedValue& value)
{
    if (value.kind == RecordedValue::Kind::integer) {
        return static_cast<double>(value.integer);
    }
    return value.kind == RecordedValue::Kind::real ? std::optional<double>(value.real)
                                                   : std::nullopt;
}

} // namespace tavmir::recorder
