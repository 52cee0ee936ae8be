// Members of structures: offsets, strides, nesting.
#include "support/address_test.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class StructureResolution : public AddressTest
{
protected:
    int resolveVariable(const Label_Type_Info& variableInfo, const char* address)
    {
        PLC_driver.labelTable.clear();
        passLabels({label("Main", QList<Label_Type_Info>() << variableInfo)});
        return resolve(address);
    }

    // Pos at 0 and an array In of ten words at 32.
    const Label_Type_Info axisType = structureType(
        QList<Label_Type_Info>() << variable("Pos", 6, 0)
                                 << arrayVariable("In", 4, 32, QList<int>() << 0 << 10));
};

TEST_F(StructureResolution, AMembersOffsetIsAdded)
{
    EXPECT_EQ(resolveVariable(structureVariable("S", 5000, axisType), "Main.S.Pos"), 0);
    EXPECT_EQ(info, parsed(6, 5000, 32));
    EXPECT_EQ(resolveVariable(structureVariable("S", 5000, axisType), "Main.S.In[3]"), 0);
    EXPECT_EQ(info, parsedElement(4, 5000 + 32 + 48, 16, 3, 10));
}

TEST_F(StructureResolution, AnArrayOfStructuresIsSteppedByItsElementSize)
{
    const Label_Type_Info array = structureArray("S", 5000, axisType, 512, QList<int>() << 1 << 4);
    EXPECT_EQ(resolveVariable(array, "Main.S[3].In[2]"), 0);
    EXPECT_EQ(info, parsedElement(4, 5000 + 2 * 512 + 32 + 32, 16, 2, 10))
        << "the array members are those of the inner array";
    EXPECT_EQ(resolveVariable(array, "Main.S[3].Pos"), 0);
    EXPECT_EQ(info, parsed(6, 6024, 32));
}

