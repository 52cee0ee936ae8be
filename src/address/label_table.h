// Looking labels and members up by name. Private.
#ifndef TAVMIR_ADDRESS_LABEL_TABLE_H
#define TAVMIR_ADDRESS_LABEL_TABLE_H

#include "address/address_parts.h"
#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{

// Bits of `typeFlags`.
const quint16 kTypeCodeMask = 0x00FF;
const quint16 kArrayFlag = 0x0100;
const quint16 kStructureFlag = 0x0200;
const quint16 kBitSuffixFlag = 0x0400;

// The label's record in the table, or null. Any thread, no lock; not beside `PassVarName_2`.
const Label_Type_Info* findLabel(const QString& name);

// False when the record counts more members than it has: it cannot be searched.
bool membersAreComplete(const Label_Type_Info& type);

// The first of the counted members with that name, or null. The members are complete. Costs the
// same however many there are, if the record came by `PassVarName_2`; a record that was put into
// the table in another way is searched from its first member on. Any thread, no lock; not beside
// `PassVarName_2`.
const Label_Type_Info* findMember(const Label_Type_Info& type, const TextPiece& name);

} // namespace tavmir

#endif
