// Values as rows of a table, JSON and CSV.
#include "host/row_formats.h"

#include <gtest/gtest.h>

#include <tuple>

namespace tavmir::host
{

namespace
{

using project::Format;

ValueRow good(const QString& value, Format format = Format::unsignedNumber,
              std::optional<qint64> ageMs = 7)
{
    return {"n", "a", value, format, ageMs, Quality::good, QString()};
}

ValueRow marked(Quality quality, const QString& value = "12")
{
    return {"n", "a", value, Format::unsignedNumber, 7, quality, "why"};
}

const ValueRow kNever = {"a",          "M.A",          QString(),     Format::unsignedNumber,
                         std::nullopt, Quality::never, "nothing came"};

} // namespace

TEST(Rows, TableHasColumnsAndAges)
{
    std::vector<ValueRow> rows(4);
    rows[0] = {"a", "Main.A", "12", Format::unsignedNumber, 5, Quality::good};
    rows[1] = {"long name", "Main.B", "x\ny", Format::text, 1500, Quality::good};
    rows[2] = {"c", "M.C", "1", Format::bit, 65000, Quality::stale, "not read"};
    rows[3] = {"d", "M.D", "1", Format::bit, 180000, Quality::good};
    const QStringList lines = tableLines(rows);
    ASSERT_EQ(5, lines.size());
    EXPECT_EQ("NAME       ADDRESS  VALUE     AGE  QUALITY", lines[0].toStdString());
    EXPECT_EQ("a          Main.A   12       5 ms", lines[1].toStdString());
    EXPECT_EQ("long name  Main.B   x\\x0ay  1.5 s", lines[2].toStdString());
    EXPECT_EQ("c          M.C      1 ~     1 min  stale: not read", lines[3].toStdString());
    EXPECT_EQ("d          M.D      1       3 min", lines[4].toStdString());
}

TEST(Rows, NothingThatIsNotGoodLooksLikeAReading)
{
    for (const auto& [quality, value, words] :
         std::vector<std::tuple<Quality, std::string, std::string>>{
             {Quality::stale, "12 ~", "stale: why"},
             {Quality::bad, "12 !", "bad: why"},
             {Quality::unconfirmed, "12 ?", "unconfirmed: why"}}) {
        const ValueRow row = marked(quality);
        EXPECT_EQ(value, markedValue(row).toStdString());
        EXPECT_EQ("n     a        " + value + "   7 ms  " + words,
                  tableLines({row})[1].toStdString());
        EXPECT_EQ("a = " + value + " (" + words + ")", assignmentLine(row).toStdString());
        EXPECT_EQ(qualityWord(quality), jsonOf(row)["quality"].toString().toStdString());
        EXPECT_EQ("why", jsonOf(row)["reason"].toString().toStdString());
        EXPECT_EQ(std::string("T,n,a,12,7,") + qualityWord(quality) + ",why",
                  csvLine(row, "T").toStdString());
    }
    EXPECT_EQ("a = 12", assignmentLine(good("12")).toStdString());
    EXPECT_EQ("–", markedValue(marked(Quality::bad, QString())).left(1).toStdString());
}

TEST(Rows, ColoursAreForValuesThatAreNotGoodAndOnlyWhenWanted)
{
    const auto shown = [](const ValueRow& row, bool colours) {
        return tableLines({row}, colours)[1].toStdString();
    };
    EXPECT_EQ("n     a        \x1b[31m12 ! \x1b[0m  7 ms  bad: why",
              shown(marked(Quality::bad), true));
    EXPECT_EQ("n     a        \x1b[2m12 ~ \x1b[0m  7 ms  stale: why",
              shown(marked(Quality::stale), true));
    EXPECT_EQ("n     a        \x1b[33m12 ? \x1b[0m  7 ms  unconfirmed: why",
              shown(marked(Quality::unconfirmed), true));
    EXPECT_EQ("n     a        12     7 ms", shown(good("12"), true));
    EXPECT_EQ("a = \x1b[31m12 !\x1b[0m (bad: why)",
              assignmentLine(marked(Quality::bad), true).toStdString());
    for (const Quality quality : {Quality::stale, Quality::bad, Quality::unconfirmed}) {
        EXPECT_EQ(std::string::npos, shown(marked(quality), false).find('\x1b'));
    }
}

TEST(Rows, JsonKeepsNumbersAndTextsApart)
{
    const auto json = [](const char* value, Format format) {
        return jsonLine(jsonOf(good(value, format))).toStdString();
    };
    const auto with = [](const std::string& value) {
        return R"({"address":"a","ageMs":7,"name":"n","quality":"good","reason":null,"value":)" +
               value + "}";
    };
    EXPECT_EQ(with("-12"), json("-12", Format::signedNumber));
    EXPECT_EQ(with("\"0x12\""), json("0x12", Format::hex));
    EXPECT_EQ(with("\"12\""), json("12", Format::text));
    EXPECT_EQ(with("1.5"), json("1.5", Format::floating));
    EXPECT_EQ(with("\"nan\""), json("nan", Format::floating));
    EXPECT_TRUE(jsonOf(good("1", Format::bit, std::nullopt))["ageMs"].isNull());
}

TEST(Rows, CsvQuotesWhatNeedsIt)
{
    EXPECT_EQ("T,n,\"M[1,2]\",\"a\"\"b\",7,bad,\"one, two\"",
              csvLine({"n", "M[1,2]", "a\"b", Format::text, 7, Quality::bad, "one, two"}, "T")
                  .toStdString());
    EXPECT_EQ("T,n,a,1,,good,", csvLine(good("1", Format::bit, std::nullopt), "T").toStdString());
}

TEST(Rows, WhatWasNeverReadIsNoValueInAnyFormat)
{
    const QStringList lines = tableLines({kNever});
    ASSERT_EQ(2, lines.size());
    EXPECT_EQ("NAME  ADDRESS  VALUE    AGE  QUALITY", lines[0].toStdString());
    EXPECT_EQ("a     M.A      –      never  never: nothing came", lines[1].toStdString());
    EXPECT_EQ(R"({"address":"M.A","ageMs":null,"name":"a","quality":"never",)"
              R"("reason":"nothing came","value":null})",
              jsonLine(jsonOf(kNever)).toStdString());
    EXPECT_EQ("T,a,M.A,,,never,nothing came", csvLine(kNever, "T").toStdString());
    EXPECT_EQ("M.A = – (never: nothing came)", assignmentLine(kNever).toStdString());
}

TEST(Rows, AnEmptyTextIsAValue)
{
    const ValueRow empty = {"a", "M.A", "", Format::text, 3, Quality::good};
    EXPECT_EQ("a     M.A             3 ms", tableLines({empty})[1].toStdString());
    EXPECT_EQ(R"({"address":"M.A","ageMs":3,"name":"a","quality":"good","reason":null,"value":""})",
              jsonLine(jsonOf(empty)).toStdString());
    EXPECT_EQ("T,a,M.A,,3,good,", csvLine(empty, "T").toStdString());
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
        const std::string line = tableLines({good("1", Format::bit, age)})[1].toStdString();
        EXPECT_EQ(text, line.substr(line.size() - text.size())) << age;
        EXPECT_EQ(' ', line[line.size() - text.size() - 1]);
    }
}

