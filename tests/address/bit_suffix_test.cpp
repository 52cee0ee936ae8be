// One bit of a word or double word, named by the last part of an address.
#include "support/address_test.h"

using namespace tavmir::test;

namespace
{

class BitSuffix : public AddressTest
{
protected:
    BitSuffix()
    {
        const Label_Type_Info type =
            structureType(QList<Label_Type_Info>() << variable("F", 4 | kBitSuffix, 16));
        passLabels(
            {label("Main", QList<Label_Type_Info>()
                               << variable("W", 4 | kBitSuffix, 3000)
                               << variable("D", 6 | kBitSuffix, 4000) << variable("Plain", 4, 5000)
                               << variable("PlainD", 6, 5100) << variable("U", 7 | kBitSuffix, 6000)
                               << variable("B", 1 | kBitSuffix, 7000) << textVariable("T", 8000, 64)
                               << arrayVariable("A", 4 | kBitSuffix, 9000, QList<int>() << 0 << 9)
                               << structureVariable("S", 10000, type))});
    }
};

TEST_F(BitSuffix, OfAWordAndOfADoubleWord)
{
    EXPECT_EQ(resolve("Main.W.b[5]"), 0);
    EXPECT_EQ(info, parsedBit(4, 3000, 16, 5));
    EXPECT_EQ(resolve("Main.D.b[31]"), 0);
    EXPECT_EQ(info, parsedBit(6, 4000, 32, 31));
}

TEST_F(BitSuffix, AnyTextMayStandBeforeTheBracket)
{
    for (const char* address : {"Main.W.x[7]", "Main.W.some text[7]", "Main.W.][7]",
                                "Main.W.a[1][7]", "Main.W.[3[7]", "Main.W.5[7]"}) {
        EXPECT_EQ(resolve(address), 0);
        EXPECT_EQ(info, parsedBit(4, 3000, 16, 7)) << address;
    }
}

TEST_F(BitSuffix, SomethingMustStandBeforeTheBracket)
{
    EXPECT_EQ(resolve("Main.W.[5]"), 0);
    EXPECT_EQ(info, parsed(4, 3000, 16));
}

TEST_F(BitSuffix, TheClosingBracketMustFollowTheOpeningOne)
{
    for (const char* address : {"Main.W.b]5[", "Main.W.b[5", "Main.W.b5]", "Main.W.b", "Main.W."}) {
        EXPECT_EQ(resolve(address), 0);
        EXPECT_EQ(info, parsed(4, 3000, 16)) << address;
    }
}

TEST_F(BitSuffix, TheLastClosingBracketCounts)
{
    EXPECT_EQ(resolve("Main.W.b[5]]"), 0);
    EXPECT_EQ(info, parsedBit(4, 3000, 16, 0)) << "5] is not a number";
    EXPECT_EQ(resolve("Main.W.b[5]tail"), 0);
    EXPECT_EQ(info, parsedBit(4, 3000, 16, 5));
}

TEST_F(BitSuffix, WhatIsNoDecimalNumberIsBitZero)
{
    for (const char* address : {"Main.W.b[x]", "Main.W.b[]", "Main.W.b[1F]", "Main.W.b[0x1]",
                                "Main.W.b[99999999999]", "Main.W.b[1,2]"}) {
        EXPECT_EQ(resolve(address), 0);
        EXPECT_EQ(info, parsedBit(4, 3000, 16, 0)) << address;
    }
}

TEST_F(BitSuffix, TheNumberIsNotChecked)
{
    EXPECT_EQ(resolve("Main.W.b[16]"), 0);
    EXPECT_EQ(info, parsedBit(4, 3000, 16, 16));
    EXPECT_EQ(resolve("Main.W.b[-1]"), 0);
    EXPECT_EQ(info, parsedBit(4, 3000, 16, -1));
    EXPECT_EQ(resolve("Main.D.b[2147483647]"), 0);
    EXPECT_EQ(info, parsedBit(6, 4000, 32, 2147483647));
}

TEST_F(BitSuffix, MustBeTheLastPart)
{
    EXPECT_EQ(resolve("Main.W.b[5].c"), 0);
    EXPECT_EQ(info, parsed(4, 3000, 16));
    EXPECT_EQ(resolve("Main.W.c.b[5]"), 0);
    EXPECT_EQ(info, parsed(4, 3000, 16));
}

TEST_F(BitSuffix, IsNotReadWithoutItsFlag)
{
    EXPECT_EQ(resolve("Main.Plain.b[5]"), 0);
    EXPECT_EQ(info, parsed(4, 5000, 16));
    EXPECT_EQ(resolve("Main.PlainD.b[5]"), 0);
    EXPECT_EQ(info, parsed(6, 5100, 32));
}

TEST_F(BitSuffix, OtherTypesHaveNone)
{
    EXPECT_EQ(resolve("Main.U.b[5]"), 0);
    EXPECT_EQ(info, parsed(7, 6000, 32));
    EXPECT_EQ(resolve("Main.B.b[5]"), 0);
    EXPECT_EQ(info, parsed(1, 7000, 1));
    EXPECT_EQ(resolve("Main.T.b[5]"), 0);
    EXPECT_EQ(info, parsed(10, 8000, 64));
}

TEST_F(BitSuffix, OfAnArrayElement)
{
    EXPECT_EQ(resolve("Main.A[2].b[3]"), 0);
    ControlInformationM expected = parsedElement(4, 9032, 16, 2, 9);
    expected.bitAccess = 1;
    expected.bitIndex = 3;
    EXPECT_EQ(info, expected);
}

TEST_F(BitSuffix, OfAStructureMember)
{
    EXPECT_EQ(resolve("Main.S.F.b[3]"), 0);
    EXPECT_EQ(info, parsedBit(4, 10016, 16, 3));
}

TEST_F(BitSuffix, IsReadFromThePartBehindTheLastButOneOnly)
{
    const Label_Type_Info word = variable("W", 4 | kBitSuffix, 0);
    const QStringList parts = QStringList() << "Main"
                                            << "W"
                                            << "b[9]";
    ControlInformationM bit;
    get_label_address_2(word, parts, 1, bit);
    EXPECT_EQ(bit, parsedBit(0, 0, 0, 9));
    for (const int partIndex : {0, 2, 3, -1}) {
        ControlInformationM none;
        get_label_address_2(word, parts, partIndex, none);
        EXPECT_EQ(none, ControlInformationM()) << partIndex;
    }
    ControlInformationM none;
    get_label_address_2(variable("W", 4, 0), parts, 1, none);
    EXPECT_EQ(none, ControlInformationM());
    get_label_address_2(word, QStringList(), -2, none);
    EXPECT_EQ(none, ControlInformationM()) << "no part, no suffix";
}

} // namespace
