// Values as rows of a table, JSON and CSV.
#include "host/row_formats.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

TEST(Rows, TableHasColumnsAndAges)
{
    std::vector<ValueRow> rows(4);
    rows[0] = {"a", "Main.A", "12", project::Format::unsignedNumber, 5};
    rows[1] = {"long name", "Main.B", "x\ny", project::Format::text, 1500};
    rows[2] = {"c", "M.C", "1", project::Format::bit, std::nullopt};
    rows[3] = {"d", "M.D", "1", project::Format::bit, 180000};
    const QStringList lines = tableLines(rows);
    ASSERT_EQ(5, lines.size());
    EXPECT_EQ("NAME       ADDRESS  VALUE     AGE", lines[0].toStdString());
    EXPECT_EQ("a          Main.A   12       5 ms", lines[1].toStdString());
    EXPECT_EQ("long name  Main.B   x\\x0ay  1.5 s", lines[2].toStdString());
    EXPECT_EQ("c          M.C      1       never", lines[3].toStdString());
    EXPECT_EQ("d          M.D      1       3 min", lines[4].toStdString());
}

TEST(Rows, JsonKeepsNumbersAndTextsApart)
{
    const auto json = [](const char* value, project::Format format) {
        return jsonLine(jsonOf({"n", "a", value, format, 7})).toStdString();
    };
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":-12})",
              json("-12", project::Format::signedNumber));
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":"0x12"})",
              json("0x12", project::Format::hex));
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":"12"})",
              json("12", project::Format::text));
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":1.5})",
              json("1.5", project::Format::floating));
    EXPECT_EQ(R"({"address":"a","ageMs":7,"name":"n","value":"nan"})",
              json("nan", project::Format::floating));
    EXPECT_TRUE(jsonOf({"n", "a", "1", project::Format::bit, std::nullopt})["ageMs"].isNull());
}

TEST(Rows, CsvQuotesWhatNeedsIt)
{
    EXPECT_EQ("T,n,\"M[1,2]\",\"a\"\"b\",7",
              csvLine({"n", "M[1,2]", "a\"b", project::Format::text, 7}, "T").toStdString());
    EXPECT_EQ("T,n,a,1,",
              csvLine({"n", "a", "1", project::Format::bit, std::nullopt}, "T").toStdString());
}

} // namespace tavmir::host
