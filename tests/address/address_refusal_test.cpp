// Address texts that are refused, and how brackets are split off.
#include "support/address_test.h"

using namespace tavmir::test;

namespace
{

class AddressRefusal : public AddressTest
{
protected:
    AddressRefusal() { passLabels({mainLabel()}); }

    static QString infoLine(int number, const LineItem& payload)
    {
        return parserLine("get_label_address_info", number, payload);
    }
};

TEST_F(AddressRefusal, NamesAreComparedExactly)
{
    for (const char* address : {"main.Run", "MAIN.Run", " Main.Run", "Main .Run"}) {
        EXPECT_EQ(resolve(address), 2) << address;
    }
    for (const char* address : {"Main.run", "Main. Run", "Main.Run ", "Main.RUN", "Main.Runn"}) {
        EXPECT_EQ(resolve(address), 1) << address;
    }
}

TEST_F(AddressRefusal, AnUnknownLabelIsLoggedWithoutItsSuffix)
{
    EXPECT_EQ(resolve("Other[3].Run"), 2);
    EXPECT_EQ(diagnostics.lines(), QStringList() << infoLine(539, quoted("Other")));
}

TEST_F(AddressRefusal, ALabelWithoutVariableTypeIsLogged)
{
    passLabels({variable("Empty", 0, 0)});
    EXPECT_EQ(resolve("Empty[1].V"), 10);
    EXPECT_EQ(info, ControlInformationM());
    EXPECT_EQ(diagnostics.lines(), QStringList() << infoLine(547, quoted("Empty")));
}

TEST_F(AddressRefusal, AnEmptyLabelNameIsLookedUpLikeAnyOther)
{
    EXPECT_EQ(resolve(".Run"), 2);
    EXPECT_EQ(diagnostics.lines(), QStringList() << infoLine(539, quoted("")));
    EXPECT_EQ(resolve("."), 2);
    passLabels({label("", QList<Label_Type_Info>() << variable("Run", 1, 9))});
    EXPECT_EQ(resolve(".Run"), 0);
    EXPECT_EQ(info, parsed(1, 9, 1));
}

TEST_F(AddressRefusal, AQuoteInALabelIsLoggedAsTheStreamPrintsIt)
{
    EXPECT_EQ(resolve("Ma\"in\\.Run"), 2);
    EXPECT_EQ(diagnostics.lines(), QStringList() << infoLine(539, quoted("Ma\"in\\")));
    diagnostics.clear();
    EXPECT_EQ(resolve("Ma\"in"), 11);
    EXPECT_EQ(diagnostics.lines(), QStringList()
                                       << infoLine(523, quotedList(QStringList() << "Ma\"in")));
}

TEST_F(AddressRefusal, TheClosingBracketIsNotSearched)
{
    // The label part loses everything from its last opening bracket on.
    for (const char* address : {"Main[1]yz.Run", "Main[1]].Run", "Main[].Run", "Main[]x.Run"}) {
        EXPECT_EQ(resolve(address), 0) << address;
    }
    EXPECT_EQ(resolve("Main[1.Run"), 2) << "one bracket alone is part of the name";
}

TEST_F(AddressRefusal, AClosingBracketBeforeTheOpeningOneSplitsToo)
{
    passLabels({label("Main]1", QList<Label_Type_Info>() << variable("Run", 1, 9))});
    EXPECT_EQ(resolve("Main]1[.Run"), 0);
    EXPECT_EQ(info, parsed(1, 9, 1));
}

TEST_F(AddressRefusal, TheIndexTextLosesItsLastCharacterWhateverItIs)
{
    // "M[2,3x]y": from behind the bracket to the last but one character, "2,3x]" is no index.
    EXPECT_EQ(resolve("Main.M[2,3x]y"), 3);
    // "M[2,3y" has no closing bracket: the whole part is the name.
    EXPECT_EQ(resolve("Main.M[2,3y"), 1);
    // "M]2[2,34": both brackets, the name is "M]2".
    EXPECT_EQ(resolve("Main.M]2[2,34"), 1);
    // "Axis][14": name "Axis]".
    EXPECT_EQ(resolve("Main.Axis][14"), 1);
}

TEST_F(AddressRefusal, TheLastOpeningBracketSplits)
{
    passLabels({label("L", QList<Label_Type_Info>()
                               << arrayVariable("A[0]", 4, 0, QList<int>() << 0 << 9))});
    EXPECT_EQ(resolve("L.A[0][3]"), 0);
    EXPECT_EQ(info, parsedElement(4, 48, 16, 3, 9));
}

TEST_F(AddressRefusal, ABracketAtTheEndOfAPartGivesAnEmptyIndex)
{
    passLabels({label("L", QList<Label_Type_Info>()
                               << arrayVariable("]A", 4, 0, QList<int>() << 0 << 9))});
    EXPECT_EQ(resolve("L.]A["), 3);
    EXPECT_EQ(info, parsed(0, 0, 0));
}

TEST_F(AddressRefusal, LabelNamesWithDotsOrBracketPairsAreNeverFound)
{
    passLabels({label("A.B", QList<Label_Type_Info>() << variable("V", 1, 9)),
                label("C[1]", QList<Label_Type_Info>() << variable("V", 1, 9)),
                label("D[", QList<Label_Type_Info>() << variable("V", 1, 9))});
    EXPECT_EQ(resolve("A.B.V"), 2);
    EXPECT_EQ(resolve("C[1].V"), 2);
    EXPECT_EQ(resolve("D[.V"), 0) << "one bracket alone is no suffix";
}

TEST_F(AddressRefusal, OnAFoundVariableTheOffsetReplacesWhatTheRecordHeld)
{
    ControlInformationM dirty;
    dirty.elementAddress = 99999;
    EXPECT_EQ(get_label_address_info("Main.Run", dirty), 0);
    EXPECT_EQ(dirty.elementAddress, 100);
}

TEST_F(AddressRefusal, TheParserNeverClearsTheRecord)
{
    ControlInformationM dirty;
    dirty.bitAccess = 1;
    dirty.bitIndex = 9;
    dirty.arrayBase = 4;
    dirty.elementLimit = 5;
    EXPECT_EQ(get_label_address_info("Main.Run", dirty), 0);
    EXPECT_EQ(dirty.bitIndex, 9);
    EXPECT_EQ(dirty.arrayBase, 4);
    EXPECT_EQ(dirty.elementLimit, 5);
    EXPECT_EQ(get_label_address_info("Main.M[1,0]", dirty), 0);
    EXPECT_EQ(dirty.arrayBase, 0) << "set for an array element";
}

TEST_F(AddressRefusal, TheVariablesTypeNeedsNoStructureBit)
{
    Label_Type_Info odd = label("Odd", QList<Label_Type_Info>() << variable("V", 4, 16));
    odd.elementType[0].typeFlags = 0;
    passLabels({odd});
    EXPECT_EQ(resolve("Odd.V"), 0);
    EXPECT_EQ(info, parsed(4, 16, 16));
}

TEST_F(AddressRefusal, VariablesBeyondTheMemberCountAreNotFound)
{
    Label_Type_Info few =
        label("Few", QList<Label_Type_Info>() << variable("A", 1, 1) << variable("B", 1, 2));
    few.elementType[0].memberCount = 1;
    passLabels({few});
    EXPECT_EQ(resolve("Few.A"), 0);
    EXPECT_EQ(resolve("Few.B"), 1);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(AddressRefusal, TheFirstOfEqualVariableNamesIsFound)
{
    passLabels(
        {label("Two", QList<Label_Type_Info>() << variable("V", 1, 1) << variable("V", 4, 2))});
    EXPECT_EQ(resolve("Two.V"), 0);
    EXPECT_EQ(info, parsed(1, 1, 1));
}

TEST_F(AddressRefusal, ParsingChangesNoLabel)
{
    const int before = PLC_driver.labelTable.size();
    for (const char* address : {"Main.Run", "Nope.Run", "Main.M[1,1]", "", "Main"}) {
        resolve(address);
    }
    EXPECT_EQ(PLC_driver.labelTable.size(), before);
    EXPECT_FALSE(PLC_driver.labelTable.contains("Nope"));
}

} // namespace
