// Requests and their replies, byte by byte, and the exceptions.
#include "controller/bit_memory.h"
#include "controller/request.h"
#include "controller/request_handler.h"
#include "frames.h"

#include <gtest/gtest.h>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

class RequestHandler : public ::testing::Test
{
protected:
    QByteArray answer(const QByteArray& request) { return exchange(request).reply; }
    Answer exchange(const QByteArray& request) { return carryOut(parseRequest(request), memory); }

    BitMemory memory{3};
};

} // namespace

TEST_F(RequestHandler, ReadsWordsMostSignificantByteFirstBehindTheEchoedHeader)
{
    memory.write(1, 100, 16, 0x1234);
    memory.write(1, 116, 16, 0xABCD);
    EXPECT_EQ(answer(readFrame(258, 1, 102, {100, 116})),
              hex("0102 0000 000F 01 66 02  00000064 1234  00000074 ABCD"));
}

TEST_F(RequestHandler, ReadsBitsAsOneByteOfZeroOrOne)
{
    memory.write(3, 4660, 32, 0xFFFFFFFF);
    EXPECT_EQ(answer(readFrame(0, 3, 100, {4660, 4659})),
              hex("0000 0000 000D 03 64 02  00001234 01  00001233 00"));
}

TEST_F(RequestHandler, ReadsDoubleWordsMostSignificantByteFirst)
{
    memory.write(1, 64, 32, 100000);
    EXPECT_EQ(answer(readFrame(7, 1, 108, {64})), hex("0007 0000 000B 01 6C 01 00000040 000186A0"));
}

TEST_F(RequestHandler, AcknowledgesAWriteWithItsHeader)
{
    EXPECT_EQ(answer(hex("0005 0000 0008 01 65 01 00000010 01")), hex("0005 0000 0003 01 65 01"));
    EXPECT_EQ(memory.read(1, 16, 1), 1u);
    EXPECT_EQ(memory.read(1, 15, 3), 2u);
}

TEST_F(RequestHandler, AWordWrittenReadsBackAsTheSameNumber)
{
    for (const std::uint32_t number : {0u, 1u, 0x00FFu, 0x1234u, 0x8000u, 0xFFFEu}) {
        const char low = static_cast<char>(number & 0xFF);
        const char high = static_cast<char>(number >> 8);
        answer(writeFrame(1, 1, 103, {{500, QByteArray(1, low) + high}}));
        EXPECT_EQ(memory.read(1, 500, 16), number);
        EXPECT_EQ(answer(readFrame(2, 1, 102, {500})).right(2), bigEndian(number, 2));
    }
}

TEST_F(RequestHandler, ADoubleWordWrittenReadsBackAsTheSameNumber)
{
    for (const std::uint32_t number : {0u, 1u, 0x12345678u, 0x80000000u, 0xFFFFFFFEu}) {
        QByteArray lowFirst;
        for (int i = 0; i < 4; ++i) {
            lowFirst += static_cast<char>(number >> (8 * i) & 0xFF);
        }
        answer(writeFrame(1, 1, 109, {{500, lowFirst}}));
        EXPECT_EQ(memory.read(1, 500, 32), number);
        EXPECT_EQ(answer(readFrame(2, 1, 108, {500})).right(4), bigEndian(number, 4));
    }
}

TEST_F(RequestHandler, AnyByteButZeroSetsABit)
{
    answer(writeFrame(1, 1, 101, {{5, hex("80")}, {6, hex("00")}, {7, hex("FF")}}));
    EXPECT_EQ(memory.read(1, 5, 3), 5u);
    EXPECT_EQ(answer(readFrame(2, 1, 100, {5, 6, 7})).mid(13, 1), hex("01"));
}

TEST_F(RequestHandler, ElementsKeepTheirOrderAndMayRepeatAndOverlap)
{
    answer(writeFrame(1, 1, 103, {{20, hex("0100")}, {20, hex("0200")}, {28, hex("0300")}}));
    EXPECT_EQ(answer(readFrame(2, 1, 102, {28, 20, 28})),
              hex("0002 0000 0015 01 66 03  0000001C 0003  00000014 0302  0000001C 0003"));
}

