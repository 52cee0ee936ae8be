// Frames in words, and the names of what they carry.
#include "controller/trace.h"
#include "frames.h"

#include "project/project_reader.h"

#include <gtest/gtest.h>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

const char kPlant[] = R"({
  "connection": { "host": "127.0.0.1", "port": 5020 },
  "labels": [ { "name": "Main", "variables": [
    { "name": "Run", "type": "bit", "address": 100 },
    { "name": "W", "type": "word", "address": 3000 },
    { "name": "Wide", "type": "dword", "address": 3000 },
    { "name": "Temp", "type": "real", "address": 5000 },
    { "name": "Title", "type": "text", "address": 6000, "words": 3 } ] } ],
  "polled": [ { "address": "Main.Run" } ]
})";

tavmir::project::ElementNames someNames()
{
    const auto outcome = tavmir::project::readProject(kPlant, "plant");
    EXPECT_TRUE(outcome.project) << outcome.error.toStdString();
    return tavmir::project::ElementNames(outcome.project.value_or(tavmir::project::Project()));
}

std::string requestLine(const QByteArray& request)
{
    return requestInWords(request, parseRequest(request), someNames()).toStdString();
}

std::string replyLine(const QByteArray& reply)
{
    return replyInWords(reply, someNames()).toStdString();
}

} // namespace

TEST(Trace, ShowsReads)
{
    EXPECT_EQ(requestLine(readFrame(7, 1, 102, {3000, 116})),
              "#7 station 1 read words: Main.W, 116");
    EXPECT_EQ(replyLine(frame(7, 1, 102, 2, hex("00000BB8 1234 00000074 0001"))),
              "#7 station 1 read words: Main.W=4660, 116=1");
    EXPECT_EQ(requestLine(readFrame(8, 2, 100, {100})), "#8 station 2 read bits: Main.Run");
    EXPECT_EQ(replyLine(frame(9, 1, 108, 1, hex("00000BB8 FFFFFFFF"))),
              "#9 station 1 read double words: Main.Wide=4294967295");
}

TEST(Trace, ShowsWrites)
{
    EXPECT_EQ(requestLine(writeFrame(7, 1, 103, {{3000, hex("3412")}})),
              "#7 station 1 write words: Main.W=4660");
    EXPECT_EQ(requestLine(writeFrame(7, 1, 101, {{100, hex("01")}})),
              "#7 station 1 write bits: Main.Run=1");
    EXPECT_EQ(requestLine(writeFrame(7, 1, 109, {{3000, hex("78563412")}})),
              "#7 station 1 write double words: Main.Wide=305419896");
    EXPECT_EQ(replyLine(frame(7, 1, 103, 1)), "#7 station 1 write words: 1 done");
}

TEST(Trace, ShowsFloatsAndTexts)
{
    EXPECT_EQ(replyLine(frame(9, 1, 108, 2, hex("00001388 40200000 00000BB8 00000007"))),
              "#9 station 1 read double words: Main.Temp=2.5, Main.Wide=7");
    EXPECT_EQ(requestLine(writeFrame(9, 1, 109, {{5000, hex("000020C0")}})),
              "#9 station 1 write double words: Main.Temp=-2.5");
    EXPECT_EQ(requestLine(readFrame(9, 1, 102, {6000, 6016, 6032, 3000})),
              "#9 station 1 read words: Main.Title, Main.W");
    EXPECT_EQ(replyLine(frame(9, 1, 102, 4,
                              hex("00001770 6548 00001780 6C6C 00001790 006F 00000BB8 0001"))),
              "#9 station 1 read words: Main.Title=\"Hello\", Main.W=1");
}

TEST(Trace, ShowsExceptions)
{
    EXPECT_EQ(requestLine(frame(7, 1, 66, 1)),
              "#7 station 1 function 66: exception 1 (illegal function)");
    EXPECT_EQ(requestLine(frame(7, 1, 102, 9)),
              "#7 station 1 read words: exception 3 (illegal data value)");
    EXPECT_EQ(replyLine(frame(7, 1, 102 | 0x80, 3)),
              "#7 station 1 read words: exception 3 (illegal data value)");
    EXPECT_EQ(replyLine(frame(7, 1, 103 | 0x80, 4)),
              "#7 station 1 write words: exception 4 (device failure)");
    EXPECT_EQ(replyLine(frame(7, 1, 103 | 0x80, 200)), "#7 station 1 write words: exception 200");
}

TEST(Trace, ShowsWhatFaultsLeave)
{
    EXPECT_EQ(replyLine(QByteArray()), "0 bytes");
    EXPECT_EQ(replyLine(hex("0007 0000 0009 01 66")), "8 bytes");
    EXPECT_EQ(replyLine(frame(7, 1, 102, 2, hex("00000BB8 1234 000000"))),
              "#7 station 1 read words: Main.W=4660, and 3 bytes");
    EXPECT_EQ(replyLine(frame(7, 1, 68, 2, hex("00"))), "#7 station 1 function 68, 10 bytes");
}
