// Taking the host's labels over.
#include "support/driver_test.h"
#include "support/label_tree.h"

using namespace tavmir::test;

namespace
{

class LabelTable : public DriverTest
{
protected:
    static Label_Type_Info distinctLabel(const char* name, int seed)
    {
        Label_Type_Info info = label(name, QList<Label_Type_Info>() << variable("V", 4, seed));
        info.typeFlags = static_cast<quint16>(seed + 1);
        info.offset = seed + 2;
        info.dimensionCount = seed + 3;
        info.memberCount = static_cast<quint32>(seed + 4);
        info.arrayBounds << seed + 5;
        info.members << variable("M", 1, seed + 6);
        info.extraText = QString::number(seed + 7);
        info.extraValue1 = seed + 8;
        info.extraValue2 = seed + 9;
        info.elementSizes << seed + 10;
        info.extraTexts << QString::number(seed + 11);
        return info;
    }

    static void expectSame(const Label_Type_Info& a, const Label_Type_Info& b)
    {
        EXPECT_EQ(a.name, b.name);
        EXPECT_EQ(a.typeFlags, b.typeFlags);
        EXPECT_EQ(a.offset, b.offset);
        EXPECT_EQ(a.dimensionCount, b.dimensionCount);
        EXPECT_EQ(a.memberCount, b.memberCount);
        EXPECT_EQ(a.arrayBounds, b.arrayBounds);
        ASSERT_EQ(a.members.size(), b.members.size());
        for (int i = 0; i < a.members.size(); ++i) {
            expectSame(a.members.at(i), b.members.at(i));
        }
        ASSERT_EQ(a.elementType.size(), b.elementType.size());
        for (int i = 0; i < a.elementType.size(); ++i) {
            expectSame(a.elementType.at(i), b.elementType.at(i));
        }
        EXPECT_EQ(a.extraText, b.extraText);
        EXPECT_EQ(a.extraValue1, b.extraValue1);
        EXPECT_EQ(a.extraValue2, b.extraValue2);
        EXPECT_EQ(a.elementSizes, b.elementSizes);
        EXPECT_EQ(a.extraTexts, b.extraTexts);
    }

    static Label_Type_Info stored(const char* name)
    {
        return PLC_driver.labelTable.value(QString::fromUtf8(name));
    }
};

TEST_F(LabelTable, NothingHappensWithoutLabels)
{
    passLabels({distinctLabel("A", 100)});
    PassVarName_2(nullptr);
    passLabels(QList<Label_Type_Info>());
    EXPECT_EQ(PLC_driver.labelTable.size(), 1);
    expectSame(stored("A"), distinctLabel("A", 100));
}

TEST_F(LabelTable, ARecordIsStoredWholeUnderItsName)
{
    passLabels({distinctLabel("A", 100), distinctLabel("B", 200)});
    EXPECT_EQ(PLC_driver.labelTable.size(), 2);
    expectSame(stored("A"), distinctLabel("A", 100));
    expectSame(stored("B"), distinctLabel("B", 200));
}

TEST_F(LabelTable, OfTwoWithOneNameTheLastWins)
{
    passLabels({distinctLabel("A", 100), distinctLabel("A", 200)});
    EXPECT_EQ(PLC_driver.labelTable.size(), 1);
    expectSame(stored("A"), distinctLabel("A", 200));
}

TEST_F(LabelTable, ALaterCallAddsAndReplaces)
{
    passLabels({distinctLabel("A", 100)});
    passLabels({distinctLabel("B", 200)});
    EXPECT_EQ(PLC_driver.labelTable.size(), 2);
    Label_Type_Info bare;
    bare.name = "A";
    passLabels({bare});
    EXPECT_EQ(PLC_driver.labelTable.size(), 2);
    expectSame(stored("A"), bare);
    expectSame(stored("B"), distinctLabel("B", 200));
}

TEST_F(LabelTable, TheHostMayChangeItsListAfterwards)
{
    QList<Label_Type_Info> labels = {distinctLabel("A", 100)};
    PassVarName_2(&labels);
    labels[0].offset = -1;
    labels[0].members[0].name = "changed";
    labels.clear();
    expectSame(stored("A"), distinctLabel("A", 100));
}

TEST_F(LabelTable, TheHostsListIsNotChanged)
{
    QList<Label_Type_Info> labels = {distinctLabel("A", 100), distinctLabel("A", 200)};
    PassVarName_2(&labels);
    ASSERT_EQ(labels.size(), 2);
    expectSame(labels.at(0), distinctLabel("A", 100));
    expectSame(labels.at(1), distinctLabel("A", 200));
}

TEST_F(LabelTable, NamesAreStoredAsTheyStand)
{
    passLabels({variable("a", 0, 1), variable("A", 0, 2), variable(" A ", 0, 3),
                variable("A.B", 0, 4), variable("A[1]", 0, 5), variable("", 0, 6)});
    EXPECT_EQ(PLC_driver.labelTable.size(), 6);
    EXPECT_EQ(stored("a").offset, 1);
    EXPECT_EQ(stored("A").offset, 2);
    EXPECT_EQ(stored(" A ").offset, 3);
    EXPECT_EQ(stored("A.B").offset, 4);
    EXPECT_EQ(stored("A[1]").offset, 5);
    EXPECT_EQ(stored("").offset, 6);
}

TEST_F(LabelTable, TakingLabelsOverSaysNothingAndTouchesNoOtherState)
{
    passLabels({mainLabel()});
    EXPECT_EQ(diagnostics.lines(), QStringList());
    EXPECT_TRUE(PLC_driver.readVarList.isEmpty());
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

} // namespace
