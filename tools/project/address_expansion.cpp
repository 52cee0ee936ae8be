// Lists the elements of arrays and structures.
#include "address_expansion.h"

#include "address_walk.h"

#include <QtCore/QStringList>

namespace tavmir::project
{

namespace
{

class Lister
{
public:
    Lister(const Project& project, std::vector<Element>& elements)
        : project_(project), elements_(elements)
    {
    }

    // All of the variable; `base` is its address without an index, `prefix` its text.
    void listAll(const Variable& variable, quint32 base, const QString& prefix)
    {
        if (!variable.array) {
            listElement(variable, base, prefix);
            return;
        }
        std::vector<int> indices;
        for (const IndexRange& range : variable.array->bounds) {
            indices.push_back(range.low);
        }
        do {
            listIndexed(variable, base, prefix, indices);
        } while (advance(variable.array->bounds, indices));
    }

    void listIndexed(const Variable& variable, quint32 base, const QString& prefix,
                     const std::vector<int>& indices)
    {
        QStringList texts;
        for (const int index : indices) {
            texts << indexText(index, variable.array->radix);
        }
        const quint32 index = linearIndex(*variable.array, indices);
        listElement(variable, base + arrayStride(project_, variable) * index,
                    QString("%1[%2]").arg(prefix, texts.join(',')));
    }

private:
    void listElement(const Variable& variable, quint32 address, const QString& text)
    {
        if (variable.type != DataType::structure) {
            elements_.push_back(makeElement(variable, address, text));
            return;
        }
        const StructureType& type = project_.types[static_cast<size_t>(variable.structure)];
        for (const Variable& member : type.members) {
            listAll(member, address + member.offset, text + "." + member.name);
        }
    }

    static bool advance(const std::vector<IndexRange>& bounds, std::vector<int>& indices)
    {
        for (size_t d = bounds.size(); d-- > 0;) {
            if (indices[d] < bounds[d].high) {
                ++indices[d];
                return true;
            }
            indices[d] = bounds[d].low;
        }
        return false;
    }

    const Project& project_;
    std::vector<Element>& elements_;
};

} // namespace

Expansion expandAddress(const Project& project, const QString& address, int count)
{
    Expansion expansion;
    const AddressWalk walk = walkAddress(project, address);
    const bool indexed = walk.problem.isEmpty() && walk.variable->array && !walk.bitNumber;
    if (count < 1 || (count > 1 && !indexed)) {
        expansion.problem = walk.problem.isEmpty() || walk.openArray
                                ? "a count belongs to an indexed element of an array"
                                : walk.problem;
        return expansion;
    }
    Lister lister(project, expansion.elements);
    if (walk.openArray) {
        lister.listAll(*walk.variable, walk.base, walk.prefix);
        expansion.ok = true;
        return expansion;
    }
    if (!walk.problem.isEmpty()) {
        expansion.problem = walk.problem;
        return expansion;
    }
    expansion.ok = true;
    const Resolution single = resolveAddress(project, address);
    if (single.ok && count == 1) {
        expansion.elements.push_back(single.element);
        return expansion;
    }
    if (indexed) {
        const IndexRange& last = walk.variable->array->bounds.back();
        std::vector<int> indices = walk.indices;
        if (count - 1 > last.high - indices.back()) {
            expansion.ok = false;
            expansion.problem =
                QString("%1 elements from %2 on pass the high bound %3")
                    .arg(count)
                    .arg(address, indexText(last.high, walk.variable->array->radix));
            return expansion;
        }
        for (int i = 0; i < count; ++i, ++indices.back()) {
            lister.listIndexed(*walk.variable, walk.base, walk.prefix, indices);
        }
        return expansion;
    }
    lister.listAll(*walk.variable, walk.base, walk.prefix);
    return expansion;
}

std::vector<Element> leafElements(const Project& project)
{
    std::vector<Element> elements;
    Lister lister(project, elements);
    for (const Label& label : project.labels) {
        for (const Variable& variable : label.variables) {
            lister.listAll(variable, variable.offset, label.name + "." + variable.name);
        }
    }
    return elements;
}

} // namespace tavmir::project
