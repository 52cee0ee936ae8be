// Variables, members and types as Label_Type_Info records. Copies share their lists, so a type
// used in many places is held once.
#include "label_tree.h"

#include "project/raw_address.h"

namespace tavmir::host
{

namespace
{

using project::DataType;
using project::Project;
using project::StructureType;
using project::Variable;

constexpr quint16 kArrayFlag = 0x100;
constexpr quint16 kStructureTypeFlag = 0x200;
constexpr quint16 kBitsFlag = 0x400;
constexpr int kDecimal = 10;          // the base of an index
constexpr int kTextArrayStride = 256; // bits from one text of an array to the next
constexpr char kWordsSuffix[] = "~words";
constexpr char kWordMember[] = "w";

quint16 codeOf(DataType type)
{
    return static_cast<quint16>(project::driverType(type));
}

Label_Type_Info structureType(const QString& name, const QList<Label_Type_Info>& members)
{
    Label_Type_Info type;
    type.name = name;
    type.typeFlags = codeOf(DataType::structure) | kStructureTypeFlag;
    type.members = members;
    type.memberCount = static_cast<quint32>(members.size());
    return type;
}

class TreeBuilder
{
public:
    explicit TreeBuilder(const Project& project)
        : project_(project), types_(project.types.size()), built_(project.types.size(), false)
    {
        Label_Type_Info word;
        word.name = kWordMember;
        word.typeFlags = codeOf(DataType::word);
        wordOfText_ = structureType(kWordsSuffix, {word});
    }

    Label_Type_Info label(const project::Label& source)
    {
        Label_Type_Info record;
        record.name = source.name;
        record.elementType << structureType(source.name, records(source.variables));
        return record;
    }

private:
    QList<Label_Type_Info> records(const std::vector<Variable>& variables)
    {
        QList<Label_Type_Info> list;
        for (const Variable& variable : variables) {
            list << record(variable);
            if (variable.type == DataType::text) {
                list << wordsOf(variable);
            }
        }
        return list;
    }

    Label_Type_Info record(const Variable& variable)
    {
        Label_Type_Info record;
        record.name = variable.name;
        record.typeFlags = codeOf(variable.type);
        record.offset = static_cast<qint32>(variable.offset);
        if (variable.bitsAllowed) {
            record.typeFlags |= kBitsFlag;
        }
        if (variable.type == DataType::text) {
            record.elementSizes << variable.words;
        }
        if (variable.type == DataType::structure) {
            const size_t type = static_cast<size_t>(variable.structure);
            record.elementSizes << static_cast<int>(project_.types[type].size);
            record.elementType << typeRecord(type);
        }
        addArray(variable, record);
        return record;
    }

    // Words lie 16 bits apart, texts of an array 256: there the index belongs to a structure
    // that holds the text's first word.
    Label_Type_Info wordsOf(const Variable& text) const
    {
        Label_Type_Info record;
        record.name = text.name + kWordsSuffix;
        record.typeFlags = codeOf(DataType::word);
        record.offset = static_cast<qint32>(text.offset);
        if (text.array) {
            record.typeFlags = codeOf(DataType::structure);
            record.elementSizes << kTextArrayStride;
            record.elementType << wordOfText_;
            addArray(text, record);
        }
        return record;
    }

    static void addArray(const Variable& variable, Label_Type_Info& record)
    {
        if (!variable.array) {
            return;
        }
        record.typeFlags |= kArrayFlag;
        record.dimensionCount = static_cast<qint32>(variable.array->bounds.size());
        record.arrayBounds << variable.array->radix;
        for (const project::IndexRange& range : variable.array->bounds) {
            record.arrayBounds << range.low << range.high;
        }
    }

    const Label_Type_Info& typeRecord(size_t index)
    {
        if (!built_[index]) {
            const StructureType& type = project_.types[index];
            types_[index] = structureType(type.name, records(type.members));
            built_[index] = true;
        }
        return types_[index];
    }

    const Project& project_;
    std::vector<Label_Type_Info> types_;
    std::vector<bool> built_;
    Label_Type_Info wordOfText_;
};

// Elements without a variable: an array whose index is the bit address.
Label_Type_Info rawArray(const project::RawVariable& variable)
{
    Label_Type_Info member;
    member.name = project::kRawMember;
    member.typeFlags = codeOf(variable.type);
    Label_Type_Info record;
    record.name = variable.name;
    record.typeFlags = codeOf(DataType::structure) | kArrayFlag;
    record.offset = static_cast<qint32>(variable.offset);
    record.dimensionCount = 1;
    record.arrayBounds << kDecimal << 0 << project::kMostRawIndex;
    record.elementSizes << 1;
    record.elementType << structureType(variable.name, {member});
    return record;
}

Label_Type_Info rawLabel()
{
    QList<Label_Type_Info> arrays;
    for (const project::RawVariable& variable : project::rawVariables()) {
        arrays << rawArray(variable);
    }
    Label_Type_Info label;
    label.name = project::kRawLabel;
    label.elementType << structureType(label.name, arrays);
    return label;
}

} // namespace

QList<Label_Type_Info> labelTree(const Project& project)
{
    TreeBuilder builder(project);
    QList<Label_Type_Info> labels;
    labels << rawLabel();
    for (const project::Label& label : project.labels) {
        labels << builder.label(label);
    }
    return labels;
}

QString pollAddress(const project::Element& element)
{
    if (element.type != DataType::text) {
        return element.addressText;
    }
    if (!element.isArrayElement) {
        return element.addressText + kWordsSuffix;
    }
    const int index = element.addressText.lastIndexOf('[');
    return element.addressText.left(index) + kWordsSuffix + element.addressText.mid(index) + "." +
           kWordMember;
}

int pollCount(const project::Element& element)
{
    return project::driverCount(element);
}

} // namespace tavmir::host
