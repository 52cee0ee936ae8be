// From an index text to a linear index.
#include "support/address_test.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class ArrayIndex : public AddressTest
{
protected:
    int linear(const char* text, int dimensions, const QList<int>& bounds)
    {
        index = 777;
        end = 888;
        return get_label_address_array_memory_index(QString::fromUtf8(text), dimensions, bounds,
                                                    index, &end);
    }

    // Bounds of 1..3 by 0..4, indices in decimal.
    const QList<int> threeByFive = QList<int>() << 10 << 1 << 3 << 0 << 4;
    unsigned int index = 0;
    unsigned int end = 0;
};

TEST_F(ArrayIndex, OneDimensionCountsFromTheLowBound)
{
    EXPECT_EQ(linear("5", 1, QList<int>() << 10 << 2 << 9), 0);
    EXPECT_EQ(index, 3u);
    EXPECT_EQ(end, 3u + 7) << "index plus high minus low";
}

TEST_F(ArrayIndex, RowMajorWithSizesOfHighMinusLow)
{
    EXPECT_EQ(linear("2,3", 2, threeByFive), 0);
    EXPECT_EQ(index, 1u * 4 + 3);
    EXPECT_EQ(end, 7u + 4);
}

TEST_F(ArrayIndex, ThreeDimensions)
{
    const QList<int> bounds = QList<int>() << 10 << 0 << 2 << 0 << 3 << 0 << 5;
    EXPECT_EQ(linear("1,2,4", 3, bounds), 0);
    EXPECT_EQ(index, 1u * (3 * 5) + 2u * 5 + 4u);
    EXPECT_EQ(end, 29u + 5);
    EXPECT_EQ(linear("2,0,0", 3, bounds), 0);
    EXPECT_EQ(index, 30u) << "the first dimension's own size does not count";
}

TEST_F(ArrayIndex, TheLowBoundItselfIsIndexZero)
{
    EXPECT_EQ(linear("1,0", 2, threeByFive), 0);
    EXPECT_EQ(index, 0u);
    EXPECT_EQ(end, 4u);
}

TEST_F(ArrayIndex, NegativeLowBounds)
{
    EXPECT_EQ(linear("-3", 1, QList<int>() << 10 << -5 << 5), 0);
    EXPECT_EQ(index, 2u);
    EXPECT_EQ(end, 12u);
    EXPECT_EQ(linear("-6", 1, QList<int>() << 10 << -5 << 5), 3);
}

TEST_F(ArrayIndex, NoUpperBoundCheck)
{
    EXPECT_EQ(linear("1000", 1, QList<int>() << 10 << 0 << 3), 0);
    EXPECT_EQ(index, 1000u);
    EXPECT_EQ(end, 1003u);
}

TEST_F(ArrayIndex, TheNumberOfIndicesMustMatch)
{
    for (const char* text : {"", "1", "1,2,3", "1,2,"}) {
        EXPECT_EQ(linear(text, 2, threeByFive), 1) << text;
    }
    EXPECT_EQ(index, 777u);
    EXPECT_EQ(end, 888u);
}

TEST_F(ArrayIndex, NoDimensionsAreRefused)
{
    for (const int dimensions : {0, -1, INT_MIN}) {
        EXPECT_EQ(linear("1", dimensions, threeByFive), 1) << dimensions;
    }
    EXPECT_EQ(linear("", 0, threeByFive), 1);
    EXPECT_EQ(index, 777u);
}

TEST_F(ArrayIndex, WhatIsNoNumberIsRefused)
{
    for (const char* text : {"", "x", "1x", "1.5", "0x1", "2147483648"}) {
        EXPECT_EQ(linear(text, 1, QList<int>() << 10 << 0 << 9), 3) << text;
        EXPECT_EQ(index, 777u);
        EXPECT_EQ(end, 888u);
    }
    EXPECT_EQ(linear("1,", 2, threeByFive), 3);
    EXPECT_EQ(linear(",1", 2, threeByFive), 3);
    EXPECT_EQ(linear("2,-1", 2, threeByFive), 3) << "the second below its low bound";
    EXPECT_EQ(index, 777u);
}

TEST_F(ArrayIndex, BlanksAroundANumberAreThoseThatQtAllows)
{
    EXPECT_EQ(linear(" 4 ", 1, QList<int>() << 10 << 0 << 9), 0);
    EXPECT_EQ(index, 4u);
}

TEST_F(ArrayIndex, TheRadixIsTheFirstBoundsEntry)
{
    EXPECT_EQ(linear("1F", 1, QList<int>() << 16 << 0 << 99), 0);
    EXPECT_EQ(index, 31u);
    EXPECT_EQ(linear("101", 1, QList<int>() << 2 << 0 << 99), 0);
    EXPECT_EQ(index, 5u);
    EXPECT_EQ(linear("17", 1, QList<int>() << 8 << 0 << 99), 0);
    EXPECT_EQ(index, 15u);
    EXPECT_EQ(linear("9", 1, QList<int>() << 8 << 0 << 99), 3);
}

TEST_F(ArrayIndex, ArithmeticWrapsIn32Bits)
{
    EXPECT_EQ(linear("0", 1, QList<int>() << 10 << INT_MIN << 0), 3)
        << "0 minus the lowest number wraps to a negative difference";
    EXPECT_EQ(linear("3,0", 2, QList<int>() << 10 << 0 << 9 << INT_MIN / 2 << INT_MAX), 0);
    // Size of the last dimension 0xBFFFFFFF, its offset 0x40000000.
    EXPECT_EQ(index, 3u * 0xBFFFFFFFu + 0x40000000u);
    EXPECT_EQ(end, 3u * 0xBFFFFFFFu + 0x40000000u + 0xBFFFFFFFu);
}

TEST_F(ArrayIndex, MissingBoundsAreRefused)
{
    for (const int entries : {0, 1, 2, 3, 4}) {
        const QList<int> bounds = threeByFive.mid(0, entries);
        EXPECT_EQ(linear("2,3", 2, bounds), 1) << entries;
    }
    EXPECT_EQ(index, 777u);
    EXPECT_EQ(linear("2,3", 2, threeByFive + (QList<int>() << 99)), 0)
        << "more than needed is fine";
}

TEST_F(ArrayIndex, AHugeNumberOfDimensionsIsRefusedByTheIndexCount)
{
    EXPECT_EQ(linear("1", INT_MAX, threeByFive), 1);
    EXPECT_EQ(linear("1", 0x40000000, threeByFive), 1);
}

TEST_F(ArrayIndex, RadixZeroTakesThePrefixesOfC)
{
    EXPECT_EQ(linear("0x1F", 1, QList<int>() << 0 << 0 << 99), 0);
    EXPECT_EQ(index, 31u);
}

} // namespace
