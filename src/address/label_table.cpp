#include "address/label_table.h"

void PassVarName_2(QList<Label_Type_Info>* labels)
{
    if (!labels)
        return;
    const QList<Label_Type_Info>& records = *labels;
    for (QList<Label_Type_Info>::const_iterator it = records.begin(); it != records.end(); ++it)
        PLC_driver.labelTable.insert(it->name, *it);
}

namespace tavmir {

const Label_Type_Info* findLabel(const QString& name)
{
    const QHash<QString, Label_Type_Info>& table = PLC_driver.labelTable;
    const QHash<QString, Label_Type_Info>::const_iterator label = table.constFind(name);
    return label == table.constEnd() ? 0 : &*label;
}

bool membersAreComplete(const Label_Type_Info& type)
{
    return type.memberCount <= static_cast<quint32>(type.members.size());
}

const Label_Type_Info* findMember(const Label_Type_Info& type, const QString& name)
{
    const QList<Label_Type_Info>::const_iterator end =
        type.members.begin() + static_cast<int>(type.memberCount);
    for (QList<Label_Type_Info>::const_iterator it = type.members.begin(); it != end; ++it) {
        if (it->name == name)
            return &*it;
    }
    return 0;
}

} // namespace tavmir
