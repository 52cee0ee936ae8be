#include "address/label_table.h"

#include "address/member_index.h"

namespace
{

// Changes only in `PassVarName_2`.
tavmir::MemberIndex memberIndex;

} // namespace

void PassVarName_2(QList<Label_Type_Info>* labels) TAVMIR_KX_TCP_NOTHROW
{
    if (!labels) {
        return;
    }
    const QList<Label_Type_Info>& records = *labels;
    for (QList<Label_Type_Info>::const_iterator it = records.begin(); it != records.end(); ++it) {
        PLC_driver.labelTable.insert(it->name, *it);
        memberIndex.add(*it);
    }
    memberIndex.dropUnused();
}

namespace tavmir
{

const Label_Type_Info* findLabel(const QString& name)
{
    const QHash<QString, Label_Type_Info>& table = PLC_driver.labelTable;
    const QHash<QString, Label_Type_Info>::const_iterator label = table.constFind(name);
    return label == table.constEnd() ? nullptr : &*label;
}

bool membersAreComplete(const Label_Type_Info& type)
{
    return type.memberCount <= static_cast<quint32>(type.members.size());
}

const Label_Type_Info* findMember(const Label_Type_Info& type, const TextPiece& name)
{
    const int count = static_cast<int>(type.memberCount);
    const int place = memberIndex.find(type.members, name);
    if (place != MemberIndex::kNotIndexed) {
        const bool found = place >= 0 && place < count;
        return found ? &type.members.at(place) : nullptr;
    }
    const QList<Label_Type_Info>::const_iterator end = type.members.begin() + count;
    for (QList<Label_Type_Info>::const_iterator it = type.members.begin(); it != end; ++it) {
        if (it->name == name) {
            return &*it;
        }
    }
    return nullptr;
}

} // namespace tavmir
