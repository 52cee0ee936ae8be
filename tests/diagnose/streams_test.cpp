// TCP as it is: segments out of order, sent again, lost to the capture, ports used anew.
#include "made_capture.h"

#include <gtest/gtest.h>

using namespace tavmir;
using namespace tavmir::test;

namespace
{

double figureOf(const diagnose::ConversationReport& report, const std::string& label)
{
    for (const diagnose::Figure& figure : report.figures) {
        if (label == figure.label) {
            return figure.value;
        }
    }
    ADD_FAILURE() << "no figure " << label;
    return -1;
}

} // namespace

TEST(Streams, PutSegmentsInOrder)
{
    MadeCapture capture;
    MadeConnection line(capture);
    const std::string reply = words(0, {{100, 33}, {116, 34}});
    line.connect(0);
    line.request(1, readWords(0, {100, 116}));
    line.early(2, false, 10, reply.substr(10));
    line.reply(3, reply.substr(0, 10));
    line.missed(false, reply.size() - 10); // was sent, early
    line.close(4, true);
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(1, figureOf(report, "replies"));
    EXPECT_EQ(0, figureOf(report, "bytes that the capture lacks"));
}

TEST(Streams, LeaveOutWhatIsSentAgain)
{
    MadeCapture capture;
    MadeConnection line(capture);
    const std::string request = readWords(0, {100});
    line.connect(0);
    line.early(1, true, 0, request);
    line.request(2, request); // the same numbers
    line.reply(3, words(0, {{100, 33}}));
    line.close(4, true);
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(1, figureOf(report, "attempts"));
}

TEST(Streams, GoOnWhereNumbersBeginAgain)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.startAt(0xFFFFFFF0, 0xFFFFFFFA);
    line.connect(0);
    for (int i = 0; i < 5; ++i) {
        line.request(10 * i + 1, readWords(i, {100}));
        line.reply(10 * i + 2, words(i, {{100, 33}}));
    }
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(5, figureOf(report, "replies"));
}

TEST(Streams, FramesComeInPiecesAndSeveralAtOnce)
{
    MadeCapture capture;
    MadeConnection line(capture);
    const std::string request = readWords(0, {100});
    const std::string reply = words(0, {{100, 33}});
    line.connect(0);
    line.request(1, request.substr(0, 4));
    line.request(2, request.substr(4));
    line.reply(3, reply.substr(0, 1));
    line.reply(4, reply.substr(1) + reply);
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("duplicate replies 1", kindsOf(report));
    EXPECT_EQ("2.00 ms", report.slowest.substr(0, 7));
}

TEST(Streams, OneByteThatIsMissingIsCalledOne)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    line.request(1, readWords(0, {100}));
    line.missed(false, 1);
    line.close(602, true);
    EXPECT_EQ("1 byte is missing in the capture; what it held is not judged",
              onlyOne(diagnosisOf(capture)).notes.at(0));
}

TEST(Streams, AReplyThatTheCaptureLacksIsNoTimeOut)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    line.request(1, readWords(0, {100}));
    line.missed(false, words(0, {{100, 33}}).size());
    line.request(600, readWords(1, {100}));
    line.reply(601, words(1, {{100, 33}}));
    line.close(602, true);
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ("15 bytes are missing in the capture; what they held is not judged",
              report.notes.at(0));
    EXPECT_EQ(1, figureOf(report, "attempts not judged"));
    EXPECT_EQ(1, figureOf(report, "replies"));
}

TEST(Streams, WhatComesBehindAGapIsRead)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    line.request(1, readWords(0, {100}));
    line.missed(false, 20); // whatever it was
    line.reply(2, words(0, {{100, 33}}));
    line.request(3, readWords(1, {100}));
    line.reply(4, words(1, {{100, 33}}));
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(20, figureOf(report, "bytes that the capture lacks"));
    EXPECT_EQ(2, figureOf(report, "replies"));
}

