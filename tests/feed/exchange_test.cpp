// One exchange: what its end means, in flags and in words, and how it is copied.
#include "feed/exchange.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tavmir::host
{

namespace
{

constexpr ExchangeEnd kEnds[] = {
    ExchangeEnd::reply,   ExchangeEnd::exception,  ExchangeEnd::timeout,
    ExchangeEnd::cut,     ExchangeEnd::lost,       ExchangeEnd::broken,
    ExchangeEnd::notSent, ExchangeEnd::suppressed, ExchangeEnd::stopped};

std::string words(const Exchange& exchange)
{
    return endInWords(exchange, "cable cut").toStdString();
}

Exchange filled(quint32 requestSize, quint32 replySize)
{
    Exchange exchange;
    std::memset(exchange.request, 0xAA, sizeof exchange.request);
    std::memset(exchange.reply, 0xBB, sizeof exchange.reply);
    exchange.requestSize = requestSize;
    exchange.replySize = replySize;
    return exchange;
}

Exchange emptyWith(int filler)
{
    Exchange exchange;
    std::memset(exchange.request, filler, sizeof exchange.request);
    std::memset(exchange.reply, filler, sizeof exchange.reply);
    return exchange;
}

// How many bytes from the front are `value`, and that all behind them are not.
int prefixOf(const unsigned char (&bytes)[Exchange::kMostBytes], unsigned char value)
{
    size_t count = 0;
    while (count < sizeof bytes && bytes[count] == value) {
        ++count;
    }
    for (size_t i = count; i < sizeof bytes; ++i) {
        if (bytes[i] == value) {
            return -1;
        }
    }
    return static_cast<int>(count);
}

} // namespace

TEST(Exchange, OnlyAReplyOfTheExpectedLengthIsGood)
{
    for (const ExchangeEnd end : kEnds) {
        Exchange exchange = madeEnd(end, 13);
        exchange.replySize = exchange.expectedReply = 15;
        EXPECT_EQ(end == ExchangeEnd::reply, exchange.isGood()) << static_cast<int>(end);
        exchange.sentBytes = 0;
        EXPECT_EQ(end == ExchangeEnd::reply, exchange.isGood()) << static_cast<int>(end);
        for (const quint32 size : {0, 14, 16}) {
            exchange.replySize = size;
            EXPECT_FALSE(exchange.isGood()) << static_cast<int>(end);
        }
    }
}

TEST(Exchange, RepliesAndExceptionsAreAnswers)
{
    for (const ExchangeEnd end : kEnds) {
        EXPECT_EQ(end == ExchangeEnd::reply || end == ExchangeEnd::exception,
                  madeEnd(end, 13).answered())
            << static_cast<int>(end);
    }
}

TEST(Exchange, WhatWasSentAndNeitherAcknowledgedNorRefusedIsUncertain)
{
    for (const ExchangeEnd end : kEnds) {
        const bool answered = end == ExchangeEnd::reply || end == ExchangeEnd::exception;
        EXPECT_FALSE(madeEnd(end, 0).isUncertain()) << static_cast<int>(end);
        EXPECT_EQ(!answered, madeEnd(end, 1).isUncertain()) << static_cast<int>(end);
        EXPECT_EQ(!answered, madeEnd(end, 13).isUncertain()) << static_cast<int>(end);
    }
    Exchange wrongLength = madeEnd(ExchangeEnd::reply, 13);
    wrongLength.replySize = 14;
    EXPECT_TRUE(wrongLength.isUncertain()) << "carried out or not, this does not say";
}

TEST(Exchange, EachEndInWords)
{
    Exchange wrongLength = madeEnd(ExchangeEnd::reply, 13);
    wrongLength.replySize = 21;
    EXPECT_EQ("the controller's reply has 21 bytes instead of 15", words(wrongLength));
    Exchange refused = madeEnd(ExchangeEnd::exception, 13);
    refused.exceptionCode = 2;
    EXPECT_EQ("the controller refused the request: exception 2 (illegal data address)",
              words(refused));
    Exchange late = madeEnd(ExchangeEnd::timeout, 13);
    late.replyTimeoutMs = 350;
    EXPECT_EQ("the controller did not answer within 350 ms", words(late));
    late.foreignFrames = 1;
    EXPECT_EQ("the controller did not answer within 350 ms; 1 late or foreign reply came instead",
              words(late));
    late.foreignFrames = 2;
    EXPECT_EQ("the controller did not answer within 350 ms; 2 late or foreign replies came instead",
              words(late));
    EXPECT_EQ("the controller's reply was cut off", words(madeEnd(ExchangeEnd::cut, 13)));
    EXPECT_EQ("the connection was lost: cable cut", words(madeEnd(ExchangeEnd::lost, 13)));
    EXPECT_EQ("the stream from the controller made no sense",
              words(madeEnd(ExchangeEnd::broken, 13)));
    EXPECT_EQ("no connection to the controller: cable cut",
              words(madeEnd(ExchangeEnd::notSent, 0)));
    EXPECT_EQ("the station is switched off", words(madeEnd(ExchangeEnd::suppressed, 0)));
    EXPECT_EQ("the host stops", words(madeEnd(ExchangeEnd::stopped, 0)));
    EXPECT_EQ("the host stopped before an answer came", words(madeEnd(ExchangeEnd::stopped, 1)));
}

TEST(Exchange, ExceptionsInWords)
{
    EXPECT_EQ("exception 1 (illegal function)", exceptionInWords(1).toStdString());
    EXPECT_EQ("exception 6 (device busy)", exceptionInWords(6).toStdString());
    EXPECT_EQ("exception 7", exceptionInWords(7).toStdString());
    EXPECT_EQ("exception 255", exceptionInWords(255).toStdString());
}

TEST(Exchange, CopiesEveryFigure)
{
    Exchange from = filled(20, 30);
    from.sentAt = momentAt(1);
    from.endedAt = momentAt(2);
    from.endedWall = WallClock::time_point(std::chrono::seconds(3));
    from.generation = 4;
    from.receivedBytes = 5;
    from.replyTimeoutMs = 6;
    from.sentBytes = 7;
    from.foreignFrames = 8;
    from.expectedReply = 9;
    from.attempt = 10;
    from.kind = RequestKind::read;
    from.end = ExchangeEnd::cut;
    from.exceptionCode = 11;
    Exchange to = emptyWith(0);
    copyExchange(from, nullptr, nullptr, to);
    EXPECT_EQ(momentAt(1), to.sentAt);
    EXPECT_EQ(momentAt(2), to.endedAt);
    EXPECT_EQ(from.endedWall, to.endedWall);
    EXPECT_EQ(4u, to.generation);
    EXPECT_EQ(5u, to.receivedBytes);
    EXPECT_EQ(6u, to.replyTimeoutMs);
    EXPECT_EQ(7u, to.sentBytes);
    EXPECT_EQ(8u, to.foreignFrames);
    EXPECT_EQ(9u, to.expectedReply);
    EXPECT_EQ(20u, to.requestSize);
    EXPECT_EQ(30u, to.replySize);
    EXPECT_EQ(10u, to.attempt);
    EXPECT_EQ(RequestKind::read, to.kind);
    EXPECT_EQ(ExchangeEnd::cut, to.end);
    EXPECT_EQ(11, to.exceptionCode);
}

TEST(Exchange, CopiesTheBytesThatAreSet)
{
    for (const auto& [request, reply] : std::vector<std::pair<quint32, quint32>>{
             {0, 0}, {1, 0}, {0, 1}, {13, 21}, {239, 240}, {240, 239}}) {
        Exchange to = emptyWith(0);
        copyExchange(filled(request, reply), nullptr, nullptr, to);
        EXPECT_EQ(static_cast<int>(request), prefixOf(to.request, 0xAA));
        EXPECT_EQ(static_cast<int>(reply), prefixOf(to.reply, 0xBB));
    }
}

TEST(Exchange, TakesBytesFromElsewhereAsManyAsItsSizesSay)
{
    Exchange to = emptyWith(0);
    const std::string request(300, '\x11');
    const std::string reply(300, '\x22');
    copyExchange(filled(13, 241), request.data(), reply.data(), to);
    EXPECT_EQ(13, prefixOf(to.request, 0x11));
    EXPECT_EQ(240, prefixOf(to.reply, 0x22));
}

TEST(Exchange, LongFramesAreCutAndTheirSizesTold)
{
    static_assert(Exchange::kMostBytes == 240, "38 words with their addresses, and some room");
    Exchange to = emptyWith(0);
    copyExchange(filled(241, 1000), nullptr, nullptr, to);
    EXPECT_EQ(240, prefixOf(to.request, 0xAA));
    EXPECT_EQ(240, prefixOf(to.reply, 0xBB));
    EXPECT_EQ(241u, to.requestSize);
    EXPECT_EQ(1000u, to.replySize);
    EXPECT_EQ(240u, to.requestKept());
    EXPECT_EQ(240u, to.replyKept());
    to.requestSize = 240;
    to.replySize = 239;
    EXPECT_EQ(240u, to.requestKept());
    EXPECT_EQ(239u, to.replyKept());
}

} // namespace tavmir::host
