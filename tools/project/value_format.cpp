// Formats: their names, and which fit which type.
#include "value_format.h"

#include <QtCore/QStringList>

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

} // namespace

std::optional<Format> formatFromName(const QString& name)
{
    for (const NamedFormat& named : kFormats) {
        if (name == named.name) {
            return named.format;
        }
    }
    return std::nullopt;
}

QString formatName(Format format)
{
    for (const NamedFormat& named : kFormats) {
        if (format == named.format) {
            return named.name;
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
    if (element.format != Format::automatic && formatFits(element, element.format)) {
        return element.format;
    }
    if (element.isBit()) {
        return Format::bit;
    }
    if (element.type == DataType::text) {
        return Format::text;
    }
    return element.type == DataType::real ? Format::floating : Format::unsignedNumber;
}

QString fittingFormats(const Element& element)
{
    QStringList names;
    for (const NamedFormat& named : kFormats) {
        if (formatFits(element, named.format)) {
            names << named.name;
        }
    }
    const QString last = names.takeLast();
    return names.isEmpty() ? last : names.join(", ") + " or " + last;
}

} // namespace tavmir::project