TEST_F(StructureResolution, StructuresNest)
{
    const Label_Type_Info outer =
        structureType(QList<Label_Type_Info>()
                      << variable("A", 1, 0)
                      << structureArray("Sub", 64, axisType, 512, QList<int>() << 0 << 2));
    const Label_Type_Info variableInfo =
        structureArray("S", 10000, outer, 2048, QList<int>() << 0 << 9);
    EXPECT_EQ(resolveVariable(variableInfo, "Main.S[2].Sub[1].In[4]"), 0);
    EXPECT_EQ(info, parsedElement(4, 10000 + 4096 + 64 + 512 + 32 + 64, 16, 4, 10));
    EXPECT_EQ(resolveVariable(variableInfo, "Main.S[2].A"), 0);
    EXPECT_EQ(info, parsed(1, 14096, 1));
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(StructureResolution, IndexZeroNeedsNoElementSize)
{
    Label_Type_Info array = structureArray("S", 5000, axisType, 0, QList<int>() << 0 << 4);
    array.elementSizes.clear();
    EXPECT_EQ(resolveVariable(array, "Main.S[0].Pos"), 0);
    EXPECT_EQ(info, parsed(6, 5000, 32));
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(StructureResolution, AnyOtherIndexWithoutElementSizeIsRefused)
{
    Label_Type_Info array = structureArray("S", 5000, axisType, 0, QList<int>() << 0 << 4);
    array.elementSizes.clear();
    EXPECT_EQ(resolveVariable(array, "Main.S[1].Pos"), 12);
    EXPECT_EQ(info, parsed(0, 5000, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(440));
}

TEST_F(StructureResolution, FailuresBelowAStructureInstanceAreDiscarded)
{
    const Label_Type_Info s = structureVariable("S", 5000, axisType);
    EXPECT_EQ(resolveVariable(s, "Main.S.Nope"), 0);
    EXPECT_EQ(info, parsed(0, 5000, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(376));
    diagnostics.clear();
    EXPECT_EQ(resolveVariable(s, "Main.S.In[x]"), 0);
    EXPECT_EQ(info, parsed(0, 5032, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(347));
    diagnostics.clear();
    EXPECT_EQ(resolveVariable(s, "Main.S.Pos[1]"), 0);
    EXPECT_EQ(info, parsed(6, 5000, 32));
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(StructureResolution, TheInstancesOwnResultIsReturned)
{
    EXPECT_EQ(resolveVariable(structureVariable("S", 5000, axisType), "Main.S[1].Pos"), 1)
        << "an index on a single structure";
    EXPECT_EQ(info, parsed(6, 5000, 32)) << "resolved all the same";
}

TEST_F(StructureResolution, AVariableThatIsItselfAStructureTypeIsSearchedAtItsOwnPart)
{
    Label_Type_Info type = axisType;
    type.name = "Pos";
    type.offset = 5000;
    EXPECT_EQ(resolveVariable(type, "Main.Pos"), 0);
    EXPECT_EQ(info, parsed(6, 5000, 32)) << "the part Pos names the member Pos too";
    type.name = "Other";
    EXPECT_EQ(resolveVariable(type, "Main.Other"), 7);
    EXPECT_EQ(info, parsed(0, 5000, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(376));
}

TEST_F(StructureResolution, MembersInsideAStructureTypeReachedDirectlyReturnTheirOwnResult)
{
    Label_Type_Info type = axisType;
    type.name = "In";
    type.offset = 5000;
    EXPECT_EQ(resolveVariable(type, "Main.In[x]"), 3);
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(347));
    EXPECT_EQ(resolveVariable(type, "Main.In[2]"), 0);
    EXPECT_EQ(info, parsedElement(4, 5000 + 32 + 32, 16, 2, 10));
}

TEST_F(StructureResolution, AnArrayThatIsAStructureTypeChecksItsIndexButDoesNotUseIt)
{
    Label_Type_Info both = axisType;
    both.name = "Pos";
    both.offset = 5000;
    both.typeFlags = static_cast<quint16>(both.typeFlags | kArray);
    both.dimensionCount = 1;
    both.arrayBounds = QList<int>() << 10 << 0 << 9;
    EXPECT_EQ(resolveVariable(both, "Main.Pos"), 3);
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(347));
    EXPECT_EQ(resolveVariable(both, "Main.Pos[4]"), 1)
        << "the member Pos is no array, so the same suffix is one too many";
    EXPECT_EQ(info, parsed(6, 5000, 32)) << "the index moved nothing";
    both.name = "In";
    EXPECT_EQ(resolveVariable(both, "Main.In[4]"), 0);
    EXPECT_EQ(info, parsedElement(4, 5000 + 32 + 64, 16, 4, 10));
}

TEST_F(StructureResolution, TheFirstOfEqualNamesIsFound)
{
    const Label_Type_Info type =
        structureType(QList<Label_Type_Info>() << variable("M", 4, 16) << variable("M", 6, 32));
    EXPECT_EQ(resolveVariable(structureVariable("S", 0, type), "Main.S.M"), 0);
    EXPECT_EQ(info, parsed(4, 16, 16));
}

TEST_F(StructureResolution, MembersBeyondTheMemberCountAreNotFound)
{
    Label_Type_Info type = axisType;
    type.memberCount = 1;
    EXPECT_EQ(resolveVariable(structureVariable("S", 0, type), "Main.S.In[0]"), 0);
    EXPECT_EQ(info, parsed(0, 0, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(376));
}

TEST_F(StructureResolution, OnlyTheFirstElementTypeIsLookedAt)
{
    Label_Type_Info s = structureVariable("S", 0, axisType);
    s.elementType << structureType(QList<Label_Type_Info>() << variable("Second", 4, 0));
    EXPECT_EQ(resolveVariable(s, "Main.S.Pos"), 0);
    EXPECT_EQ(info, parsed(6, 0, 32));
    resolveVariable(s, "Main.S.Second");
    EXPECT_EQ(info, parsed(0, 0, 0));
}

TEST_F(StructureResolution, StrideArithmeticWrapsIn32Bits)
{
    const Label_Type_Info array =
        structureArray("S", 16, axisType, INT_MAX, QList<int>() << 0 << 4);
    EXPECT_EQ(resolveVariable(array, "Main.S[3].Pos"), 0);
    EXPECT_EQ(info.elementAddress, static_cast<qint32>(16u + 3u * 0x7FFFFFFFu));
}

TEST_F(StructureResolution, ResolvingOutsideThePartsGivesOne)
{
    ControlInformationM untouched;
    EXPECT_EQ(get_label_address_1(axisType,
                                  QStringList() << "Main"
                                                << "S",
                                  2, untouched),
              1);
    EXPECT_EQ(get_label_address_1(axisType,
                                  QStringList() << "Main"
                                                << "S",
                                  -1, untouched),
              1);
    EXPECT_EQ(get_label_address_1(axisType, QStringList(), 0, untouched), 1);
    EXPECT_EQ(untouched, ControlInformationM());
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(StructureResolution, DeepNestingResolves)
{
    Label_Type_Info type = structureType(QList<Label_Type_Info>() << variable("V", 4, 1));
    QString address = ".V";
    for (int level = 0; level < 200; ++level) {
        type = structureType(QList<Label_Type_Info>() << structureVariable("N", 16, type));
        address = ".N" + address;
    }
    const QByteArray text = ("Main.S" + address).toUtf8();
    EXPECT_EQ(resolveVariable(structureVariable("S", 0, type), text.constData()), 0);
    EXPECT_EQ(info, parsed(4, 200 * 16 + 1, 16));
}

} // namespace
