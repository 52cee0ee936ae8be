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

TEST(Rows, WhatWasNeverReadIsNoValueInAnyFormat)
{
    const ValueRow never = {"a", "M.A", QString(), project::Format::unsignedNumber, std::nullopt};
    const QStringList lines = tableLines({never});
    ASSERT_EQ(2, lines.size());
    EXPECT_EQ("NAME  ADDRESS  VALUE    AGE", lines[0].toStdString());
    EXPECT_EQ("a     M.A      –      never", lines[1].toStdString());
    EXPECT_EQ(R"({"address":"M.A","ageMs":null,"name":"a","value":null})",
              jsonLine(jsonOf(never)).toStdString());
    EXPECT_EQ("T,a,M.A,,", csvLine(never, "T").toStdString());
}

TEST(Rows, AnEmptyTextIsAValue)
{
    const ValueRow empty = {"a", "M.A", "", project::Format::text, 3};
    EXPECT_EQ("a     M.A             3 ms", tableLines({empty})[1].toStdString());
    EXPECT_EQ(R"({"address":"M.A","ageMs":3,"name":"a","value":""})",
              jsonLine(jsonOf(empty)).toStdString());
    EXPECT_EQ("T,a,M.A,,3", csvLine(empty, "T").toStdString());
}

TEST(Rows, AgesGrowFromMillisecondsToMinutes)
{
    for (const auto& [age, text] :
         std::vector<std::pair<qint64, std::string>>{{0, "0 ms"},
                                                     {999, "999 ms"},
                                                     {1000, "1.0 s"},
                                                     {59900, "59.9 s"},
                                                     {60000, "1 min"},
                                                     {119999, "1 min"},
                                                     {7200000, "120 min"}}) {
        const ValueRow row = {"a", "M.A", "1", project::Format::bit, age};
        const std::string line = tableLines({row})[1].toStdString();
        EXPECT_EQ(text, line.substr(line.size() - text.size())) << age;
        EXPECT_EQ(' ', line[line.size() - text.size() - 1]);
    }
}

TEST(Rows, NamesThatCannotBePrintedAreEscapedInTables)
{
    const ValueRow row = {"\x1b[2J", "M.A", "\x07", project::Format::text, 1};
    EXPECT_EQ("\\x1b[2J  M.A      \\x07   1 ms", tableLines({row})[1].toStdString());
}

TEST(Rows, CsvHasAHeadingAndQuotesEveryLineBreak)
{
    EXPECT_EQ("time,name,address,value,age_ms", csvHeading().toStdString());
    const auto value = [](const char* text) {
        return csvLine({"n", "a", text, project::Format::text, 1}, "T").toStdString();
    };
    EXPECT_EQ("T,n,a,\"x\ny\",1", value("x\ny"));
    EXPECT_EQ("T,n,a,\"x\ry\",1", value("x\ry"));
    EXPECT_EQ("T,n,a,\"x,y\",1", value("x,y"));
    EXPECT_EQ("T,n,a,\"\"\"\",1", value("\""));
    EXPECT_EQ("T,n,a,x y,1", value("x y"));
    EXPECT_EQ("T,\"a,b\",a,1,1",
              csvLine({"a,b", "a", "1", project::Format::bit, 1}, "T").toStdString());
}

TEST(Rows, NamesOfOutputFormats)
{
    EXPECT_EQ(OutputFormat::table, outputFormatFromName("table"));
    EXPECT_EQ(OutputFormat::json, outputFormatFromName("json"));
    EXPECT_EQ(OutputFormat::csv, outputFormatFromName("csv"));
    EXPECT_FALSE(outputFormatFromName("CSV"));
    EXPECT_FALSE(outputFormatFromName(""));
}

} // namespace tavmir::host
