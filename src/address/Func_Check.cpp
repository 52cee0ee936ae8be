#include "address/Func_Check.h"

#include "address/address_parts.h"
#include "address/array_index.h"
#include "address/label_table.h"
#include "core/data_types.h"
#include "core/diagnostic_log.h"
#include "core/wrapping.h"

using tavmir::wrapAdd;
using tavmir::wrapMultiply;

namespace
{

const char kFile[] = "Func_Check";
const char kInfoFunction[] = "get_label_address_info";
const char kEntryFunction[] = "get_label_address_1";

const qint32 kTextArrayStride = 256; // bits from one text of an array to the next
const int kBitNumberRadix = 10;

// Takes a bracket suffix off a part: "Axis[1,2]" gives "Axis" and "1,2". It starts at the last
// '[' when there is any ']' too; the closing bracket is taken to be the last character and is not
// searched for: "x[1]yz" gives "x" and "1]y". False, and no index text, without a suffix.
bool get_label_address_array_split(const tavmir::AddressPart& part, tavmir::TextPiece& name,
                                   tavmir::TextPiece& indexText)
{
    name = part.whole;
    indexText = part.whole;
    indexText.size = 0;
    if (part.open < 0 || part.close < 0) {
        return false;
    }
    name.size = part.open;
    indexText.text += part.open + 1;
    indexText.size = qMax(0, part.whole.size - part.open - 2);
    return true;
}

tavmir::TextPiece nameOf(const tavmir::AddressPart& part)
{
    tavmir::TextPiece name;
    tavmir::TextPiece dropped;
    get_label_address_array_split(part, name, dropped);
    return name;
}

int logged(tavmir::DiagnosticLineNumber line, int result)
{
    tavmir::diagnosticLine(kFile, kEntryFunction, line, tavmir::kError) << "";
    return result;
}

tavmir::AddressParts cut(const QStringList& texts)
{
    tavmir::AddressParts parts;
    tavmir::takeParts(texts, parts);
    return parts;
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
    if (!(entry.typeFlags & tavmir::kArrayFlag)) {
        return;
    }
    const qint32 stride = typeCode == tavmir::kTextType ? kTextArrayStride : info.elementWidth;
    const qint32 linear = static_cast<qint32>(index);
    info.elementAddress = wrapAdd(info.elementAddress, wrapMultiply(stride, linear));
    info.arrayIndex = linear;
    info.isArrayElement = 1;
    info.arrayBase = 0;
    info.elementLimit = static_cast<qint32>(end - index);
}

// Reads a bit suffix in the part behind `partIndex`, when that is the last one.
void resolveBitSuffix(const Label_Type_Info& entry, const tavmir::AddressParts& parts,
                      int partIndex, ControlInformationM& info)
{
    if (!(entry.typeFlags & tavmir::kBitSuffixFlag) || parts.isEmpty() ||
        partIndex != parts.size() - 2) {
        return;
    }
    const tavmir::AddressPart& suffix = parts.at(parts.size() - 1);
    if (suffix.open < 1 || suffix.open >= suffix.close) {
        return;
    }
    const tavmir::TextPiece number = {suffix.whole.text + suffix.open + 1,
                                      suffix.close - suffix.open - 1};
    info.bitAccess = 1;
    if (!tavmir::convertNumber(number, kBitNumberRadix, info.bitIndex)) {
        info.bitIndex = 0;
    }
}

int resolve(const Label_Type_Info& entry, const tavmir::AddressParts& parts, int partIndex,
            ControlInformationM& info);

// A structure, or an element of an array of them: the path goes on among its members.
int resolveStructure(const Label_Type_Info& entry, const tavmir::AddressParts& parts, int partIndex,
                     quint32 index, int pending, ControlInformationM& info)
{
    if (index != 0) {
        if (entry.elementSizes.isEmpty()) {
            return logged(tavmir::kLineStructureSizeMissing, kStructureSizeMissing);
        }
        const qint32 offset = wrapMultiply(entry.elementSizes.first(), static_cast<qint32>(index));
        info.elementAddress = wrapAdd(info.elementAddress, offset);
    }
    if (entry.elementType.isEmpty()) {
        return kAddressRefused;
    }
    // The result is dropped on purpose: an address that ends at a structure, or names a member it
    // lacks, resolves to data type 0.
    resolve(entry.elementType.first(), parts, partIndex + 1, info);
    return pending;
}

// Resolves the parts from `partIndex` on against `entry`; calls itself for members.
int resolve(const Label_Type_Info& entry, const tavmir::AddressParts& parts, int partIndex,
            ControlInformationM& info)
{
    if (partIndex < 0 || partIndex >= parts.size()) {
        return kAddressRefused;
    }
    tavmir::TextPiece name;
    tavmir::TextPiece indexText;
    const bool indexed = get_label_address_array_split(parts.at(partIndex), name, indexText);

    unsigned int index = 0;
    unsigned int end = 0;
    int pending = indexed ? kAddressRefused : kAddressResolved;
    if (entry.typeFlags & tavmir::kArrayFlag) {
        pending =
            tavmir::linearIndex(indexText, entry.dimensionCount, entry.arrayBounds, index, &end);
        if (pending != kAddressResolved) {
            return logged(tavmir::kLineIndexRefused, pending);
        }
    }

    if (entry.typeFlags & tavmir::kStructureFlag) {
        if (!tavmir::membersAreComplete(entry)) {
            return kAddressRefused;
        }
        const Label_Type_Info* member = tavmir::findMember(entry, name);
        if (!member) {
            return logged(tavmir::kLineMemberNotFound, kMemberNotFound);
        }
        info.elementAddress = wrapAdd(info.elementAddress, member->offset);
        return resolve(*member, parts, partIndex, info);
    }

    const int typeCode = entry.typeFlags & tavmir::kTypeCodeMask;
    if (typeCode == tavmir::kStructureType) {
        return resolveStructure(entry, parts, partIndex, index, pending, info);
    }
    if (!tavmir::findDataType(typeCode)) {
        return pending;
    }
    resolveElement(entry, typeCode, index, end, info);
    if (typeCode == tavmir::kWordType || typeCode == tavmir::kDoubleWordType) {
        resolveBitSuffix(entry, parts, partIndex, info);
    }
    return pending;
}

} // namespace

