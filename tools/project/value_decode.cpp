// From bytes to the text that a user sees.
#include "format_table.h"
#include "value_format.h"

namespace tavmir::project
{

QString decodeValue(const Element& element, Format format, const QByteArray& bytes)
{
    return formatRow(effectiveFormat(element, format))->show(element, bytes);
}

} // namespace tavmir::project
