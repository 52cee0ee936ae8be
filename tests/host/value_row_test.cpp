// Values of the fold as rows, and times and texts as they are shown.
#include "host/value_row.h"

#include "feed/made_exchange.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using project::DataType;
using project::Format;

WallClock::time_point wall(qint64 ms)
{
    return WallClock::time_point(std::chrono::milliseconds(ms));
}

} // namespace

TEST(ValueRow, OfEachVariableInItsOrder)
{
    ValueFold values;
    PolledElement named = madeVariable(DataType::word, 176);
    named.name = "level";
    named.format = Format::hex;
    values.watch({madeVariable(DataType::word, 192), named, madeVariable(DataType::text, 320, 1, 2),
                  madeBitOf(DataType::word, 176, 4)});
    values.take(
        entryOf(madeRead(kReadWords, 1, {{176, 0x12}, {320, 0x4241}, {336, 0x43}}, momentAt(100))));
    const std::vector<ValueRow> rows = rowsOf(values, momentAt(350));
    ASSERT_EQ(4u, rows.size());
    EXPECT_EQ("M.at192", rows[0].name.toStdString());
    EXPECT_EQ("M.at192", rows[0].address.toStdString());
    EXPECT_TRUE(rows[0].value.isNull()) << "never read";
    EXPECT_FALSE(rows[0].ageMs);
    EXPECT_EQ("level", rows[1].name.toStdString());
    EXPECT_EQ("M.at176", rows[1].address.toStdString());
    EXPECT_EQ("0x0012", rows[1].value.toStdString());
    EXPECT_EQ(Format::hex, rows[1].format);
    EXPECT_EQ(250, rows[1].ageMs.value());
    EXPECT_EQ("ABC", rows[2].value.toStdString());
    EXPECT_EQ("1", rows[3].value.toStdString());
    EXPECT_EQ(250, rows[3].ageMs.value());
}

TEST(ValueRow, ATextOfHalfIsNeverRead)
{
    ValueFold values;
    values.watch({madeVariable(DataType::text, 320, 1, 2)});
    values.take(entryOf(madeRead(kReadWords, 1, {{320, 0x4241}}, momentAt(1))));
    EXPECT_TRUE(rowsOf(values, momentAt(2))[0].value.isNull());
}

TEST(ValueRow, AnEmptyTextWasRead)
{
    ValueFold values;
    values.watch({madeVariable(DataType::text, 320, 1, 2)});
    values.take(entryOf(madeRead(kReadWords, 1, {{320, 0}, {336, 0}}, momentAt(1))));
    const ValueRow row = rowsOf(values, momentAt(2))[0];
    EXPECT_FALSE(row.value.isNull());
    EXPECT_TRUE(row.value.isEmpty());
    EXPECT_EQ(1, row.ageMs.value());
}

TEST(ValueRow, AgesAreWholeMillisecondsAndNeverNegative)
{
    ValueFold values;
    values.watch({madeVariable(DataType::word, 160)});
    values.take(entryOf(madeRead(kReadWords, 1, {{160, 1}}, momentAt(10))));
    EXPECT_EQ(0, rowsOf(values, momentAt(10))[0].ageMs.value());
    EXPECT_EQ(0, rowsOf(values, momentAt(11) - Clock::duration(1))[0].ageMs.value());
    EXPECT_EQ(1, rowsOf(values, momentAt(11))[0].ageMs.value());
    EXPECT_EQ(0, rowsOf(values, momentAt(9))[0].ageMs.value());
}

TEST(ValueRow, OfBytes)
{
    const ValueRow row = rowOf(madeVariable(DataType::bit, 3), QByteArray("\1", 1), 17);
    EXPECT_EQ("M.at3", row.name.toStdString());
    EXPECT_EQ("M.at3", row.address.toStdString());
    EXPECT_EQ("1", row.value.toStdString());
    EXPECT_EQ(Format::bit, row.format);
    EXPECT_EQ(17, row.ageMs.value());
    EXPECT_EQ(Quality::good, row.quality);
}

TEST(ValueRow, HasTheQualityOfItsVariable)
{
    ValueFold values(QualityRules{1000, "plant:5020"});
    values.watch({madeVariable(DataType::word, 160), madeVariable(DataType::word, 176)});
    FeedEntry connected;
    connected.kind = FeedKind::connected;
    values.take(connected);
    values.take(entryOf(madeRead(kReadWords, 1, {{160, 1}}, momentAt(10))));
    EXPECT_EQ(Quality::good, rowsOf(values, momentAt(1010))[0].quality);
    EXPECT_EQ("", rowsOf(values, momentAt(1010))[0].reason.toStdString());
    const std::vector<ValueRow> rows = rowsOf(values, momentAt(1011));
    EXPECT_EQ(Quality::stale, rows[0].quality);
    EXPECT_EQ("not read for 1.0 s", rows[0].reason.toStdString());
    EXPECT_EQ("1", rows[0].value.toStdString()) << "the last one that was received";
    EXPECT_EQ(1001, rows[0].ageMs.value());
    EXPECT_EQ(Quality::never, rows[1].quality);
    EXPECT_EQ("no reply has brought it yet", rows[1].reason.toStdString());
}

TEST(ValueRow, WithoutAValueHasAReason)
{
    const ValueRow row = rowWithout(madeVariable(DataType::bit, 3), {Quality::bad, "refused"});
    EXPECT_EQ("M.at3", row.name.toStdString());
    EXPECT_TRUE(row.value.isNull());
    EXPECT_FALSE(row.ageMs);
    EXPECT_EQ(Quality::bad, row.quality);
    EXPECT_EQ("refused", row.reason.toStdString());
}

TEST(ValueRow, WhatCannotBePrintedIsEscaped)
{
    EXPECT_EQ("a b", printable("a b").toStdString());
    EXPECT_EQ("\\x1b[2J\\x0a\\x00", printable(QString("\x1b[2J\n") + QChar(0)).toStdString());
    EXPECT_EQ("ä–", printable("ä–").toStdString());
    EXPECT_EQ("\\x7f\\x9b", printable(QString(QChar(0x7F)) + QChar(0x9B)).toStdString());
    EXPECT_EQ("", printable("").toStdString());
}

TEST(ValueRow, TimesAreUtcWithMilliseconds)
{
    EXPECT_EQ("1970-01-01T00:00:00.000Z", utcText(wall(0)).toStdString());
    EXPECT_EQ("2026-03-01T12:00:00.123Z", utcText(wall(1772366400123)).toStdString());
    EXPECT_EQ("2026-07-01T12:00:00.999Z",
              utcText(wall(1782907200999) + std::chrono::microseconds(999)).toStdString());
}

} // namespace tavmir::host
