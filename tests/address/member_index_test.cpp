// Long lists of variables are looked up instead of searched. What is found must be what a search
// of the record in the table finds, however that record came there.
#include "address/Func_Check.h"
#include "support/driver_test.h"
#include "support/label_tree.h"

#include <gtest/gtest.h>

using namespace tavmir::test;

namespace
{

const int kMany = 100;

QString nameOf(int i)
{
    return QString("Variable%1").arg(i);
}

// kMany words; variable i lies at first + 16 * i.
QList<Label_Type_Info> manyVariables(int first)
{
    QList<Label_Type_Info> list;
    for (int i = 0; i < kMany; ++i) {
        list << variable(qPrintable(nameOf(i)), 4, first + 16 * i);
    }
    return list;
}

// The element address of "Main.<name>", or -1 when the address is refused.
int addressOf(const QString& name)
{
    ControlInformationM info;
    return get_label_address_info(QString("Main.") + name, info) == 0 ? info.elementAddress : -1;
}

Label_Type_Info& variablesOfMain()
{
    return PLC_driver.labelTable["Main"].elementType.first();
}

class MemberIndexTest : public DriverTest
{
protected:
    MemberIndexTest() { passMain(manyVariables(1000)); }

    static void passMain(const QList<Label_Type_Info>& list)
    {
        passLabels(QList<Label_Type_Info>() << label("Main", list));
    }
};

TEST_F(MemberIndexTest, EveryVariableOfALongListIsFound)
{
    for (int i = 0; i < kMany; ++i) {
        EXPECT_EQ(addressOf(nameOf(i)), 1000 + 16 * i) << i;
    }
    EXPECT_EQ(addressOf("Variable100"), -1);
    EXPECT_EQ(addressOf("Variable"), -1);
    EXPECT_EQ(addressOf(""), -1);
    EXPECT_EQ(addressOf("variable1"), -1);
}

TEST_F(MemberIndexTest, TheFirstOfEqualNamesIsFound)
{
    QList<Label_Type_Info> list = manyVariables(1000);
    list[60].name = list[70].name = list[80].name = "Twice";
    passMain(list);
    EXPECT_EQ(addressOf("Twice"), 1000 + 16 * 60);
}

TEST_F(MemberIndexTest, VariablesBeyondTheMemberCountAreNotFound)
{
    QList<Label_Type_Info> list = manyVariables(1000);
    Label_Type_Info main = label("Main", list);
    main.elementType.first().memberCount = 50;
    passLabels(QList<Label_Type_Info>() << main);
    EXPECT_EQ(addressOf(nameOf(49)), 1000 + 16 * 49);
    EXPECT_EQ(addressOf(nameOf(50)), -1);
}

TEST_F(MemberIndexTest, AMemberCountChangedInTheTableCounts)
{
    variablesOfMain().memberCount = 10;
    EXPECT_EQ(addressOf(nameOf(9)), 1000 + 16 * 9);
    EXPECT_EQ(addressOf(nameOf(10)), -1);
    variablesOfMain().memberCount = kMany;
    EXPECT_EQ(addressOf(nameOf(10)), 1000 + 16 * 10);
}

TEST_F(MemberIndexTest, AVariableRenamedInTheTableIsFoundByItsNewName)
{
    variablesOfMain().members[40].name = "Renamed";
    EXPECT_EQ(addressOf("Renamed"), 1000 + 16 * 40);
    EXPECT_EQ(addressOf(nameOf(40)), -1);
    EXPECT_EQ(addressOf(nameOf(41)), 1000 + 16 * 41);
}

TEST_F(MemberIndexTest, VariablesAddedAndRemovedInTheTableCount)
{
    Label_Type_Info& type = variablesOfMain();
    type.members.prepend(variable("Variable7", 4, 4));
    type.members.removeLast();
    EXPECT_EQ(addressOf("Variable7"), 4);
    EXPECT_EQ(addressOf(nameOf(kMany - 1)), -1);
    EXPECT_EQ(addressOf(nameOf(kMany - 2)), 1000 + 16 * (kMany - 2));
}

TEST_F(MemberIndexTest, ARecordPutIntoTheTableDirectlyResolves)
{
    PLC_driver.labelTable.insert("Main", label("Main", manyVariables(5000)));
    for (int i = 0; i < kMany; ++i) {
        EXPECT_EQ(addressOf(nameOf(i)), 5000 + 16 * i) << i;
    }
}

TEST_F(MemberIndexTest, AListInTheMemoryOfAnOlderOneIsNotTakenForIt)
{
    // Lists of one shape come and go, so that the allocator gives the same places again.
    for (int round = 0; round < 50; ++round) {
        if (round % 2) {
            PLC_driver.labelTable.insert("Main", label("Main", manyVariables(round)));
        } else {
            passMain(manyVariables(round));
        }
        EXPECT_EQ(addressOf(nameOf(0)), round);
        EXPECT_EQ(addressOf(nameOf(kMany - 1)), round + 16 * (kMany - 1));
        PLC_driver.labelTable.clear();
    }
}

TEST_F(MemberIndexTest, ALabelPassedAgainIsFoundInItsNewShape)
{
    QList<Label_Type_Info> list = manyVariables(2000);
    list.removeFirst();
    passMain(list);
    EXPECT_EQ(addressOf(nameOf(0)), -1);
    EXPECT_EQ(addressOf(nameOf(1)), 2016);
}

TEST_F(MemberIndexTest, TheHostMayChangeItsTreeAfterHandingItOver)
{
    QList<Label_Type_Info> labels;
    labels << label("Main", manyVariables(3000));
    PassVarName_2(&labels);
    labels.first().elementType.first().members[5].name = "Changed";
    EXPECT_EQ(addressOf("Changed"), -1);
    EXPECT_EQ(addressOf(nameOf(5)), 3000 + 16 * 5);
}

// A text that only the records of a list share tells when they are gone.
TEST_F(MemberIndexTest, ReplacedListsAreReleased)
{
    const QString text = QString("carried").repeated(2);
    QList<Label_Type_Info> list = manyVariables(4000);
    list.first().extraText = text;
    passMain(list);
    list.clear();
    EXPECT_FALSE(text.isDetached());
    passMain(manyVariables(1000));
    EXPECT_TRUE(text.isDetached());
}

TEST_F(MemberIndexTest, ReplacedListsOfNestedTypesAreReleased)
{
    const QString text = QString("carried").repeated(2);
    QList<Label_Type_Info> inner = manyVariables(0);
    inner.first().extraText = text;
    QList<Label_Type_Info> outer = manyVariables(4000);
    outer << structureVariable("Box", 100000, structureType(inner));
    inner.clear();
    passMain(outer);
    outer.clear();
    EXPECT_FALSE(text.isDetached());
    passMain(manyVariables(1000));
    EXPECT_TRUE(text.isDetached());
}

TEST_F(MemberIndexTest, MembersOfLongStructuresAreFound)
{
    const Label_Type_Info type = structureType(manyVariables(0));
    QList<Label_Type_Info> list;
    for (int i = 0; i < kMany; ++i) {
        list << structureVariable(qPrintable(nameOf(i)), 10000 * i, type);
    }
    passMain(list);
    EXPECT_EQ(addressOf("Variable30.Variable20"), 300000 + 320);
    ControlInformationM info;
    EXPECT_EQ(get_label_address_info("Main.Variable30.Nope", info), 0);
    EXPECT_EQ(info.dataType, 0);
}

// Each of thirty types has twelve members of the next type: a walk that took every way would
// never end.
TEST_F(MemberIndexTest, TypesThatShareTypesAreSeenOnce)
{
    const int kMembers = 12;
    Label_Type_Info type = structureType(manyVariables(0));
    for (int depth = 0; depth < 30; ++depth) {
        QList<Label_Type_Info> members;
        for (int i = 0; i < kMembers; ++i) {
            members << structureVariable(qPrintable(nameOf(i)), i, type);
        }
        type = structureType(members);
    }
    passMain(type.members);
    EXPECT_EQ(addressOf("Variable3"), 3);
}

} // namespace
