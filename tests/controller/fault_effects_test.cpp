// What faults make of a reply's bytes.
#include "controller/fault_effects.h"
#include "controller/frame_bytes.h"
#include "frames.h"
#include "wire/frame_layout.h"

#include <gtest/gtest.h>

#include <set>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

const QByteArray kReply = frame(258, 1, 102, 2, hex("00000064 1234 00000074 ABCD"));
const QByteArray kAcknowledgement = frame(258, 1, 103, 2);
constexpr int kRounds = 500;

int lengthField(const QByteArray& bytes)
{
    return tavmir::wire::bigEndian16(bytesOf(bytes) + tavmir::wire::kLengthOffset);
}

// All sizes that `effect` gives for a reply.
template <typename Effect> std::set<int> sizesOf(Effect effect, const QByteArray& reply)
{
    SeededRandom random(11);
    std::set<int> sizes;
    for (int i = 0; i < kRounds; ++i) {
        sizes.insert(effect(reply, random).size());
    }
    return sizes;
}

} // namespace

TEST(FaultEffects, TruncatedRepliesAreShorterAndSaySo)
{
    SeededRandom random(11);
    for (int i = 0; i < kRounds; ++i) {
        const QByteArray shorter = truncated(kReply, random);
        ASSERT_EQ(lengthField(shorter), shorter.size() - 6);
        ASSERT_EQ(shorter.left(4), kReply.left(4));
        ASSERT_EQ(shorter.mid(6), kReply.mid(6, shorter.size() - 6));
    }
    const std::set<int> sizes = sizesOf(truncated, kReply);
    EXPECT_EQ(*sizes.begin(), 8);
    EXPECT_EQ(*sizes.rbegin(), kReply.size() - 1);
    EXPECT_EQ(sizesOf(truncated, kAcknowledgement), std::set<int>{8});
}

TEST(FaultEffects, OversizedRepliesAreLongerAndSaySo)
{
    SeededRandom random(11);
    for (int i = 0; i < kRounds; ++i) {
        const QByteArray longer = oversized(kReply, random);
        ASSERT_EQ(lengthField(longer), longer.size() - 6);
        ASSERT_EQ(longer.mid(6, kReply.size() - 6), kReply.mid(6));
    }
    const std::set<int> sizes = sizesOf(oversized, kReply);
    EXPECT_EQ(*sizes.begin(), kReply.size() + 1);
    EXPECT_EQ(*sizes.rbegin(), kReply.size() + kMostBytesAdded);
}

TEST(FaultEffects, CutRepliesPromiseMoreThanTheyHold)
{
    SeededRandom random(11);
    for (int i = 0; i < kRounds; ++i) {
        const QByteArray start = cutShort(kReply, random);
        ASSERT_TRUE(kReply.startsWith(start));
    }
    const std::set<int> sizes = sizesOf(cutShort, kReply);
    EXPECT_EQ(*sizes.begin(), 1);
    EXPECT_EQ(*sizes.rbegin(), kReply.size() - 1);
}

TEST(FaultEffects, CorruptedRepliesDifferInTheTopBitOfOneHeaderByte)
{
    SeededRandom random(11);
    std::set<int> changedBytes;
    for (int i = 0; i < kRounds; ++i) {
        const QByteArray changed = corrupted(kReply, random);
        ASSERT_EQ(changed.size(), kReply.size());
        int differences = 0;
        for (int byte = 0; byte < changed.size(); ++byte) {
            if (changed[byte] == kReply[byte]) {
                continue;
            }
            ++differences;
            changedBytes.insert(byte);
            ASSERT_EQ(byteAt(changed, byte) ^ byteAt(kReply, byte), 0x80);
        }
        ASSERT_EQ(differences, 1);
    }
    EXPECT_EQ(changedBytes, (std::set<int>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(FaultEffects, TheSameSeedGivesTheSameBytes)
{
    SeededRandom one(4);
    SeededRandom two(4);
    for (int i = 0; i < kRounds; ++i) {
        ASSERT_EQ(oversized(kReply, one), oversized(kReply, two));
        ASSERT_EQ(corrupted(kReply, one), corrupted(kReply, two));
    }
}

TEST(FaultEffects, GarbledReadsBringOneOtherValueInARightFrame)
{
    SeededRandom random(5);
    std::set<int> places;
    for (int i = 0; i < kRounds; ++i) {
        const QByteArray changed = garbled(kReply, random);
        ASSERT_EQ(changed.size(), kReply.size());
        const bool first = changed.mid(13, 2) != kReply.mid(13, 2);
        const bool second = changed.mid(19, 2) != kReply.mid(19, 2);
        ASSERT_NE(first, second) << "exactly one";
        places.insert(first ? 0 : 1);
        QByteArray restored = changed;
        restored.replace(first ? 13 : 19, 2, kReply.mid(first ? 13 : 19, 2));
        ASSERT_EQ(restored, kReply) << "header and addresses stay";
    }
    EXPECT_EQ(places, (std::set<int>{0, 1}));
}

TEST(FaultEffects, GarbledBitsAreStillBits)
{
    SeededRandom random(5);
    const QByteArray reply = frame(1, 1, 100, 1, hex("00000064 01"));
    EXPECT_EQ(garbled(reply, random), frame(1, 1, 100, 1, hex("00000064 00")));
    Request request = parseRequest(writeFrame(1, 1, 101, {{100, hex("00")}}));
    garble(request, random);
    EXPECT_EQ(request.elements.at(0).value, 1u);
}

TEST(FaultEffects, WhatCarriesNoValueIsNotGarbled)
{
    SeededRandom random(5);
    const QByteArray exception = frame(1, 1, 102 | 0x80, 2);
    EXPECT_EQ(garbled(exception, random), exception);
    EXPECT_EQ(garbled(kAcknowledgement, random), kAcknowledgement);
    Request read = parseRequest(readFrame(1, 1, 102, {16, 32}));
    garble(read, random);
    for (const BitValue& element : read.elements) {
        EXPECT_EQ(element.value, 0u);
    }
    Request senseless = parseRequest(frame(1, 1, 66, 1));
    garble(senseless, random);
    EXPECT_TRUE(senseless.elements.empty());
}

TEST(FaultEffects, TheSeedSaysWhatIsGarbled)
{
    const auto garbledBy = [](std::uint64_t seed) {
        SeededRandom random(seed);
        QByteArray all;
        for (int i = 0; i < 20; ++i) {
            all += garbled(kReply, random);
        }
        return all;
    };
    EXPECT_EQ(garbledBy(3), garbledBy(3));
    EXPECT_NE(garbledBy(3), garbledBy(4));
}
