#include "checked/records.h"

#include "checked/locks.h"
#include "checked/quiet_address.h"
#include "checked/report.h"
#include "checked/text.h"
#include "core/data_types.h"

namespace tavmir
{
namespace checked
{

namespace
{

std::string described(const RW_VAR& var)
{
    return text("address %s, element address %d, data type %d, station %d, count %d, hostKey %d, "
                "varKey %d, hostData2 %d",
                quoted(var.addressText).c_str(), var.elementAddress, var.dataType, var.station,
                var.count, var.hostKey, var.varKey, var.hostData2);
}

// 16-bit units to elements, as the driver counts.
qint64 elementsOf(const DataType& type, qint32 count)
{
    return type.elementClass == kDoubleWords ? (static_cast<qint64>(count) + 1) / 2 : count;
}

void checkBitValues(const QString& address, const ControlInformationM& info, int bytes,
                    const Call& call)
{
    const int bits = info.dataType == kWordType ? 16 : 32;
    if (bytes >= 1 && (info.bitIndex < 0 || bytes <= bits - info.bitIndex)) {
        return;
    }
    report(kSetDataSize, call,
           text("was given %d bytes for bits from %d of %d on.", bytes, info.bitIndex, bits),
           "address " + quoted(address));
}

// How many elements of the variable there are from the address on; 0 when the tree does not say.
qint64 elementsOfVariable(const ControlInformationM& info)
{
    if (info.dataType == kTextType) {
        return info.isArrayElement ? 0 : info.elementWidth;
    }
    return info.isArrayElement ? 0 : 1;
}

// A count below 1 makes one element all the same outside of arrays; of a text, the driver takes a
// negative one for a large one.
bool readsNothingOnce(qint32 count, const ControlInformationM& info)
{
    if (count >= 1) {
        return false;
    }
    if (info.dataType == kTextType) {
        return count == 0 || info.elementWidth < 1;
    }
    return info.isArrayElement != 0;
}

// Only a text outside of arrays makes its entry whatever the count is.
bool pollsNothing(qint32 count, const ControlInformationM& info)
{
    return count < 1 && (info.dataType != kTextType || info.isArrayElement);
}

} // namespace

void checkPolled(const RW_VAR& var, const Call& call)
{
    if (!findDataType(var.dataType)) {
        report(kReadVarType, call, "was given a data type that cannot be polled.", described(var));
    }
    if (var.hostData2 != 0) {
        report(kReadVarHostData2, call,
               "was given a polled variable whose replies carry no values.", described(var));
    }
}

void checkWrite(const RW_VAR& var, const Call& call)
{
    if (var.hostData2 == 0) {
        report(kWriteVarHostData2, call, "was given a write whose acknowledgement carries values.",
               described(var));
    }
    if (var.count != 1) {
        report(kWriteVarCount, call, text("was given a write of %d elements.", var.count),
               described(var));
    }
    const DataType* type = findDataType(var.dataType);
    if (!type) {
        report(kWriteVarType, call, "was given a data type that cannot be written.",
               described(var));
        return;
    }
    if (var.value.size() != type->valueBytes) {
        report(kWriteVarValueSize, call,
               text("was given %d value bytes instead of %d.", var.value.size(), type->valueBytes),
               described(var) + ", value " + hexBytes(var.value));
    }
}

void checkOnceRead(const RW_VAR& var, const ControlInformationM* info, const Call& call)
{
    if (var.hostData2 != 0) {
        report(kOnceReadHostData2, call, "was given a read whose replies carry no values.",
               described(var));
    }
    if (info && findDataType(info->dataType) && readsNothingOnce(var.count, *info)) {
        report(kCountBelowOne, call, text("was given a count of %d.", var.count), described(var));
    }
}

bool checkRebuild(const QList<HOSTVAR>& vars, const Call& call)
{
    for (int i = 0; i < vars.size(); ++i) {
        const HOSTVAR& var = vars.at(i);
        ControlInformationM info;
        if (tavmir_quiet_address_info(var.addressText, info) != kAddressResolved) {
            continue;
        }
        if (findDataType(info.dataType)) {
            if (pollsNothing(var.count, info)) {
                report(kCountBelowOne, call, text("was given a count of %d.", var.count),
                       text("entry %d, address ", i) + quoted(var.addressText));
            }
            continue;
        }
        report(kRebuildType, call,
               text("was given an address of data type %d and will leave listMutex locked.",
                    info.dataType),
               text("entry %d of %d, address ", i, vars.size()) + quoted(var.addressText));
        listsWereLeftLocked(quoted(var.addressText));
        return false;
    }
    return true;
}

void checkSetValues(const QString& address, const ControlInformationM& info, const QByteArray* data,
                    int count, const Call& call)
{
    const int bytes = data ? data->size() : 0;
    if (info.bitAccess == 1) {
        checkBitValues(address, info, bytes, call);
        return;
    }
    const DataType* type = findDataType(info.dataType);
    if (!type) {
        return;
    }
    if (count < 1) {
        report(kCountBelowOne, call, text("was given a count of %d.", count),
               "address " + quoted(address));
        return;
    }
    const qint64 elements = elementsOf(*type, count);
    if (bytes != elements * type->valueBytes) {
        report(kSetDataSize, call,
               text("was given %d bytes for %ld elements of %d.", bytes,
                    static_cast<long>(elements), type->valueBytes),
               "address " + quoted(address) + (data ? ", data " + hexBytes(*data) : ""));
    }
    const qint64 most = elementsOfVariable(info);
    if (most > 0 && elements > most) {
        report(kCountPastVariable, call,
               text("was given %ld elements for a variable that has %ld from there on.",
                    static_cast<long>(elements), static_cast<long>(most)),
               "address " + quoted(address));
    }
}

} // namespace checked
} // namespace tavmir
