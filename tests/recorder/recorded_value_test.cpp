// Values as they are kept, and as they are shown again.
#include "recorder/recorded_value.h"

#include "feed/made_exchange.h"
#include "project/value_format.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tavmir::recorder
{

namespace
{

using project::DataType;
using project::Format;

host::PolledElement variableOf(DataType type, Format format, int words = 0)
{
    host::PolledElement variable = host::madeVariable(type, 1600, 1, words);
    variable.format = format;
    return variable;
}

// Kept and shown again.
QString shownAgain(const host::PolledElement& variable, const QByteArray& bytes)
{
    return textOf(recordedVariable(variable), recordedValue(variable, bytes));
}

} // namespace

TEST(RecordedValue, WholeNumbersAreKeptAsTheyAreMeant)
{
    const QByteArray bytes("\xFB\xFF", 2);
    EXPECT_EQ(recordedValue(variableOf(DataType::word, Format::signedNumber), bytes).integer, -5);
    EXPECT_EQ(recordedValue(variableOf(DataType::word, Format::unsignedNumber), bytes).integer,
              65531);
    EXPECT_EQ(recordedValue(variableOf(DataType::dword, Format::signedNumber),
                            QByteArray("\xFB\xFF\xFF\xFF", 4))
                  .integer,
              -5);
}

TEST(RecordedValue, IsShownAsTheProjectShowsIt)
{
    const struct {
        DataType type;
        Format format;
        QByteArray bytes;
    } cases[] = {{DataType::bit, Format::bit, QByteArray("\1", 1)},
                 {DataType::word, Format::signedNumber, QByteArray("\xFB\xFF", 2)},
                 {DataType::word, Format::hex, QByteArray("\x1F\0", 2)},
                 {DataType::dword, Format::unsignedNumber, QByteArray("\xFF\xFF\xFF\xFF", 4)},
                 {DataType::dword, Format::hex, QByteArray("\x1F\0\0\x80", 4)},
                 {DataType::dword, Format::floating, QByteArray("\0\0\xC0\xBF", 4)},
                 {DataType::real, Format::floating, QByteArray("\xCD\xCC\xCC\x3D", 4)},
                 {DataType::real, Format::floating, QByteArray("\0\0\x80\x7F", 4)},
                 {DataType::real, Format::floating, QByteArray("\0\0\xC0\x7F", 4)},
                 {DataType::real, Format::hex, QByteArray("\0\0\xC0\x7F", 4)},
                 {DataType::text, Format::text, QByteArray("a\xE4=1", 4)}};
    for (const auto& one : cases) {
        const host::PolledElement variable = variableOf(one.type, one.format, 2);
        EXPECT_EQ(shownAgain(variable, one.bytes),
                  project::decodeValue(variable.element, one.format, one.bytes))
            << one.bytes.toHex().toStdString();
    }
}

TEST(RecordedValue, ABitOfAWordIsABit)
{
    const host::PolledElement bit = host::madeBitOf(DataType::word, 1600, 9);
    EXPECT_EQ(recordedVariable(bit).type, "bit");
    EXPECT_EQ(recordedValue(bit, QByteArray("\1", 1)).integer, 1);
}

TEST(RecordedValue, WhatIsNoNumberIsNotOne)
{
    EXPECT_FALSE(numberOf(RecordedValue::of(std::nan(""))).has_value());
    EXPECT_FALSE(numberOf(RecordedValue::of(QString("12"))).has_value());
    EXPECT_EQ(numberOf(RecordedValue::of(qint64(12))), 12.0);
    EXPECT_TRUE(recordedValue(variableOf(DataType::word, Format::hex), QByteArray()).isNone());
}

} // namespace tavmir::recorder
