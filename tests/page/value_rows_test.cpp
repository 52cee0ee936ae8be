// What a client gets that knows some look.
#include "page/value_rows.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

std::string since(const ValueRows& rows, quint64 sequence)
{
    std::string out;
    rows.writeSince(sequence, out);
    return out;
}

const ValueQuality kGood = {Quality::good, QString()};

} // namespace

TEST(ValueRows, NothingReadHasADashAndNoTimes)
{
    ValueRows rows;
    rows.reset(1, 1);
    EXPECT_EQ(R"([[0,"–",null,"never","",null,null]])", since(rows, 0));
}

TEST(ValueRows, OnlyWhatIsNewerIsWritten)
{
    ValueRows rows;
    rows.reset(2, 1);
    rows.setValue(1, "7", 7, 1000, 2);
    EXPECT_EQ(R"([[1,"7",7,"never","",null,1000]])", since(rows, 1));
    EXPECT_EQ("[]", since(rows, 2));
}

TEST(ValueRows, AnotherQualityIsAChange)
{
    ValueRows rows;
    rows.reset(1, 1);
    EXPECT_TRUE(rows.setQuality(0, kGood, 500, false, 2));
    EXPECT_EQ(R"([[0,"–",null,"good","",500,null]])", since(rows, 1));
}

TEST(ValueRows, ANewerReadingGoesOutWithARefreshOnly)
{
    ValueRows rows;
    rows.reset(1, 1);
    rows.setQuality(0, kGood, 500, false, 2);
    EXPECT_FALSE(rows.setQuality(0, kGood, 600, false, 3));
    EXPECT_EQ("[]", since(rows, 2));
    EXPECT_FALSE(rows.setQuality(0, kGood, 500, true, 4)) << "nothing is newer";
    EXPECT_TRUE(rows.setQuality(0, kGood, 700, true, 5));
    EXPECT_EQ(R"([[0,"–",null,"good","",700,null]])", since(rows, 2));
}

TEST(ValueRows, AValueThatGoesOutTakesItsReadingAlong)
{
    ValueRows rows;
    rows.reset(1, 1);
    rows.setQuality(0, kGood, 500, false, 2);
    rows.setValue(0, "8", 8, 600, 3);
    EXPECT_TRUE(rows.setQuality(0, kGood, 600, false, 3));
    EXPECT_EQ(R"([[0,"8",8,"good","",600,600]])", since(rows, 2));
}

TEST(ValueRows, AFloatHasNoMoreDigitsThanItNeeds)
{
    ValueRows rows;
    rows.reset(1, 1);
    rows.setValue(0, "0.1", static_cast<double>(0.1F), 1, 1);
    EXPECT_EQ(R"([[0,"0.1",0.1,"never","",null,1]])", since(rows, 0));
}

} // namespace tavmir::host
