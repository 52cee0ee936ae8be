// Where the elements of a variable lie.
#include "address_walk.h"

#include <cstdlib>

namespace tavmir::project
{

quint32 arrayStride(const Project& project, const Variable& variable)
{
    switch (variable.type) {
    case DataType::bit:
        return 1;
    case DataType::word:
        return 16;
    case DataType::dword:
    case DataType::real:
        return 32;
    case DataType::text:
        return 256;
    case DataType::structure:
        return project.types[static_cast<size_t>(variable.structure)].size;
    }
    return 0;
}

quint32 linearIndex(const ArrayShape& shape, const std::vector<int>& indices)
{
    quint32 linear = 0;
    quint32 product = 1;
    for (size_t d = shape.bounds.size(); d-- > 0;) {
        const IndexRange& range = shape.bounds[d];
        linear += static_cast<quint32>(indices[d] - range.low) * product;
        product *= static_cast<quint32>(range.high - range.low);
    }
    return linear;
}

QString indexText(int index, int radix)
{
    const QString digits = QString::number(std::abs(static_cast<qint64>(index)), radix);
    return index < 0 ? "-" + digits : digits;
}

Element makeElement(const Variable& variable, quint32 address, const QString& text)
{
    Element element;
    element.addressText = text;
    element.type = variable.type;
    element.address = address;
    element.format = variable.format;
    element.words = variable.type == DataType::text ? variable.words : 0;
    if (variable.array) {
        const IndexRange& last = variable.array->bounds.back();
        element.isArrayElement = true;
        element.elementLimit = last.high - last.low;
    }
    return element;
}

} // namespace tavmir::project
