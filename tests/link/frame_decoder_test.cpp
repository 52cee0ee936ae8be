// The host's stream decoder on bytes alone, and matching.
#include "wire/frame_decoder.h"

#include "link/reply_matcher.h"
#include "test_server.h"

#include <gtest/gtest.h>

#include <random>

namespace tavmir::host
{

namespace
{

using State = FrameDecoder::State;

const unsigned char* bytesOf(const QByteArray& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

void feed(FrameDecoder& decoder, const QByteArray& bytes)
{
    ASSERT_EQ(static_cast<size_t>(bytes.size()),
              decoder.append(bytesOf(bytes), static_cast<size_t>(bytes.size())));
}

QByteArray copyOf(const FrameView& frame)
{
    return QByteArray(reinterpret_cast<const char*>(frame.bytes), static_cast<int>(frame.size));
}

FrameView view(const QByteArray& bytes)
{
    return viewFrame(bytesOf(bytes), static_cast<size_t>(bytes.size()));
}

} // namespace

TEST(Decoder, FrameComesOutWhole)
{
    FrameDecoder decoder;
    const QByteArray bytes = goodReply(wordRequest(258, 3), 5);
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
    const QByteArray first = goodReply(wordRequest(1, 2), 5);
    const QByteArray both = first + goodReply(wordRequest(2, 1), 9);
    for (int cut = 0; cut <= both.size(); ++cut) {
        FrameDecoder decoder;
        QByteArray out;
        for (const QByteArray& part : {both.left(cut), both.mid(cut)}) {
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
    feed(decoder, QByteArray(1, '\0'));
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
        feed(decoder, QByteArray::fromHex(hex));
        FrameView frame;
        const bool decided = QByteArray::fromHex(hex).size() >= 4;
        EXPECT_EQ(decided ? State::broken : State::needMore, decoder.next(frame)) << hex;
    }
}

TEST(Decoder, LengthsOutOfRangeBreakTheStream)
{
    FrameView frame;
    for (const char* hex : {"000100000000", "000100000002", "000100000401", "00010000ffff"}) {
        FrameDecoder decoder;
        feed(decoder, QByteArray::fromHex(hex));
        EXPECT_EQ(State::broken, decoder.next(frame)) << hex;
        feed(decoder, wordRequest(1));
        EXPECT_EQ(State::broken, decoder.next(frame)) << "a broken stream stays broken";
        decoder.clear();
        feed(decoder, wordRequest(1));
        EXPECT_EQ(State::frame, decoder.next(frame));
    }
    for (const char* hex : {"000100000003", "000100000400"}) {
        FrameDecoder decoder;
        feed(decoder, QByteArray::fromHex(hex));
        EXPECT_EQ(State::needMore, decoder.next(frame)) << hex;
    }
}

TEST(Decoder, LongestFrameFitsAfterAnother)
{
    FrameDecoder decoder;
    const QByteArray longest =
        replyTo(wordRequest(1), QByteArray(static_cast<int>(kMaxLengthField) - 3, 'x'));
    const QByteArray stream = wordRequest(7) + longest + longest + longest;
    FrameView frame;
    int frames = 0;
    QByteArray rest = stream;
    while (!rest.isEmpty()) {
        const size_t taken = decoder.append(bytesOf(rest), static_cast<size_t>(rest.size()));
        ASSERT_GT(taken, 0u);
        rest.remove(0, static_cast<int>(taken));
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
            QByteArray bytes(static_cast<int>(random() % 300), '\0');
            for (char& byte : bytes) {
                byte = random() % 3 == 0 ? static_cast<char>(random()) : '\0';
            }
            size_t room = 0;
            decoder.space(room);
            ASSERT_GT(room, 0u);
            decoder.append(bytesOf(bytes), static_cast<size_t>(bytes.size()));
            while ((state = decoder.next(frame)) == State::frame) {
                ASSERT_GE(frame.size, kHeaderBytes);
                ASSERT_LE(frame.size, kMaxFrameBytes);
            }
        }
    }
}

TEST(Matcher, AnswerHasSameTransactionStationAndFunction)
{
    const QByteArray request = wordRequest(300, 2);
    EXPECT_EQ(ReplyKind::answer, classifyReply(view(request), view(goodReply(request))));
    EXPECT_EQ(ReplyKind::answer, classifyReply(view(request), view(replyTo(request, "x"))));
    EXPECT_EQ(ReplyKind::foreign, classifyReply(view(request), view(goodReply(wordRequest(301)))));
    EXPECT_EQ(ReplyKind::foreign,
              classifyReply(view(request), view(goodReply(wordRequest(300 + 256)))));
    QByteArray other = goodReply(request);
    other[6] = 2;
    EXPECT_EQ(ReplyKind::foreign, classifyReply(view(request), view(other)));
    other = goodReply(request);
    other[7] = 'g';
    EXPECT_EQ(ReplyKind::foreign, classifyReply(view(request), view(other)));
}

TEST(Matcher, ExceptionNeedsTheRequestsFunction)
{
    const QByteArray request = wordRequest(1);
    EXPECT_EQ(ReplyKind::exception, classifyReply(view(request), view(exceptionTo(request, 1))));
    QByteArray other = exceptionTo(request, 1);
    other[7] = static_cast<char>('g' | 0x80);
    EXPECT_EQ(ReplyKind::foreign, classifyReply(view(request), view(other)));
    EXPECT_EQ(ReplyKind::foreign,
              classifyReply(view(request), view(exceptionTo(wordRequest(2), 1))));
}

} // namespace tavmir::host