int get_label_address_array_memory_index(QString indexText, int dimensionCount,
                                         const QList<int>& arrayBounds, unsigned int& index,
                                         unsigned int* end) TAVMIR_KX_TCP_NOTHROW
{
    return tavmir::linearIndex(tavmir::pieceOf(indexText), dimensionCount, arrayBounds, index, end);
}

void get_label_address_2(const Label_Type_Info& entry, const QStringList& parts, int partIndex,
                         ControlInformationM& info) TAVMIR_KX_TCP_NOTHROW
{
    resolveBitSuffix(entry, cut(parts), partIndex, info);
}

int get_label_address_1(const Label_Type_Info& entry, const QStringList& parts, int partIndex,
                        ControlInformationM& info) TAVMIR_KX_TCP_NOTHROW
{
    return resolve(entry, cut(parts), partIndex, info);
}

int get_label_address_info(const QString& address, ControlInformationM& info) TAVMIR_KX_TCP_NOTHROW
{
    if (address.isEmpty()) {
        tavmir::diagnosticLine(kFile, kInfoFunction, tavmir::kLineAddressEmpty, tavmir::kError)
            << address;
        return kAddressEmpty;
    }
    tavmir::AddressParts parts;
    tavmir::splitAddress(address, parts);
    if (parts.size() < 2) {
        tavmir::diagnosticLine(kFile, kInfoFunction, tavmir::kLineAddressTooShort, tavmir::kError)
            << QStringList(address);
        return kAddressTooShort;
    }

    const QString labelName = nameOf(parts.at(0)).toString();
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

    const Label_Type_Info& variables = label->elementType.first();
    if (!tavmir::membersAreComplete(variables)) {
        return kAddressRefused;
    }
    const Label_Type_Info* variable = tavmir::findMember(variables, nameOf(parts.at(1)));
    if (!variable) {
        return kAddressRefused;
    }
    info.elementAddress = variable->offset;
    return resolve(*variable, parts, 1, info);
}

int get_label_address_query(const QStringList& parts, int partIndex) TAVMIR_KX_TCP_NOTHROW
{
    Q_UNUSED(parts);
    Q_UNUSED(partIndex);
    return 0;
}
