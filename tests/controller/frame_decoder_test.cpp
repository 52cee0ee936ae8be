// The stream decoder: frames come out whole however the bytes come in, and a bad header ends it.
#include "controller/frame_decoder.h"
#include "controller/frame_limits.h"
#include "controller/seeded_random.h"
#include "frames.h"

#include <gtest/gtest.h>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

std::vector<QByteArray> takeAll(FrameDecoder& decoder)
{
    std::vector<QByteArray> frames;
    while (const std::optional<QByteArray> frame = decoder.takeFrame())
        frames.push_back(*frame);
    return frames;
}

} // namespace

TEST(FrameDecoder, GivesNothingWithoutBytes)
{
    FrameDecoder decoder;
    EXPECT_FALSE(decoder.takeFrame());
    EXPECT_FALSE(decoder.isBroken());
    EXPECT_EQ(decoder.reason(), QString());
}

TEST(FrameDecoder, PutsAFrameTogetherFromSingleBytes)
{
    const QByteArray request = readFrame(258, 1, 102, {100, 101});
    ASSERT_EQ(request, hex("0102 0000 000B 01 66 02 00000064 00000065"));
    FrameDecoder decoder;
    for (int i = 0; i < request.size() - 1; ++i) {
        decoder.append(request.constData() + i, 1);
        ASSERT_FALSE(decoder.takeFrame()) << i;
    }
    decoder.append(request.constData() + request.size() - 1, 1);
    EXPECT_EQ(decoder.takeFrame(), request);
    EXPECT_FALSE(decoder.takeFrame());
    EXPECT_EQ(decoder.keptBytes(), 0);
}

TEST(FrameDecoder, TakesJoinedFramesApart)
{
    const QByteArray first = readFrame(1, 1, 100, {5});
    const QByteArray second = writeFrame(2, 9, 103, {{16, hex("3412")}});
    const QByteArray third = readFrame(3, 1, 108, {7, 8, 9});
    FrameDecoder decoder;
    decoder.append(first + second + third.left(10));
    EXPECT_EQ(takeAll(decoder), (std::vector<QByteArray>{first, second}));
    EXPECT_EQ(decoder.keptBytes(), 10);
    decoder.append(third.mid(10));
    EXPECT_EQ(takeAll(decoder), std::vector<QByteArray>{third});
}

TEST(FrameDecoder, CutsTheSameFramesFromEveryDivisionOfTheStream)
{
    std::vector<QByteArray> sent;
    QByteArray stream;
    for (int i = 0; i < 200; ++i) {
        sent.push_back(frame(i, i, i, i, QByteArray(i, static_cast<char>(i))));
        stream += sent.back();
    }
    SeededRandom random(5);
    for (int round = 0; round < 50; ++round) {
        FrameDecoder decoder;
        std::vector<QByteArray> received;
        for (int begin = 0; begin < stream.size();) {
            const QByteArray part = stream.mid(begin, random.between(1, 700));
            begin += part.size();
            decoder.append(part);
            const std::vector<QByteArray> frames = takeAll(decoder);
            received.insert(received.end(), frames.begin(), frames.end());
            ASSERT_LT(decoder.keptBytes(), 260);
        }
        ASSERT_EQ(received, sent);
    }
}

TEST(FrameDecoder, BreaksOnAProtocolIdAsSoonAsItIsThere)
{
    FrameDecoder decoder;
    decoder.append(hex("0001 00"));
    EXPECT_FALSE(decoder.takeFrame());
    EXPECT_FALSE(decoder.isBroken());
    decoder.append(hex("01"));
    EXPECT_FALSE(decoder.takeFrame());
    EXPECT_TRUE(decoder.isBroken());
    EXPECT_EQ(decoder.reason(), QStringLiteral("protocol id 1 instead of 0"));
}

TEST(FrameDecoder, BreaksOnLengthsThatNoFrameHas)
{
    for (const char* length : {"0000", "0001", "00FF", "FFFF"}) {
        FrameDecoder decoder;
        decoder.append(hex("0001 0000") + hex(length));
        EXPECT_FALSE(decoder.takeFrame());
        EXPECT_TRUE(decoder.isBroken()) << length;
        EXPECT_TRUE(decoder.reason().contains(QStringLiteral("is not from 2 to 254"))) << length;
    }
}

TEST(FrameDecoder, TakesTheShortestAndTheLongestFrame)
{
    const QByteArray shortest = hex("0001 0000 0002 01 66");
    const QByteArray longest = frame(2, 1, 102, 62, QByteArray(251, 'x'));
    ASSERT_EQ(longest.size(), 260);
    FrameDecoder decoder;
    decoder.append(shortest + longest);
    EXPECT_EQ(takeAll(decoder), (std::vector<QByteArray>{shortest, longest}));
    EXPECT_FALSE(decoder.isBroken());
}

TEST(FrameDecoder, GivesFramesBeforeABadHeaderAndNothingAfterIt)
{
    const QByteArray good = readFrame(1, 1, 100, {5});
    FrameDecoder decoder;
    decoder.append(good + hex("0002 0005 0007") + good);
    EXPECT_EQ(takeAll(decoder), std::vector<QByteArray>{good});
    EXPECT_TRUE(decoder.isBroken());
    decoder.append(good);
    EXPECT_FALSE(decoder.takeFrame());
    EXPECT_EQ(decoder.keptBytes(), 0);
}
