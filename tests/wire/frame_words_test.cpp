// Frames in words.
#include "wire/frame_words.h"

#include "frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace tavmir::wire
{

using namespace tavmir::test;

namespace
{

ElementsInWords describe(const ElementInFrame* first, std::size_t count)
{
    ElementsInWords words = elementInWords(*first);
    if (first->address == 3000) {
        words.name = "W" + std::to_string(first->bits);
    }
    if (first->address == 7000) { // a value of three elements
        words.name = "Long";
        words.elements = std::min<std::size_t>(count, 3);
        words.value.clear();
        for (std::size_t i = 0; i < words.elements; ++i) {
            words.value += static_cast<char>('a' + first[i].value % 26);
        }
    }
    return words;
}

std::string request(const std::string& bytes)
{
    return requestInWords(bytesOf(bytes), bytes.size(), describe);
}

std::string reply(const std::string& bytes)
{
    return replyInWords(bytesOf(bytes), bytes.size(), describe);
}

} // namespace

TEST(FrameWords, Reads)
{
    EXPECT_EQ("#7 station 1 read words: W16, 116",
              request(frameOf(7, 1, 102, 2, fromHex("00000BB8 00000074"))));
    EXPECT_EQ("#7 station 1 read words: W16=4660, 116=1",
              reply(frameOf(7, 1, 102, 2, fromHex("00000BB8 1234 00000074 0001"))));
    EXPECT_EQ("#65535 station 255 read bits: W1",
              request(frameOf(65535, 255, 100, 1, fromHex("00000BB8"))));
    EXPECT_EQ("#8 station 2 read bits: W1=1", reply(frameOf(8, 2, 100, 1, fromHex("00000BB8 01"))));
    EXPECT_EQ("#9 station 1 read double words: W32=4294967295",
              reply(frameOf(9, 1, 108, 1, fromHex("00000BB8 FFFFFFFF"))));
}

TEST(FrameWords, WritesAreLeastSignificantByteFirst)
{
    EXPECT_EQ("#7 station 1 write words: W16=4660, 116=1",
              request(frameOf(7, 1, 103, 2, fromHex("00000BB8 3412 00000074 0100"))));
    EXPECT_EQ("#7 station 1 write double words: W32=305419896",
              request(frameOf(7, 1, 109, 1, fromHex("00000BB8 78563412"))));
    EXPECT_EQ("#7 station 1 write bits: W1=1, 5=0",
              request(frameOf(7, 1, 101, 2, fromHex("00000BB8 FF 00000005 00"))));
    EXPECT_EQ("#7 station 1 write words: 2 done", reply(frameOf(7, 1, 103, 2)));
}

TEST(FrameWords, SeveralElementsMayBeOneValue)
{
    EXPECT_EQ(
        "#7 station 1 read words: 5, Long, W16",
        request(frameOf(7, 1, 102, 5, fromHex("00000005 00001B58 00001B68 00001B78 00000BB8"))));
    EXPECT_EQ("#7 station 1 read words: Long=bcd, W16=9",
              reply(frameOf(7, 1, 102, 4,
                            fromHex("00001B58 0001 00001B68 0002 00001B78 0003 00000BB8 0009"))));
    EXPECT_EQ("#7 station 1 read words: Long=b, and 1 bytes",
              reply(frameOf(7, 1, 102, 2, fromHex("00001B58 0001 00"))));
}

TEST(FrameWords, WhoeverSpeaksOfNoElementSpeaksOfOne)
{
    const std::string bytes = frameOf(7, 1, 102, 2, fromHex("00000005 00000006"));
    const auto silent = [](const ElementInFrame* first, std::size_t) {
        ElementsInWords words = elementInWords(*first);
        words.elements = 0;
        return words;
    };
    EXPECT_EQ("#7 station 1 read words: 5, 6",
              requestInWords(bytesOf(bytes), bytes.size(), silent));
}

TEST(FrameWords, Exceptions)
{
    EXPECT_EQ("#7 station 1 read words: exception 2 (illegal data address)",
              reply(frameOf(7, 1, 102 | 0x80, 2)));
    EXPECT_EQ("#7 station 1 function 66: exception 200", reply(frameOf(7, 1, 66 | 0x80, 200)));
    EXPECT_EQ("3 (illegal data value)", exceptionInWords(3));
    EXPECT_EQ("0", exceptionInWords(0));
}

TEST(FrameWords, WhatMakesNoSenseIsCounted)
{
    for (const std::string& bytes : {std::string(), std::string(8, '\0')}) {
        EXPECT_EQ(std::to_string(bytes.size()) + " bytes", reply(bytes));
        EXPECT_EQ(std::to_string(bytes.size()) + " bytes", request(bytes));
    }
    EXPECT_EQ("#7 station 1 function 68, 10 bytes", reply(frameOf(7, 1, 68, 2, "x")));
    EXPECT_EQ("#7 station 1 function 68, 10 bytes", request(frameOf(7, 1, 68, 2, "x")));
    EXPECT_EQ("#7 station 1 read words: W16=4660, and 3 bytes",
              reply(frameOf(7, 1, 102, 2, fromHex("00000BB8 1234 000000"))));
    EXPECT_EQ("#7 station 1 write words: and 5 bytes",
              request(frameOf(7, 1, 103, 1, fromHex("00000BB8 12"))));
}

TEST(FrameWords, TitlesNameTheFunctionThatWasAskedFor)
{
    EXPECT_EQ("#7 station 1 read words", titleInWords(view(frameOf(7, 1, 102, 1))));
    EXPECT_EQ("#7 station 1 read words", titleInWords(view(frameOf(7, 1, 102 | 0x80, 1))));
    EXPECT_EQ("#7 station 1 function 66", titleInWords(view(fromHex("0007 0000 0002 01 42"))));
}

TEST(FrameWords, AnyBytesAreSafe)
{
    std::mt19937 random(20261122);
    const int functions[] = {100, 101, 102, 103, 108, 109, 230, 7};
    for (int round = 0; round < 5000; ++round) {
        std::string data(random() % 60, '\0');
        for (char& byte : data) {
            byte = static_cast<char>(random());
        }
        const std::string whole = frameOf(1, 1, functions[random() % 8], 200, data);
        // Exactly as many bytes as are told: an address sanitizer sees the next.
        const std::vector<unsigned char> bytes(
            whole.begin(), whole.begin() + static_cast<long>(random() % (whole.size() + 1)));
        EXPECT_FALSE(requestInWords(bytes.data(), bytes.size(), describe).empty());
        EXPECT_FALSE(replyInWords(bytes.data(), bytes.size(), describe).empty());
    }
}

} // namespace tavmir::wire
