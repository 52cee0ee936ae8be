// Which rows a filter leaves, and the orders.
#include "terminal/row_order.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using Places = std::vector<size_t>;

TableRow named(const QString& name, const QString& address = "M.x")
{
    TableRow row;
    row.name = name;
    row.address = address;
    return row;
}

TableRow aged(std::optional<qint64> ms)
{
    TableRow row;
    row.ageMs = ms;
    return row;
}

TableRow judged(Quality quality)
{
    TableRow row;
    row.quality = quality;
    return row;
}

bool isBefore(const char* left, const char* right)
{
    return compareNames(left, right) < 0 && compareNames(right, left) > 0;
}

} // namespace

TEST(RowOrder, AFilterLooksAtNamesAndAddressesWhateverTheCase)
{
    const std::vector<TableRow> rows = {named("Speed", "M.a"), named("Level", "M.Speed"),
                                        named("Level", "M.b")};
    EXPECT_EQ((Places{0, 1, 2}), shownRows(rows, "", RowOrder()));
    EXPECT_EQ((Places{0, 1}), shownRows(rows, "spee", RowOrder()));
    EXPECT_EQ((Places{2}), shownRows(rows, "M.B", RowOrder()));
    EXPECT_EQ(Places(), shownRows(rows, "none", RowOrder()));
}

TEST(RowOrder, NumbersInNamesAreComparedByValue)
{
    EXPECT_TRUE(isBefore("a[2]", "a[10]"));
    EXPECT_TRUE(isBefore("a[2].z", "a[10].b"));
    EXPECT_TRUE(isBefore("a9", "a10b"));
    EXPECT_TRUE(isBefore("Alpha", "beta"));
    EXPECT_TRUE(isBefore("a", "ab"));
    EXPECT_TRUE(isBefore("12345678901234567890", "12345678901234567891"));
    EXPECT_EQ(0, compareNames("A[02]", "a[2]"));
}

TEST(RowOrder, ByNameThenByAddress)
{
    const std::vector<TableRow> rows = {named("b", "M.1"), named("a", "M.10"), named("a", "M.9")};
    EXPECT_EQ((Places{2, 1, 0}), shownRows(rows, "", {SortBy::name, false}));
    EXPECT_EQ((Places{0, 1, 2}), shownRows(rows, "", {SortBy::name, true}));
}

TEST(RowOrder, ByAgeNeverReadComesFirstThenTheOldest)
{
    const std::vector<TableRow> rows = {aged(1500), aged(std::nullopt), aged(9000), aged(0)};
    EXPECT_EQ((Places{1, 2, 0, 3}), shownRows(rows, "", {SortBy::age, false}));
    EXPECT_EQ((Places{3, 0, 2, 1}), shownRows(rows, "", {SortBy::age, true}));
}

TEST(RowOrder, AgesBelowASecondDoNotMoveRows)
{
    const std::vector<TableRow> rows = {aged(5), aged(999), aged(20)};
    EXPECT_EQ((Places{0, 1, 2}), shownRows(rows, "", {SortBy::age, false}));
    EXPECT_EQ((Places{0, 1, 2}), shownRows(rows, "", {SortBy::age, true}));
}

TEST(RowOrder, ByQualityTheWorstComesFirst)
{
    const std::vector<TableRow> rows = {judged(Quality::good), judged(Quality::never),
                                        judged(Quality::stale), judged(Quality::unconfirmed),
                                        judged(Quality::bad)};
    EXPECT_EQ((Places{4, 3, 2, 1, 0}), shownRows(rows, "", {SortBy::quality, false}));
}

TEST(RowOrder, IsSaidInWords)
{
    EXPECT_EQ("", orderInWords(RowOrder()).toStdString());
    EXPECT_EQ("by name", orderInWords({SortBy::name, false}).toStdString());
    EXPECT_EQ("by age", orderInWords({SortBy::age, true}).toStdString());
    EXPECT_EQ("by quality", orderInWords({SortBy::quality, false}).toStdString());
}

} // namespace tavmir::host
