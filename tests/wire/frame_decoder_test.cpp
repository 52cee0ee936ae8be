// The stream decoder on bytes alone.
#include "wire/frame_decoder.h"

#include "frames.h"

#include <gtest/gtest.h>

#include <random>

namespace tavmir::wire
{

using namespace tavmir::test;

namespace
{

using State = FrameDecoder::State;

void feed(FrameDecoder& decoder, const std::string& bytes)
{
    ASSERT_EQ(bytes.size(), decoder.append(bytesOf(bytes), bytes.size()));
}

std::string readRequest(int transactionId)
{
    return frameOf(transactionId, 1, 102, 1, fromHex("00000010"));
}

std::string readReply(int transactionId, int count)
{
    std::string entries;
    for (int i = 0; i < count; ++i) {
        entries += fromHex("00000010 0005");
    }
    return frameOf(transactionId, 1, 102, count, entries);
}

} // namespace

TEST(Decoder, FrameComesOutWhole)
{
    FrameDecoder decoder;
    const std::string bytes = readReply(258, 3);
    feed(decoder, bytes);
    FrameView frame;
    ASSERT_EQ(State::frame, decoder.next(frame));
    EXPECT_EQ(bytes, copyOf(frame));
    EXPECT_EQ(258, frame.transactionId);
    EXPECT_EQ(1, frame.station);
    EXPECT_EQ('f', frame.function);
    EXPECT_EQ(State::needMore, decoder.next(frame));
    EXPECT_FALSE(decoder.hasPartialFrame());
}

TEST(Decoder, FramesMayBeSplitAnywhere)
{
    const std::string first = readReply(1, 2);
    const std::string both = first + readReply(2, 1);
    for (std::size_t cut = 0; cut <= both.size(); ++cut) {
        FrameDecoder decoder;
        std::string out;
        for (const std::string& part : {both.substr(0, cut), both.substr(cut)}) {
            feed(decoder, part);
            FrameView frame;
            while (decoder.next(frame) == State::frame) {
                out += copyOf(frame);
            }
        }
        EXPECT_EQ(both, out) << cut;
        EXPECT_FALSE(decoder.hasPartialFrame());
    }
}

TEST(Decoder, PartOfAFrameIsNoticed)
{
    FrameDecoder decoder;
    feed(decoder, std::string(1, '\0'));
    FrameView frame;
    EXPECT_EQ(State::needMore, decoder.next(frame));
    EXPECT_TRUE(decoder.hasPartialFrame());
    decoder.clear();
    EXPECT_FALSE(decoder.hasPartialFrame());
}

TEST(Decoder, ProtocolIdOtherThanZeroBreaksTheStream)
{
    for (const char* hex : {"00010001", "00010100", "0001ff"}) {
        FrameDecoder decoder;
        feed(decoder, fromHex(hex));
        FrameView frame;
        const bool decided = fromHex(hex).size() >= 4;
        EXPECT_EQ(decided ? State::broken : State::needMore, decoder.next(frame)) << hex;
    }
}

TEST(Decoder, LengthsOutOfRangeBreakTheStream)
{
    FrameView frame;
    for (const char* hex : {"000100000000", "000100000002", "000100000401", "00010000ffff"}) {
        FrameDecoder decoder;
        feed(decoder, fromHex(hex));
        EXPECT_EQ(State::broken, decoder.next(frame)) << hex;
        feed(decoder, readRequest(1));
        EXPECT_EQ(State::broken, decoder.next(frame)) << "a broken stream stays broken";
        decoder.clear();
        feed(decoder, readRequest(1));
        EXPECT_EQ(State::frame, decoder.next(frame));
    }
    for (const char* hex : {"000100000003", "000100000400"}) {
        FrameDecoder decoder;
        feed(decoder, fromHex(hex));
        EXPECT_EQ(State::needMore, decoder.next(frame)) << hex;
    }
}

TEST(Decoder, LongestFrameFitsAfterAnother)
{
    FrameDecoder decoder;
    const std::string longest = frameOf(1, 1, 102, 1, std::string(kMaxLengthField - 3, 'x'));
    const std::string stream = readRequest(7) + longest + longest + longest;
    FrameView frame;
    int frames = 0;
    std::string rest = stream;
    while (!rest.empty()) {
        const std::size_t taken = decoder.append(bytesOf(rest), rest.size());
        ASSERT_GT(taken, 0u);
        rest.erase(0, taken);
        while (decoder.next(frame) == State::frame) {
            ++frames;
        }
    }
    EXPECT_EQ(4, frames);
    EXPECT_EQ(longest, copyOf(frame));
}

TEST(Decoder, AnyBytesAreSafe)
{
    std::mt19937 random(20261121);
    for (int round = 0; round < 2000; ++round) {
        FrameDecoder decoder;
        FrameView frame;
        State state = State::needMore;
        for (int part = 0; part < 20 && state != State::broken; ++part) {
            std::string bytes(random() % 300, '\0');
            for (char& byte : bytes) {
                byte = random() % 3 == 0 ? static_cast<char>(random()) : '\0';
            }
            std::size_t room = 0;
            decoder.space(room);
            ASSERT_GT(room, 0u);
            decoder.append(bytesOf(bytes), bytes.size());
            while ((state = decoder.next(frame)) == State::frame) {
                ASSERT_GE(frame.size, kHeaderBytes);
                ASSERT_LE(frame.size, kMaxFrameBytes);
            }
        }
    }
}

} // namespace tavmir::wire
