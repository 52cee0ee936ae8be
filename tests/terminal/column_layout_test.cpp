// Widths shared among columns: nothing beyond the edge, and the value last to go.
#include "terminal/column_layout.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavmir::host
{

namespace
{

const ColumnWidths kUsual = {20, 20, 12, 8, 0};

int sumOf(const ColumnWidths& widths)
{
    int sum = kMarkWidth - kColumnGap;
    for (const int width :
         {widths.name, widths.address, widths.value, widths.age, widths.quality}) {
        sum += width > 0 ? width + kColumnGap : 0;
    }
    return sum;
}

} // namespace

TEST(ColumnLayout, OnAWideScreenEachColumnHasWhatItNeeds)
{
    const ColumnWidths widths = shareWidth(kUsual, 80);
    EXPECT_EQ(20, widths.name);
    EXPECT_EQ(20, widths.address);
    EXPECT_EQ(12, widths.value);
    EXPECT_EQ(8, widths.age);
    EXPECT_EQ(0, widths.quality);
}

TEST(ColumnLayout, AColumnWithoutNeedIsLeftOut)
{
    EXPECT_EQ(0, shareWidth({0, 20, 12, 8, 0}, 80).name);
    EXPECT_EQ(0, shareWidth(kUsual, 200).quality);
}

TEST(ColumnLayout, TheReasonGetsTheRest)
{
    EXPECT_EQ(100 - 2 - 22 - 22 - 14 - 10, shareWidth({20, 20, 12, 8, 60}, 100).quality);
    EXPECT_EQ(0, shareWidth({20, 20, 12, 8, 60}, 76).quality) << "too little to be read";
}

TEST(ColumnLayout, ALongValueLeavesRoomForTheReason)
{
    const ColumnWidths widths = shareWidth({0, 10, 500, 8, 60}, 100);
    EXPECT_GT(widths.value, 40);
    EXPECT_GE(widths.quality, 24);
}

TEST(ColumnLayout, FortyColumnsShowAddressValueAndAge)
{
    const ColumnWidths widths = shareWidth({30, 30, 30, 8, 60}, 40);
    EXPECT_EQ(0, widths.name);
    EXPECT_GE(widths.address, 10);
    EXPECT_GE(widths.value, 8);
    EXPECT_EQ(8, widths.age);
    EXPECT_EQ(0, widths.quality);
}

TEST(ColumnLayout, TheValueIsTheLastToGo)
{
    const ColumnWidths widths = shareWidth({30, 30, 30, 8, 60}, 26);
    EXPECT_EQ(0, widths.age);
    EXPECT_GE(widths.value, 8);
    EXPECT_EQ(8, shareWidth({30, 30, 30, 8, 60}, 14).value);
}

TEST(ColumnLayout, NeverReachesBeyondTheEdge)
{
    for (int width = 3; width < 200; ++width) {
        for (const int need : {1, 5, 9, 17, 40, 300}) {
            const ColumnWidths needs = {need, 2 * need, 3 * need, std::min(need, 9), 4 * need};
            EXPECT_LE(sumOf(shareWidth(needs, width)), width) << width << " for " << need;
        }
    }
}

} // namespace tavmir::host
