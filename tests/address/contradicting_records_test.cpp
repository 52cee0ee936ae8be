// Label records that contradict themselves: refused, and nothing is read past a list.
#include "support/address_test.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class ContradictingRecords : public AddressTest
{
protected:
    int resolveVariable(const Label_Type_Info& variableInfo, const char* address)
    {
        PLC_driver.labelTable.clear();
        passLabels({label("Main", QList<Label_Type_Info>() << variableInfo)});
        return resolve(address);
    }
};

TEST_F(ContradictingRecords, ALabelThatPromisesMoreVariablesThanItHas)
{
    for (const quint32 count : {2u, 1000u, UINT_MAX}) {
        Label_Type_Info odd = label("Odd", QList<Label_Type_Info>() << variable("V", 4, 16));
        odd.elementType[0].memberCount = count;
        passLabels({odd});
        EXPECT_EQ(resolve("Odd.V"), 1) << count;
        EXPECT_EQ(resolve("Odd.Nope"), 1) << count;
    }
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(ContradictingRecords, AStructureTypeThatPromisesMoreMembersThanItHas)
{
    Label_Type_Info type = structureType(QList<Label_Type_Info>() << variable("M", 4, 16));
    type.memberCount = 2;
    type.name = "M";
    type.offset = 500;
    EXPECT_EQ(resolveVariable(type, "Main.M"), 1);
    EXPECT_EQ(diagnostics.lines(), QStringList());

    EXPECT_EQ(resolveVariable(structureVariable("S", 500, type), "Main.S.M"), 0)
        << "what happens below an instance is discarded";
    EXPECT_EQ(info, parsed(0, 500, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(ContradictingRecords, AStructureInstanceWithoutItsType)
{
    Label_Type_Info s = variable("S", 12, 500);
    EXPECT_EQ(resolveVariable(s, "Main.S.M"), 1);
    EXPECT_EQ(resolveVariable(s, "Main.S"), 1);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(ContradictingRecords, AnArrayWithMissingBounds)
{
    for (const int entries : {0, 1, 2}) {
        Label_Type_Info array = arrayVariable("A", 4, 500, QList<int>() << 0 << 9);
        array.arrayBounds = array.arrayBounds.mid(0, entries);
        diagnostics.clear();
        EXPECT_EQ(resolveVariable(array, "Main.A[3]"), 1) << entries;
        EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(347)) << entries;
    }
}

TEST_F(ContradictingRecords, AnArrayWithoutDimensions)
{
    for (const int dimensions : {0, -1, INT_MIN}) {
        Label_Type_Info array = arrayVariable("A", 4, 500, QList<int>() << 0 << 9);
        array.dimensionCount = dimensions;
        diagnostics.clear();
        EXPECT_EQ(resolveVariable(array, "Main.A[3]"), 1);
        EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(347));
    }
}

} // namespace