TEST(Streams, AReplyToARequestThatTheCaptureLacksIsNotUnasked)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    line.request(1, readWords(0, {100}));
    line.reply(2, words(0, {{100, 33}}));
    line.missed(true, readWords(1, {100}).size());
    line.reply(3, words(1, {{100, 33}}));
    line.request(4, readWords(2, {100}));
    line.reply(5, words(2, {{100, 33}}));
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(13, figureOf(report, "bytes that the capture lacks"));
    EXPECT_EQ(2, figureOf(report, "replies"));
}

TEST(Streams, HalfAReplyThatTheCaptureLacksIsNotCut)
{
    MadeCapture capture;
    MadeConnection line(capture);
    const std::string reply = words(0, {{100, 33}});
    line.connect(0);
    line.request(1, readWords(0, {100}));
    line.reply(2, reply.substr(0, 9));
    line.missed(false, reply.size() - 9);
    line.close(3, true); // says that all of it has come
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(6, figureOf(report, "bytes that the capture lacks"));
}

TEST(Streams, ACaptureMayBeginInTheMiddle)
{
    MadeCapture capture;
    MadeConnection line(capture);
    const std::string reply = words(3, {{100, 33}});
    line.reply(0, reply.substr(5)); // the rest of a reply
    line.reply(1, words(4, {{100, 33}}));
    line.request(2, readWords(5, {100}));
    line.reply(3, words(5, {{100, 33}}));
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("127.0.0.1:5020", report.controller);
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(1, figureOf(report, "requests"));
    EXPECT_EQ(1, figureOf(report, "replies"));
    EXPECT_EQ(1, figureOf(report, "attempts not judged"));
}

TEST(Streams, APortUsedAnewIsAnotherConnection)
{
    MadeCapture capture;
    for (int i = 0; i < 2; ++i) {
        MadeConnection line(capture);
        line.startAt(static_cast<std::uint32_t>(100000000 * (i + 1)), 7);
        line.connect(10 * i);
        line.request(10 * i + 1, readWords(i, {100}));
        line.reply(10 * i + 2, words(i, {{100, 33}}));
    }
    // Its beginning is not in the capture, and its numbers are far away.
    MadeConnection line(capture);
    line.startAt(3000000000, 2000000000);
    line.request(30, readWords(9, {100}));
    line.reply(31, words(9, {{100, 33}}));
    const auto diagnosis = diagnosisOf(capture);
    EXPECT_EQ(3u, diagnosis.connections);
    const auto report = onlyOne(diagnosis);
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(3, figureOf(report, "replies"));
}

TEST(Streams, HostsBesideEachOtherAreToldApart)
{
    MadeCapture capture;
    MadeConnection one(capture, 40000);
    MadeConnection other(capture, 40001);
    one.connect(0);
    other.connect(1);
    one.request(2, readWords(0, {100}));
    other.request(3, readWords(0, {100}));
    one.reply(4, words(0, {{100, 33}}));
    other.reply(5, words(0, {{100, 33}}));
    const auto diagnosis = diagnosisOf(capture);
    ASSERT_EQ(2u, diagnosis.conversations.size());
    for (const auto& report : diagnosis.conversations) {
        EXPECT_EQ("", kindsOf(report));
        EXPECT_EQ(1, figureOf(report, "replies"));
    }
}

TEST(Streams, ConnectionsThatFollowEachOtherAreOneConversation)
{
    MadeCapture capture;
    for (int i = 0; i < 3; ++i) {
        MadeConnection line(capture, 40000 + i);
        line.connect(10 * i);
        line.request(10 * i + 1, readWords(i, {100}));
        line.reply(10 * i + 2, words(i, {{100, 33}}));
        line.close(10 * i + 3, true);
    }
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(3, figureOf(report, "connections"));
    EXPECT_EQ(3, figureOf(report, "connections closed by the host"));
}
