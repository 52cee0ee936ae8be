// The function table, exception codes in words, and numbers out of bytes.
#include "wire/frame_layout.h"

#include "frames.h"

#include <gtest/gtest.h>

namespace tavmir::wire
{

using namespace tavmir::test;

TEST(FrameLayout, EachFunctionCodeSaysHowItsEntriesLook)
{
    const struct {
        int code;
        bool write;
        ElementClass elements;
        int bits;
        std::size_t entryBytes, requestEntryBytes;
        const char* words;
    } expected[] = {
        {100, false, ElementClass::bits, 1, 5, 4, "read bits"},
        {101, true, ElementClass::bits, 1, 5, 5, "write bits"},
        {102, false, ElementClass::words, 16, 6, 4, "read words"},
        {103, true, ElementClass::words, 16, 6, 6, "write words"},
        {108, false, ElementClass::doubleWords, 32, 8, 4, "read double words"},
        {109, true, ElementClass::doubleWords, 32, 8, 8, "write double words"},
    };
    for (const auto& row : expected) {
        const FunctionCode* function = findFunctionCode(static_cast<std::uint8_t>(row.code));
        ASSERT_NE(nullptr, function) << row.code;
        EXPECT_EQ(row.code, function->code);
        EXPECT_EQ(row.write, function->write);
        EXPECT_EQ(row.elements, function->elements);
        EXPECT_EQ(row.bits, function->valueBits);
        EXPECT_EQ(row.entryBytes, function->entryBytes());
        EXPECT_EQ(row.requestEntryBytes, function->requestEntryBytes());
        EXPECT_STREQ(row.words, function->words);
    }
}

TEST(FrameLayout, OtherFunctionCodesAreUnknown)
{
    int known = 0;
    for (int code = 0; code <= 255; ++code) {
        known += findFunctionCode(static_cast<std::uint8_t>(code)) != nullptr ? 1 : 0;
    }
    EXPECT_EQ(6, known);
    EXPECT_EQ(nullptr, findFunctionCode(102 | kExceptionBit));
}

TEST(FrameLayout, ElementsHaveNames)
{
    EXPECT_STREQ("bit", elementName(ElementClass::bits));
    EXPECT_STREQ("word", elementName(ElementClass::words));
    EXPECT_STREQ("double word", elementName(ElementClass::doubleWords));
    EXPECT_STREQ("bits", elementsName(ElementClass::bits));
    EXPECT_STREQ("words", elementsName(ElementClass::words));
    EXPECT_STREQ("double words", elementsName(ElementClass::doubleWords));
}

TEST(FrameLayout, ExceptionCodesHaveWords)
{
    EXPECT_STREQ("illegal function", exceptionWords(1));
    EXPECT_STREQ("illegal data address", exceptionWords(2));
    EXPECT_STREQ("illegal data value", exceptionWords(3));
    EXPECT_STREQ("device failure", exceptionWords(4));
    EXPECT_STREQ("device busy", exceptionWords(6));
    EXPECT_EQ(nullptr, exceptionWords(0));
    EXPECT_EQ(nullptr, exceptionWords(7));
    EXPECT_EQ(nullptr, exceptionWords(200));
}

TEST(FrameLayout, NumbersComeOutOfBytesInBothOrders)
{
    const std::string bytes = fromHex("81 92 A3 B4");
    EXPECT_EQ(0x8192, bigEndian16(bytesOf(bytes)));
    EXPECT_EQ(0x8192A3B4u, bigEndian32(bytesOf(bytes)));
    EXPECT_EQ(0x81u, bigEndianNumber(bytesOf(bytes), 1));
    EXPECT_EQ(0x8192u, bigEndianNumber(bytesOf(bytes), 2));
    EXPECT_EQ(0x9281u, littleEndianNumber(bytesOf(bytes), 2));
    EXPECT_EQ(0xB4A39281u, littleEndianNumber(bytesOf(bytes), 4));
}

} // namespace tavmir::wire