TEST_F(RequestHandler, UsesTheLastAddressesAndWraps)
{
    answer(writeFrame(1, 1, 109, {{0xFFFFFFF0, hex("78563412")}}));
    EXPECT_EQ(answer(readFrame(2, 1, 102, {0})).right(6), hex("00000000 1234"));
    EXPECT_EQ(answer(readFrame(2, 1, 108, {0xFFFFFFF0})).right(8), hex("FFFFFFF0 12345678"));
}

TEST_F(RequestHandler, AnUnknownFunctionCodeGivesException1)
{
    for (const int function : {0, 3, 99, 104, 107, 110, 127}) {
        const Answer refused = exchange(frame(9, 2, function, 1, bigEndian(5, 4)));
        EXPECT_EQ(refused.exceptionCode, 1);
        EXPECT_EQ(refused.reply, hex("0009 0000 0003 02") +
                                     bigEndian(std::uint32_t(function) | 0x80, 1) + hex("01"));
    }
}

TEST_F(RequestHandler, ACountThatDoesNotFitTheLengthGivesException3)
{
    const QByteArray address = bigEndian(5, 4);
    const QByteArray three = hex("0009 0000 0003 01 E6 03");
    EXPECT_EQ(answer(frame(9, 1, 102, 2, address)), three);
    EXPECT_EQ(answer(frame(9, 1, 102, 1, address + address)), three);
    EXPECT_EQ(answer(frame(9, 1, 102, 1, address + 'x')), three);
    EXPECT_EQ(answer(frame(9, 1, 102, 1)), three);
    EXPECT_EQ(answer(frame(9, 1, 102, 0)), three);
    EXPECT_EQ(answer(frame(9, 1, 102, 0, address)), three);
    EXPECT_EQ(answer(hex("0009 0000 0002 01 66")), three) << "the frame ends before its count";
    EXPECT_EQ(answer(hex("0009 0000 0002 01 63")), hex("0009 0000 0003 01 E3 01"));
}

TEST_F(RequestHandler, ARefusedWriteChangesNothing)
{
    EXPECT_EQ(exchange(frame(9, 1, 103, 2, bigEndian(16, 4) + hex("0100"))).exceptionCode, 3);
    EXPECT_EQ(memory.pageCount(), 0u);
}

TEST_F(RequestHandler, TakesAsManyElementsAsAReplyFrameCarriesAndNoMore)
{
    struct Limit {
        int function;
        int most;
    };
    for (const Limit limit : {Limit{100, 50}, Limit{102, 41}, Limit{108, 31}}) {
        std::vector<std::uint32_t> addresses(static_cast<std::size_t>(limit.most), 64);
        const QByteArray reply = answer(readFrame(1, 1, limit.function, addresses));
        EXPECT_EQ(reply.at(7), limit.function);
        EXPECT_LE(reply.size(), 260);
        addresses.push_back(64);
        EXPECT_EQ(exchange(readFrame(1, 1, limit.function, addresses)).exceptionCode, 3)
            << limit.function;
    }
}

TEST_F(RequestHandler, TakesTheLargestBatchesOfTheDriver)
{
    const auto reply = [&](int function, std::size_t count) {
        return answer(readFrame(1, 1, function, std::vector<std::uint32_t>(count, 64)));
    };
    EXPECT_EQ(reply(100, 45).size(), 234);
    EXPECT_EQ(reply(102, 38).size(), 237);
    EXPECT_EQ(reply(108, 28).size(), 233);
}

TEST_F(RequestHandler, AFullMemoryGivesException4AndKeepsWhatItHolds)
{
    const auto write = [&](std::uint32_t address) {
        return exchange(writeFrame(1, 1, 103, {{address, hex("0100")}}));
    };
    for (std::uint32_t page = 0; page < 3; ++page) {
        EXPECT_EQ(write(page * 4096).exceptionCode, 0);
    }
    EXPECT_EQ(write(3 * 4096).exceptionCode, 4);
    EXPECT_EQ(write(3 * 4096).reply, hex("0001 0000 0003 01 E7 04"));
    EXPECT_EQ(write(16).exceptionCode, 0) << "pages that are there still take values";
    EXPECT_EQ(memory.read(1, 8192, 16), 1u);
}
