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

// As of a peer that takes short frames only.
constexpr LengthLimits kShortLengths = {2, 254};

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

TEST(Decoder, SaysWhatWasWrong)
{
    const struct {
        const char* hex;
        const char* reason;
    } broken[] = {
        {"0001 0001", "protocol id 1 instead of 0"},
        {"0001 FF02 0003", "protocol id 65282 instead of 0"},
        {"0001 0000 0001", "length 1 is not from 2 to 254"},
        {"0001 0000 00FF", "length 255 is not from 2 to 254"},
    };
    for (const auto& stream : broken) {
        FrameDecoder decoder(kShortLengths);
        EXPECT_EQ("", decoder.reason());
        feed(decoder, fromHex(stream.hex));
        FrameView frame;
        EXPECT_EQ(State::broken, decoder.next(frame));
        EXPECT_EQ(stream.reason, decoder.reason());
        decoder.clear();
        EXPECT_EQ("", decoder.reason());
    }
}

TEST(Decoder, LimitsAreThoseGiven)
{
    const std::string shortest = fromHex("0001 0000 0002 01 66");
    const std::string longest = frameOf(2, 1, 102, 62, std::string(251, 'x'));
    ASSERT_EQ(260u, longest.size());
    FrameDecoder decoder(kShortLengths);
    feed(decoder, shortest + longest);
    FrameView frame;
    ASSERT_EQ(State::frame, decoder.next(frame));
    EXPECT_EQ(shortest, copyOf(frame));
    EXPECT_EQ(102, frame.function);
    ASSERT_EQ(State::frame, decoder.next(frame));
    EXPECT_EQ(longest, copyOf(frame));
    EXPECT_EQ(State::needMore, decoder.next(frame));
}

TEST(Decoder, KeepsTwoOfTheLongestFramesAndNoMore)
{
    FrameDecoder decoder(kShortLengths);
    const std::string bytes(10000, '\0');
    EXPECT_EQ(2u * 260, decoder.append(bytesOf(bytes), bytes.size()));
    EXPECT_EQ(0u, decoder.append(bytesOf(bytes), bytes.size()));
    FrameDecoder ofReplies;
    EXPECT_EQ(2 * kMaxFrameBytes, ofReplies.append(bytesOf(bytes), bytes.size()));
}

TEST(Decoder, GivesFramesBeforeABadHeaderAndNothingAfterIt)
{
    const std::string good = readRequest(1);
    FrameDecoder decoder(kShortLengths);
    feed(decoder, good + fromHex("0002 0005 0007") + good);
    FrameView frame;
    ASSERT_EQ(State::frame, decoder.next(frame));
    EXPECT_EQ(good, copyOf(frame));
    EXPECT_EQ(State::broken, decoder.next(frame));
    feed(decoder, good);
    EXPECT_EQ(State::broken, decoder.next(frame));
}

TEST(Decoder, CutsTheSameFramesFromEveryDivisionOfTheStream)
{
    std::string stream;
    for (int i = 0; i < 200; ++i) {
        stream += frameOf(i, i, i, i, std::string(static_cast<std::size_t>(i), 'd'));
    }
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round) {
        FrameDecoder decoder(kShortLengths);
        FrameView frame;
        std::string out;
        int frames = 0;
        for (std::size_t begin = 0; begin < stream.size();) {
            const std::string part = stream.substr(begin, 1 + random() % 700);
            begin += decoder.append(bytesOf(part), part.size());
            while (decoder.next(frame) == State::frame) {
                out += copyOf(frame);
                ++frames;
            }
        }
        ASSERT_EQ(200, frames);
        ASSERT_EQ(stream, out);
    }
}

TEST(Decoder, LongestFrameFitsAfterAnother)
{
    FrameDecoder decoder;
    const std::string longest = frameOf(1, 1, 102, 1, std::string(kReplyLengths.most - 3, 'x'));
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
