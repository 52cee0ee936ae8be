// One label tree and every kind of address text against it: results, parsed values, lines.
#include "support/address_test.h"

using namespace tavmir::test;

namespace
{

class WorkedExample : public AddressTest
{
protected:
    WorkedExample() { passLabels({mainLabel()}); }
};

TEST_F(WorkedExample, ABitVariable)
{
    EXPECT_EQ(resolve("Main.Run"), 0);
    EXPECT_EQ(info, parsed(1, 100, 1));
}

TEST_F(WorkedExample, OneBitOfAWord)
{
    EXPECT_EQ(resolve("Main.W.b[5]"), 0);
    EXPECT_EQ(info, parsedBit(4, 3000, 16, 5));
}

TEST_F(WorkedExample, ATwoDimensionalArrayElement)
{
    EXPECT_EQ(resolve("Main.M[2,3]"), 0);
    EXPECT_EQ(info, parsedElement(4, 2112, 16, 7, 4));
}

TEST_F(WorkedExample, IndicesAboveTheHighBoundsAreAccepted)
{
    EXPECT_EQ(resolve("Main.M[9,9]"), 0);
    EXPECT_EQ(info, parsedElement(4, 2656, 16, 41, 4));
}

TEST_F(WorkedExample, MembersOfAnArrayOfStructures)
{
    EXPECT_EQ(resolve("Main.Axis[1].Pos"), 0);
    EXPECT_EQ(info, parsed(6, 1096, 32));
    EXPECT_EQ(resolve("Main.Axis[2].Vel"), 0);
    EXPECT_EQ(info, parsed(7, 1224, 32));
}

TEST_F(WorkedExample, TheLabelsSuffixIsIgnored)
{
    EXPECT_EQ(resolve("Main[7].Run"), 0);
    EXPECT_EQ(info, parsed(1, 100, 1));
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(WorkedExample, APathThatEndsAtAStructure)
{
    EXPECT_EQ(resolve("Main.Axis[1]"), 0);
    EXPECT_EQ(info, parsed(0, 1096, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(WorkedExample, AnUnknownMemberBehindAStructureIsLoggedButItsResultDiscarded)
{
    EXPECT_EQ(resolve("Main.Axis[1].Foo"), 0);
    EXPECT_EQ(info, parsed(0, 1096, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(376));
}

TEST_F(WorkedExample, AnIndexOnANonArrayIsRefusedThoughAllIsSet)
{
    EXPECT_EQ(resolve("Main.Run[1]"), 1);
    EXPECT_EQ(info, parsed(1, 100, 1));
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(WorkedExample, TooFewIndices)
{
    EXPECT_EQ(resolve("Main.M[2]"), 1);
    EXPECT_EQ(info, parsed(0, 2000, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(347));
    diagnostics.clear();
    EXPECT_EQ(resolve("Main.M"), 1);
    EXPECT_EQ(info, parsed(0, 2000, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(347));
}

TEST_F(WorkedExample, AnIndexBelowItsLowBound)
{
    EXPECT_EQ(resolve("Main.M[0,0]"), 3);
    EXPECT_EQ(info, parsed(0, 2000, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(347));
}

TEST_F(WorkedExample, AnUnknownVariableIsRefusedWithoutALine)
{
    EXPECT_EQ(resolve("Main.Nope"), 1);
    EXPECT_EQ(info, ControlInformationM());
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(WorkedExample, AnUnknownLabel)
{
    EXPECT_EQ(resolve("Other.Run"), 2);
    EXPECT_EQ(info, ControlInformationM());
    EXPECT_EQ(diagnostics.lines(),
              QStringList() << parserLine("get_label_address_info", 539, quoted("Other")));
}

TEST_F(WorkedExample, ALabelAlone)
{
    EXPECT_EQ(resolve("Main"), 11);
    EXPECT_EQ(info, ControlInformationM());
    EXPECT_EQ(diagnostics.lines(), QStringList()
                                       << parserLine("get_label_address_info", 523,
                                                     quotedList(QStringList() << "Main")));
}

TEST_F(WorkedExample, AnEmptyText)
{
    EXPECT_EQ(resolve(""), 6);
    EXPECT_EQ(info, ControlInformationM());
    EXPECT_EQ(diagnostics.lines(), QStringList()
                                       << parserLine("get_label_address_info", 511, quoted("")));
    diagnostics.clear();
    ControlInformationM untouched;
    EXPECT_EQ(get_label_address_info(QString(), untouched), 6);
    EXPECT_EQ(diagnostics.lines(), QStringList()
                                       << parserLine("get_label_address_info", 511, quoted("")));
}

TEST_F(WorkedExample, AWordWithoutABitSuffix)
{
    EXPECT_EQ(resolve("Main.W"), 0);
    EXPECT_EQ(info, parsed(4, 3000, 16));
}

TEST_F(WorkedExample, AnArrayOfStructuresNeedsItsIndex)
{
    EXPECT_EQ(resolve("Main.Axis.Pos"), 3);
    EXPECT_EQ(info, parsed(0, 1000, 0));
    EXPECT_EQ(diagnostics.lines(), QStringList() << treeLine(347));
}

TEST_F(WorkedExample, AnEmptyPartMatchesNoVariable)
{
    EXPECT_EQ(resolve("Main..Run"), 1);
    EXPECT_EQ(info, ControlInformationM());
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(WorkedExample, LinesAreDebugMessages)
{
    resolve("Main.M");
    resolve("");
    EXPECT_EQ(diagnostics.types(), (std::vector<QtMsgType>{QtDebugMsg, QtDebugMsg}));
}

} // namespace
