#include "support/label_tree.h"

namespace tavmir
{
namespace test
{

Label_Type_Info variable(const char* name, int typeFlags, int offset)
{
    Label_Type_Info info;
    info.name = QString::fromUtf8(name);
    info.typeFlags = static_cast<quint16>(typeFlags);
    info.offset = offset;
    return info;
}

Label_Type_Info arrayVariable(const char* name, int typeFlags, int offset, const QList<int>& bounds,
                              int radix)
{
    Label_Type_Info info = variable(name, typeFlags | kArray, offset);
    info.dimensionCount = bounds.size() / 2;
    info.arrayBounds << radix;
    info.arrayBounds += bounds;
    return info;
}

Label_Type_Info textVariable(const char* name, int offset, int width)
{
    Label_Type_Info info = variable(name, 10, offset);
    info.elementSizes << width;
    return info;
}

Label_Type_Info structureType(const QList<Label_Type_Info>& members)
{
    Label_Type_Info info = variable("", kStructureType, 0);
    info.members = members;
    info.memberCount = static_cast<quint32>(members.size());
    return info;
}

Label_Type_Info structureVariable(const char* name, int offset, const Label_Type_Info& type)
{
    Label_Type_Info info = variable(name, 12, offset);
    info.elementType << type;
    return info;
}

Label_Type_Info structureArray(const char* name, int offset, const Label_Type_Info& type,
                               int strideBits, const QList<int>& bounds)
{
    Label_Type_Info info = arrayVariable(name, 12, offset, bounds);
    info.elementType << type;
    info.elementSizes << strideBits;
    return info;
}

Label_Type_Info label(const char* name, const QList<Label_Type_Info>& variables)
{
    Label_Type_Info info = variable(name, 0, 0);
    info.elementType << structureType(variables);
    return info;
}

void passLabels(const QList<Label_Type_Info>& labels)
{
    QList<Label_Type_Info> list = labels;
    PassVarName_2(&list);
}

Label_Type_Info mainLabel()
{
    const Label_Type_Info axisType =
        structureType(QList<Label_Type_Info>() << variable("Pos", 6, 0) << variable("Vel", 7, 32));
    return label("Main", QList<Label_Type_Info>()
                             << variable("Run", 1, 100) << variable("W", 4 | kBitSuffix, 3000)
                             << arrayVariable("M", 4, 2000, QList<int>() << 1 << 3 << 0 << 4)
                             << structureArray("Axis", 1000, axisType, 96, QList<int>() << 0 << 3));
}

} // namespace test
} // namespace tavmir
