#include "checked/labels.h"

#include "address/label_table.h"
#include "checked/report.h"
#include "checked/text.h"
#include "core/data_types.h"

#include <set>

namespace tavmir
{
namespace checked
{

namespace
{

// Radices that Qt converts numbers in; with 0 the number says its own.
bool isRadix(int radix)
{
    return radix == 0 || (radix >= 2 && radix <= 36);
}

// The codes that are none are told; of the others, those that cannot be read are so when a host
// polls them.
bool isTypeCode(int code)
{
    return (code >= 1 && code <= 10) || code == kStructureType;
}

// Walks one label's tree of records; `path` is the address text so far.
class Walk
{
public:
    explicit Walk(const Call& call) : call_(call) {}

    void label(const Label_Type_Info& record);

private:
    void tell(Duty duty, const QString& path, const std::string& what);
    void name(const Label_Type_Info& record, const QString& path);
    void members(const Label_Type_Info& type, const QString& path);
    void variable(const Label_Type_Info& record, const QString& path);
    void bounds(const Label_Type_Info& record, const QString& path);
    void sizes(const Label_Type_Info& record, const QString& path);

    const Call& call_;
    std::set<const void*> seen_; // a type that many variables share is looked at once
};

void Walk::tell(Duty duty, const QString& path, const std::string& what)
{
    report(duty, call_, "was given a record that contradicts itself.", quoted(path) + ": " + what);
}

void Walk::name(const Label_Type_Info& record, const QString& path)
{
    const QString& name = record.name;
    if (name.isEmpty() || name.contains('.') || (name.contains('[') && name.contains(']'))) {
        tell(kLabelName, path, "its name is " + quoted(name));
    }
}

void Walk::label(const Label_Type_Info& record)
{
    name(record, record.name);
    if (record.elementType.isEmpty()) {
        tell(kLabelTypeMissing, record.name, "a label whose elementType is empty");
        return;
    }
    members(record.elementType.first(), record.name);
}

void Walk::members(const Label_Type_Info& type, const QString& path)
{
    if (type.memberCount > static_cast<quint32>(type.members.size())) {
        tell(kLabelMemberCount, path,
             text("memberCount %u, and %d members", type.memberCount, type.members.size()));
    }
    if (type.members.isEmpty() || !seen_.insert(&type.members.first()).second) {
        return;
    }
    for (int i = 0; i < type.members.size(); ++i) {
        const Label_Type_Info& member = type.members.at(i);
        const QString memberPath = path + "." + member.name;
        name(member, memberPath);
        variable(member, memberPath);
    }
}

void Walk::variable(const Label_Type_Info& record, const QString& path)
{
    if (record.typeFlags & kArrayFlag) {
        bounds(record, path);
    }
    if (record.typeFlags & kStructureFlag) {
        members(record, path);
        return;
    }
    const int code = record.typeFlags & kTypeCodeMask;
    if (!isTypeCode(code)) {
        tell(kLabelTypeCode, path, text("type code %d", code));
        return;
    }
    sizes(record, path);
    if (code != kStructureType) {
        return;
    }
    if (record.elementType.isEmpty()) {
        tell(kLabelTypeMissing, path, "a structure whose elementType is empty");
        return;
    }
    members(record.elementType.first(), path);
}

void Walk::bounds(const Label_Type_Info& record, const QString& path)
{
    const int dimensions = record.dimensionCount;
    const QList<int>& bounds = record.arrayBounds;
    if (dimensions < 1 || bounds.size() / 2 < dimensions || bounds.size() % 2 == 0) {
        tell(kLabelBounds, path,
             text("%d dimensions, and %d entries of arrayBounds", dimensions, bounds.size()));
        return;
    }
    if (!isRadix(bounds.first())) {
        tell(kLabelBounds, path, text("radix %d", bounds.first()));
        return;
    }
    for (int i = 1; i + 1 <= 2 * dimensions; i += 2) {
        if (bounds.at(i + 1) <= bounds.at(i)) {
            tell(kLabelBounds, path, text("from %d to below %d", bounds.at(i), bounds.at(i + 1)));
            return;
        }
    }
}

void Walk::sizes(const Label_Type_Info& record, const QString& path)
{
    const int code = record.typeFlags & kTypeCodeMask;
    const bool needed =
        code == kTextType || (code == kStructureType && (record.typeFlags & kArrayFlag));
    if (needed && (record.elementSizes.isEmpty() || record.elementSizes.first() < 1)) {
        tell(kLabelSizeMissing, path,
             code == kTextType ? "a text without its words in elementSizes"
                               : "an array of structures without its stride in elementSizes");
    }
}

} // namespace

void checkLabels(const QList<Label_Type_Info>& labels, const Call& call)
{
    Walk walk(call);
    for (int i = 0; i < labels.size(); ++i) {
        walk.label(labels.at(i));
    }
}

} // namespace checked
} // namespace tavmir
