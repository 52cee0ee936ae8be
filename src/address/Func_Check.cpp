#include "address/Func_Check.h"

#include "address/label_table.h"
#include "core/data_types.h"
#include "core/diagnostic_log.h"
#include "core/wrapping.h"

using tavmir::wrapAdd;
using tavmir::wrapMultiply;
using tavmir::wrapSubtract;

namespace {

const char kFile[] = "Func_Check";
const char kInfoFunction[] = "get_label_address_info";
const char kEntryFunction[] = "get_label_address_1";

const qint32 kTextArrayStride = 256; // bits from one text of an array to the next

// Takes a bracket suffix off a part: "Axis[1,2]" becomes "Axis" and "1,2". The closing bracket
// is taken to be the last character and is not searched for: "x[1]yz" becomes "x" and "1]y".
bool get_label_address_array_split(QString& part, QString& indexText)
{
    const QChar open = QLatin1Char('[');
    if (!part.contains(open) || !part.contains(QLatin1Char(']')))
        return false;
    const int at = part.lastIndexOf(open);
    indexText = part.mid(at + 1, qMax(0, part.size() - at - 2));
    part.truncate(at);
    return true;
}

int logged(tavmir::DiagnosticLineNumber line, int result)
{
    tavmir::diagnosticLine(kFile, kEntryFunction, line, tavmir::kError) << "";
    return result;
}

// Qt converts in the radixes 2 to 36, and in radix 0 as C writes numbers.
bool convertIndex(const QString& text, int radix, qint32& index)
{
    if (radix != 0 && (radix < 2 || radix > 36))
        return false;
    bool converted = false;
    index = text.toInt(&converted, radix);
    return converted;
}

qint32 elementWidthOf(const Label_Type_Info& entry, int typeCode)
{
    switch (typeCode) {
    case tavmir::kBitType:
        return 1;
    case tavmir::kWordType:
        return 16;
    case tavmir::kTextType:
        return entry.elementSizes.isEmpty() ? 0 : entry.elementSizes.first();
    default:
        return 32;
    }
}

// A readable element: the path ends here.
void resolveElement(const Label_Type_Info& entry, int typeCode, quint32 index, quint32 end,
                    ControlInformationM& info)
{
    info.dataType = static_cast<quint8>(typeCode);
    info.elementWidth = elementWidthOf(entry, typeCode);
    if (!(entry.typeFlags & tavmir::kArrayFlag))
        return;
    const qint32 stride = typeCode == tavmir::kTextType ? kTextArrayStride : info.elementWidth;
    const qint32 linear = static_cast<qint32>(index);
    info.elementAddress = wrapAdd(info.elementAddress, wrapMultiply(stride, linear));
    info.arrayIndex = linear;
    info.isArrayElement = 1;
    info.arrayBase = 0;
    info.elementLimit = static_cast<qint32>(end - index);
}

// A structure, or an element of an array of them: the path goes on among its members.
int resolveStructure(const Label_Type_Info& entry, const QStringList& parts, int partIndex,
                     quint32 index, int pending, ControlInformationM& info)
{
    if (index != 0) {
        if (entry.elementSizes.isEmpty())
            return logged(tavmir::kLineStructureSizeMissing, kStructureSizeMissing);
        const qint32 offset =
            wrapMultiply(entry.elementSizes.first(), static_cast<qint32>(index));
        info.elementAddress = wrapAdd(info.elementAddress, offset);
    }
    if (entry.elementType.isEmpty())
        return kAddressRefused;
    // The result is dropped on purpose: hosts rely on an address that ends at a structure, or
    // names a member it lacks, resolving to data type 0.
    get_label_address_1(entry.elementType.first(), parts, partIndex + 1, info);
    return pending;
}

} // namespace

int get_label_address_array_memory_index(QString indexText, int dimensionCount,
                                         const QList<int>& arrayBounds, unsigned int& index,
                                         unsigned int* end)
{
    const QStringList items = indexText.split(QLatin1Char(','));
    if (items.size() != dimensionCount || dimensionCount <= 0)
        return kAddressRefused;
    if (arrayBounds.size() < 1 + 2 * static_cast<qint64>(dimensionCount))
        return kAddressRefused;

    // Row by row: what is summed so far counts once for each element of the next dimension. A
    // size is high minus low, and an index above the high bound is accepted: hosts address
    // arrays by exactly this rule.
    qint32 linear = 0;
    qint32 size = 0;
    for (int d = 0; d < dimensionCount; ++d) {
        const int low = arrayBounds.at(1 + 2 * d);
        qint32 offset = 0;
        if (!convertIndex(items.at(d), arrayBounds.first(), offset))
            return kIndexRefused;
        offset = wrapSubtract(offset, low);
        if (offset < 0)
            return kIndexRefused;
        size = wrapSubtract(arrayBounds.at(2 + 2 * d), low);
        linear = wrapAdd(wrapMultiply(linear, size), offset);
    }
    index = static_cast<unsigned int>(linear);
    *end = static_cast<unsigned int>(wrapAdd(linear, size));
    return kAddressResolved;
}

