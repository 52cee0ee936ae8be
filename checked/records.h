// The records and values that a host hands in. Private.
#ifndef TAVMIR_CHECKED_RECORDS_H
#define TAVMIR_CHECKED_RECORDS_H

#include "tavmir_kx_tcp/host_interface.h"

struct ControlInformationM;

namespace tavmir
{
namespace checked
{

class Call;

// Each tells what it finds; `var` is not null.
void checkPolled(const RW_VAR& var, const Call& call);
void checkWrite(const RW_VAR& var, const Call& call);
// `info` is null for an address that is refused.
void checkOnceRead(const RW_VAR& var, const ControlInformationM* info, const Call& call);

// Tells an address whose data type cannot be polled; true when there is none.
bool checkRebuild(const QList<HOSTVAR>& vars, const Call& call);

// What SetRegisterData is given for an address that resolves to `info`.
void checkSetValues(const QString& address, const ControlInformationM& info, const QByteArray* data,
                    int count, const Call& call);

} // namespace checked
} // namespace tavmir

#endif
