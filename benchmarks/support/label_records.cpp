#include "support/label_records.h"

namespace tavmir
{
namespace bench
{

namespace
{

// Bits from one variable to the next: twice the widest type, so that no two are adjacent.
const int kBitsApart = 64;

} // namespace

Label_Type_Info variable(const QString& name, int typeFlags, int offset)
{
    Label_Type_Info info;
    info.name = name;
    info.typeFlags = static_cast<quint16>(typeFlags);
    info.offset = offset;
    return info;
}

Label_Type_Info arrayVariable(const QString& name, int typeFlags, int offset, int high)
{
    Label_Type_Info info = variable(name, typeFlags | kArray, offset);
    info.dimensionCount = 1;
    info.arrayBounds << 10 << 0 << high;
    return info;
}

Label_Type_Info structureType(const QList<Label_Type_Info>& members)
{
    Label_Type_Info info = variable(QString(), kStructureType, 0);
    info.members = members;
    info.memberCount = static_cast<quint32>(members.size());
    return info;
}

Label_Type_Info label(const QString& name, const QList<Label_Type_Info>& variables)
{
    Label_Type_Info info = variable(name, 0, 0);
    info.elementType << structureType(variables);
    return info;
}

QString variableName(int i)
{
    return QString("Variable%1").arg(i);
}

QList<Label_Type_Info> variables(int count, int typeFlags)
{
    QList<Label_Type_Info> list;
    for (int i = 0; i < count; ++i) {
        list << variable(variableName(i), typeFlags, i * kBitsApart);
    }
    return list;
}

} // namespace bench
} // namespace tavmir
