// Frames in words, and the names of what they carry.
#include "controller/element_names.h"
#include "controller/trace.h"
#include "frames.h"

#include <gtest/gtest.h>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

ElementNames someNames()
{
    ElementNames names;
    names.add(6000, 128, "Main.Title");
    names.add(100, 1, "Main.Run");
    names.add(3000, 16, "Main.W");
    names.add(3000, 32, "Main.Wide");
    names.add(3008, 1, "Main.Inside");
    names.sort();
    return names;
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

TEST(ElementNames, FindsByAddressAndWidth)
{
    const ElementNames names = someNames();
    EXPECT_EQ(names.nameOf(100, 1), "Main.Run");
    EXPECT_EQ(names.nameOf(3000, 16), "Main.W");
    EXPECT_EQ(names.nameOf(3000, 32), "Main.Wide");
}

TEST(ElementNames, GivesTheDistanceIntoAVariableThatReachesOver)
{
    const ElementNames names = someNames();
    EXPECT_EQ(names.nameOf(6000, 16), "Main.Title+0");
    EXPECT_EQ(names.nameOf(6016, 16), "Main.Title+16");
    EXPECT_EQ(names.nameOf(6112, 16), "Main.Title+112");
    EXPECT_EQ(names.nameOf(3005, 1), "Main.W+5");
    EXPECT_EQ(names.nameOf(3016, 16), "Main.Wide+16");
}

TEST(ElementNames, GivesTheAddressWhenNothingIsThere)
{
    const ElementNames names = someNames();
    EXPECT_EQ(names.nameOf(5, 16), "5");
    EXPECT_EQ(names.nameOf(100, 16), "100");
    EXPECT_EQ(names.nameOf(6128, 16), "6128");
    EXPECT_EQ(names.nameOf(4294967295u, 32), "4294967295");
    EXPECT_EQ(ElementNames().nameOf(7, 1), "7");
}

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