void get_label_address_2(const Label_Type_Info& entry, const QStringList& parts, int partIndex,
                         ControlInformationM& info)
{
    if (!(entry.typeFlags & tavmir::kBitSuffixFlag) || partIndex < 0 ||
        partIndex != parts.size() - 2)
        return;
    const QString& suffix = parts.last();
    const int open = suffix.lastIndexOf(QLatin1Char('['));
    const int close = suffix.lastIndexOf(QLatin1Char(']'));
    if (open < 1 || open >= close)
        return;
    info.bitAccess = 1;
    info.bitIndex = suffix.mid(open + 1, close - open - 1).toInt();
}

int get_label_address_1(const Label_Type_Info& entry, const QStringList& parts, int partIndex,
                        ControlInformationM& info)
{
    if (partIndex < 0 || partIndex >= parts.size())
        return kAddressRefused;
    QString name = parts.at(partIndex);
    QString indexText;
    const bool indexed = get_label_address_array_split(name, indexText);

    unsigned int index = 0;
    unsigned int end = 0;
    int pending = indexed ? kAddressRefused : kAddressResolved;
    if (entry.typeFlags & tavmir::kArrayFlag) {
        pending = get_label_address_array_memory_index(indexText, entry.dimensionCount,
                                                       entry.arrayBounds, index, &end);
        if (pending != kAddressResolved)
            return logged(tavmir::kLineIndexRefused, pending);
    }

    if (entry.typeFlags & tavmir::kStructureFlag) {
        if (!tavmir::membersAreComplete(entry))
            return kAddressRefused;
        const Label_Type_Info* member = tavmir::findMember(entry, name);
        if (!member)
            return logged(tavmir::kLineMemberNotFound, kMemberNotFound);
        info.elementAddress = wrapAdd(info.elementAddress, member->offset);
        return get_label_address_1(*member, parts, partIndex, info);
    }

    const int typeCode = entry.typeFlags & tavmir::kTypeCodeMask;
    if (typeCode == tavmir::kStructureType)
        return resolveStructure(entry, parts, partIndex, index, pending, info);
    if (!tavmir::findDataType(typeCode))
        return pending;
    resolveElement(entry, typeCode, index, end, info);
    if (typeCode == tavmir::kWordType || typeCode == tavmir::kDoubleWordType)
        get_label_address_2(entry, parts, partIndex, info);
    return pending;
}

int get_label_address_info(const QString& address, ControlInformationM& info)
{
    if (address.isEmpty()) {
        tavmir::diagnosticLine(kFile, kInfoFunction, tavmir::kLineAddressEmpty, tavmir::kError)
            << address;
        return kAddressEmpty;
    }
    const QStringList parts = address.split(QLatin1Char('.'));
    if (parts.size() < 2) {
        tavmir::diagnosticLine(kFile, kInfoFunction, tavmir::kLineAddressTooShort, tavmir::kError)
            << parts;
        return kAddressTooShort;
    }

    QString droppedIndex;
    QString labelName = parts.at(0);
    get_label_address_array_split(labelName, droppedIndex);
    const Label_Type_Info* label = tavmir::findLabel(labelName);
    if (!label) {
        tavmir::diagnosticLine(kFile, kInfoFunction, tavmir::kLineLabelNotFound, tavmir::kError)
            << labelName;
        return kLabelNotFound;
    }
    if (label->elementType.isEmpty()) {
        tavmir::diagnosticLine(kFile, kInfoFunction, tavmir::kLineLabelWithoutVariables,
                               tavmir::kError)
            << labelName;
        return kLabelWithoutVariables;
    }

    QString variableName = parts.at(1);
    get_label_address_array_split(variableName, droppedIndex);
    const Label_Type_Info& variables = label->elementType.first();
    if (!tavmir::membersAreComplete(variables))
        return kAddressRefused;
    const Label_Type_Info* variable = tavmir::findMember(variables, variableName);
    if (!variable)
        return kAddressRefused;
    info.elementAddress = variable->offset;
    return get_label_address_1(*variable, parts, 1, info);
}

int get_label_address_query(const QStringList& parts, int partIndex)
{
    Q_UNUSED(parts);
    Q_UNUSED(partIndex);
    return 0;
}
