// Rows of an export.
#include "host/export_rows.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using recorder::ExportCell;
using recorder::RecordedValue;
using recorder::RecordedVariable;

constexpr recorder::Micros kAt = 1767225600123456; // 2026-01-01T00:00:00.123456Z

RecordedVariable variableOf(const char* address, const char* type, const char* format)
{
    RecordedVariable variable;
    variable.address = address;
    variable.name = "name";
    variable.type = type;
    variable.format = format;
    return variable;
}

ExportCell cellOf(const RecordedVariable& variable, const RecordedValue& value,
                  Quality quality = Quality::good, const char* reason = "")
{
    return {value, recorder::textOf(variable, value), {quality, reason}};
}

} // namespace

TEST(ExportRows, TextsThatBeginAsFormulasAreQuoted)
{
    EXPECT_EQ(textCell("=1+2"), "'=1+2");
    EXPECT_EQ(textCell("+1"), "'+1");
    EXPECT_EQ(textCell("-1"), "'-1");
    EXPECT_EQ(textCell("@x"), "'@x");
    EXPECT_EQ(textCell("\t1"), "'\t1");
    EXPECT_EQ(textCell("\r1"), "\"'\r1\"");
    EXPECT_EQ(textCell("'1"), "''1");
    EXPECT_EQ(textCell("=a,\"b\""), "\"'=a,\"\"b\"\"\"");
    EXPECT_EQ(textCell("1=1"), "1=1");
    EXPECT_EQ(textCell(""), "");
}

TEST(ExportRows, NumbersStayNumbers)
{
    const RecordedVariable variable = variableOf("A", "word", "signed");
    EXPECT_EQ(longRow(kAt, variable, cellOf(variable, RecordedValue::of(qint64(-5)))),
              "2026-01-01T00:00:00.123Z,A,-5,-5,good,");
}

TEST(ExportRows, HexadecimalNumbersAreDecimalToo)
{
    const RecordedVariable word = variableOf("A", "word", "hex");
    EXPECT_EQ(longRow(kAt, word, cellOf(word, RecordedValue::of(qint64(31)))),
              "2026-01-01T00:00:00.123Z,A,0x001F,31,good,");
    const RecordedVariable real = variableOf("R", "real", "hex");
    EXPECT_EQ(longRow(kAt, real, cellOf(real, RecordedValue::of(1.5))),
              "2026-01-01T00:00:00.123Z,R,0x3FC00000,1.5,good,");
}

TEST(ExportRows, WhatIsNotGoodSaysWhy)
{
    const RecordedVariable raw = variableOf("@word:16", "word", "unsigned");
    EXPECT_EQ(longRow(kAt, raw,
                      cellOf(raw, RecordedValue::of(qint64(1)), Quality::bad, "refused, code 2")),
              "2026-01-01T00:00:00.123Z,'@word:16,1,1,bad,\"refused, code 2\"");
    EXPECT_EQ(longRow(kAt, raw, cellOf(raw, RecordedValue(), Quality::never, "why")),
              "2026-01-01T00:00:00.123Z,'@word:16,,,never,why");
}

TEST(ExportRows, AWideRowHasEmptyCellsForWhatIsNotGood)
{
    const std::vector<RecordedVariable> columns = {variableOf("A", "word", "signed"),
                                                   variableOf("B", "text", "text")};
    EXPECT_EQ(wideHeading(columns), "time,A,B");
    EXPECT_EQ(wideRow(kAt, columns,
                      {cellOf(columns[0], RecordedValue::of(qint64(-5)), Quality::stale),
                       cellOf(columns[1], RecordedValue::of(QString("=x")))}),
              "2026-01-01T00:00:00.123Z,,'=x");
}

TEST(ExportRows, ColumnsOfOneAddressAreToldApart)
{
    EXPECT_EQ(wideHeading({variableOf("A", "word", "signed"), variableOf("A", "word", "hex")}),
              "time,\"A (name, signed)\",\"A (name, hex)\"");
}

} // namespace tavmir::host
