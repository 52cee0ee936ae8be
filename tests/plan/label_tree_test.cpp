// The tree of labels that the driver gets.
#include "plan/label_tree.h"

#include "plan_project.h"
#include "project/raw_address.h"

namespace tavmir::host
{

namespace
{

const Label_Type_Info* find(const QList<Label_Type_Info>& records, const QString& name)
{
    for (const Label_Type_Info& record : records) {
        if (record.name == name) {
            return &record;
        }
    }
    return nullptr;
}

const Label_Type_Info* variable(const QList<Label_Type_Info>& labels, const QString& label,
                                const QString& name)
{
    const Label_Type_Info* owner = find(labels, label);
    return owner == nullptr ? nullptr : find(owner->elementType.first().members, name);
}

int typeOf(const Label_Type_Info* record)
{
    return record == nullptr ? -1 : record->typeFlags & 0xFF;
}

} // namespace

TEST(LabelTree, ARealIsADoubleWordToTheDriver)
{
    const auto labels = labelTree(planProject(""));
    EXPECT_EQ(6, typeOf(variable(labels, "M", "r")));
    EXPECT_EQ(6, typeOf(variable(labels, "M", "d")));
    EXPECT_EQ(4, typeOf(variable(labels, "M", "w")));
    EXPECT_EQ(10, typeOf(variable(labels, "M", "text")));
    EXPECT_EQ(0, variable(labels, "M", "r")->typeFlags & 0x400) << "it has no bits";
}

TEST(LabelTree, EveryAddressOfEachClassIsThereWithoutAVariable)
{
    const auto labels = labelTree(planProject(""));
    for (const project::RawVariable& raw : project::rawVariables()) {
        const Label_Type_Info* array = variable(labels, project::kRawLabel, raw.name);
        ASSERT_NE(nullptr, array) << raw.name.toStdString();
        EXPECT_EQ(0x10C, array->typeFlags);
        EXPECT_EQ(static_cast<qint32>(raw.offset), array->offset);
        EXPECT_EQ((QList<int>{10, 0, 0x7FFFFFFF}), array->arrayBounds);
        EXPECT_EQ(QList<int>{1}, array->elementSizes) << "one bit apart";
        EXPECT_EQ(static_cast<int>(raw.type),
                  typeOf(find(array->elementType.first().members, project::kRawMember)));
    }
}

} // namespace tavmir::host
