// Formats: their names, and which fit which type.
#include "value_format.h"

#include "format_table.h"

#include <QtCore/QStringList>

namespace tavmir::project
{

std::optional<Format> formatFromName(const QString& name)
{
    for (const FormatRow& row : formatTable()) {
        if (name == row.name) {
            return row.format;
        }
    }
    return std::nullopt;
}

QString formatName(Format format)
{
    const FormatRow* row = formatRow(format);
    return row ? row->name : "automatic";
}

QString formatNames()
{
    QStringList names;
    for (const FormatRow& row : formatTable()) {
        names << row.name;
    }
    const QString last = names.takeLast();
    return names.join(", ") + " or " + last;
}

bool formatFits(const Element& element, Format format)
{
    const FormatRow* row = formatRow(format);
    return !row || row->fits(element);
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
    for (const FormatRow& row : formatTable()) {
        if (row.fits(element)) {
            names << row.name;
        }
    }
    const QString last = names.takeLast();
    return names.isEmpty() ? last : names.join(", ") + " or " + last;
}

} // namespace tavmir::project
