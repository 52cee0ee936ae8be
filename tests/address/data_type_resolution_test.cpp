// What each data type code resolves to: width, stride, array members.
#include "support/address_test.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class DataTypeResolution : public AddressTest
{
protected:
    int resolveVariable(const Label_Type_Info& variableInfo, const char* address)
    {
        PLC_driver.labelTable.clear();
        passLabels({label("Main", QList<Label_Type_Info>() << variableInfo)});
        return resolve(address);
    }
};

TEST_F(DataTypeResolution, WidthOfEachCode)
{
    const int codes[4] = {1, 4, 6, 7};
    const int widths[4] = {1, 16, 32, 32};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(resolveVariable(variable("V", codes[i], 640), "Main.V"), 0);
        EXPECT_EQ(info, parsed(codes[i], 640, widths[i]));
    }
}

TEST_F(DataTypeResolution, StrideOfEachCode)
{
    const int codes[5] = {1, 4, 6, 7, 10};
    const int strides[5] = {1, 16, 32, 32, 256};
    for (int i = 0; i < 5; ++i) {
        Label_Type_Info array = arrayVariable("V", codes[i], 640, QList<int>() << 0 << 9);
        if (codes[i] == 10) {
            array.elementSizes << 48;
        }
        EXPECT_EQ(resolveVariable(array, "Main.V[3]"), 0);
        const int width = codes[i] == 10 ? 48 : strides[i];
        EXPECT_EQ(info, parsedElement(codes[i], 640 + 3 * strides[i], width, 3, 9)) << codes[i];
    }
}

TEST_F(DataTypeResolution, ATextTakesItsWidthFromItsFirstElementSize)
{
    Label_Type_Info text = textVariable("T", 640, 48);
    text.elementSizes << 99;
    EXPECT_EQ(resolveVariable(text, "Main.T"), 0);
    EXPECT_EQ(info, parsed(10, 640, 48));
}

TEST_F(DataTypeResolution, ATextWithoutElementSizesHasWidthZero)
{
    EXPECT_EQ(resolveVariable(variable("T", 10, 640), "Main.T"), 0);
    EXPECT_EQ(info, parsed(10, 640, 0));
}

TEST_F(DataTypeResolution, OtherCodesResolveToNothingAndSayNothing)
{
    for (int code = 0; code <= 255; ++code) {
        const bool resolved = code == 1 || code == 4 || code == 6 || code == 7 || code == 10;
        if (resolved || code == 12) {
            continue;
        }
        EXPECT_EQ(resolveVariable(variable("V", code, 640), "Main.V"), 0) << code;
        EXPECT_EQ(info, parsed(0, 640, 0)) << code;
    }
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(DataTypeResolution, AnArrayOfAnotherCodeChecksItsIndexAndSetsNothing)
{
    const Label_Type_Info array = arrayVariable("V", 3, 640, QList<int>() << 0 << 9);
    EXPECT_EQ(resolveVariable(array, "Main.V[3]"), 0);
    EXPECT_EQ(info, parsed(0, 640, 0));
    EXPECT_EQ(resolveVariable(array, "Main.V"), 3);
    EXPECT_EQ(resolveVariable(variable("V", 3, 640), "Main.V[3]"), 1);
    EXPECT_EQ(info, parsed(0, 640, 0));
}

TEST_F(DataTypeResolution, OnlyTheLowByteIsTheCode)
{
    EXPECT_EQ(resolveVariable(variable("V", 0xF804, 640), "Main.V"), 0);
    EXPECT_EQ(info, parsed(4, 640, 16));
}

TEST_F(DataTypeResolution, TrailingPartsBehindAVariableAreIgnored)
{
    EXPECT_EQ(resolveVariable(variable("V", 1, 640), "Main.V.x.y[1]"), 0);
    EXPECT_EQ(info, parsed(1, 640, 1));
}

TEST_F(DataTypeResolution, TheLimitIsTheSizeOfTheLastDimensionWhateverTheIndex)
{
    const Label_Type_Info array = arrayVariable("V", 4, 0, QList<int>() << 2 << 12);
    EXPECT_EQ(resolveVariable(array, "Main.V[2]"), 0);
    EXPECT_EQ(info, parsedElement(4, 0, 16, 0, 10));
    EXPECT_EQ(resolveVariable(array, "Main.V[11]"), 0);
    EXPECT_EQ(info, parsedElement(4, 144, 16, 9, 10));
}

TEST_F(DataTypeResolution, AddressArithmeticWrapsIn32Bits)
{
    const Label_Type_Info array = arrayVariable("V", 6, INT_MAX - 31, QList<int>() << 0 << 9);
    EXPECT_EQ(resolveVariable(array, "Main.V[1]"), 0);
    EXPECT_EQ(info.elementAddress, INT_MIN);
    EXPECT_EQ(resolveVariable(array, "Main.V[2147483647]"), 0);
    EXPECT_EQ(info.elementAddress, static_cast<qint32>(0x7FFFFFE0u + 32u * 0x7FFFFFFFu));
    EXPECT_EQ(info.arrayIndex, INT_MAX);
    EXPECT_EQ(info.elementLimit, 9);
}

TEST_F(DataTypeResolution, ARadix16ArrayReadsHexadecimalIndices)
{
    EXPECT_EQ(resolveVariable(arrayVariable("V", 4, 0, QList<int>() << 0 << 99, 16), "Main.V[1F]"),
              0);
    EXPECT_EQ(info, parsedElement(4, 31 * 16, 16, 31, 99));
}

TEST_F(DataTypeResolution, TheQueryHookAnswersZero)
{
    EXPECT_EQ(get_label_address_query(QStringList(), 0), 0);
    EXPECT_EQ(get_label_address_query(QStringList() << "Main"
                                                    << "V",
                                      1),
              0);
}

} // namespace
