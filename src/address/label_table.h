// Looking labels and members up by name. Private.
#ifndef TAVMIR_ADDRESS_LABEL_TABLE_H
#define TAVMIR_ADDRESS_LABEL_TABLE_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir {

// Bits of `typeFlags`.
const quint16 kTypeCodeMask = 0x00FF;
const quint16 kArrayFlag = 0x0100;
const quint16 kStructureFlag = 0x0200;
const quint16 kBitSuffixFlag = 0x0400;

// The label's record in the table, or null. Any thread, no lock; not beside `PassVarName_2`.
const Label_Type_Info* findLabel(const QString& name);

// False when the record counts more members than it has: it cannot be searched.
bool membersAreComplete(const Label_Type_Info& type);

// The first of the counted members with that name, or null. The members are complete.
const Label_Type_Info* findMember(const Label_Type_Info& type, const QString& name);

} // namespace tavmir

#endif