TEST(Rows, WhatCannotBePrintedIsEscapedInTables)
{
    ValueRow row = {"\x1b[2J", "M.A", "\x07", Format::text, 1, Quality::bad, "\x1b[31m"};
    EXPECT_EQ("\\x1b[2J  M.A      \\x07 !  1 ms  bad: \\x1b[31m",
              tableLines({row})[1].toStdString());
}

TEST(Rows, CsvHasAHeadingAndQuotesEveryLineBreak)
{
    EXPECT_EQ("time,name,address,value,age_ms,quality,reason", csvHeading().toStdString());
    const auto value = [](const char* text) {
        return csvLine(good(text, Format::text), "T").toStdString();
    };
    EXPECT_EQ("T,n,a,\"x\ny\",7,good,", value("x\ny"));
    EXPECT_EQ("T,n,a,\"x\ry\",7,good,", value("x\ry"));
    EXPECT_EQ("T,n,a,\"x,y\",7,good,", value("x,y"));
    EXPECT_EQ("T,n,a,\"\"\"\",7,good,", value("\""));
    EXPECT_EQ("T,n,a,x y,7,good,", value("x y"));
    EXPECT_EQ("T,\"a,b\",a,1,1,good,",
              csvLine({"a,b", "a", "1", Format::bit, 1, Quality::good}, "T").toStdString());
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
