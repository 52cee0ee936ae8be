// The station belongs to the element on the wire, however its address is spelt.
#include "running_session.h"

namespace tavmir::host
{

namespace
{

constexpr int kDefault = 1;
constexpr int kOfWords = 2;
constexpr int kOfDoubleWords = 3;

class StationBySpelling : public RunningSession
{
protected:
    void SetUp() override
    {
        RunningSession::SetUp();
        Setting setting;
        setting.connection = ", \"stationMode\": \"own\", \"station\": 1";
        setting.polled = R"(
            { "address": "M.w", "station": 2 }, { "address": "M.a", "station": 2 },
            { "address": "M.hexed[B]", "station": 2 }, { "address": "M.names", "station": 2 },
            { "address": "M.d.b[3]", "station": 3 }, { "address": "M.pair[4]", "station": 3 })";
        options_.polls = false; // every request is one of the test's
        open(setting);
    }

    // The number that each station has at the address.
    void setAll(char readFunction, quint32 address, quint32 first)
    {
        for (const int station : {kDefault, kOfWords, kOfDoubleWords}) {
            controller_.setAt(station, readFunction, address,
                              first * static_cast<quint32>(station));
        }
    }

    // All requests so far are of one station.
    void expectOnly(int station)
    {
        for (const QByteArray& request : controller_.requests("defglm")) {
            EXPECT_EQ(station, stationOf(request)) << request.toHex().toStdString();
        }
    }
};

} // namespace

TEST_F(StationBySpelling, BitOfAPolledWord)
{
    setAll('f', kWordAt, 0x0100);
    EXPECT_EQ("done", write("M.w.b[4]", "1").state);
    EXPECT_EQ(0x0210u, controller_.getAt(kOfWords, 'f', kWordAt));
    EXPECT_EQ(0x0100u, controller_.getAt(kDefault, 'f', kWordAt));
    expectOnly(kOfWords);
}

TEST_F(StationBySpelling, DoubleWordOfAPolledBit)
{
    setAll('l', kDwordAt, 0x01000000);
    EXPECT_EQ("done", write("M.d", "7").state);
    EXPECT_EQ(7u, controller_.getAt(kOfDoubleWords, 'l', kDwordAt));
    EXPECT_EQ(0x01000000u, controller_.getAt(kDefault, 'l', kDwordAt));
    EXPECT_EQ("done", write("M.d.b[30]", "1").state);
    EXPECT_EQ(0x40000007u, controller_.getAt(kOfDoubleWords, 'l', kDwordAt));
    expectOnly(kOfDoubleWords);
}

TEST_F(StationBySpelling, IndexWithAZeroInFront)
{
    setAll('f', kArrayAt + 3 * 16, 100);
    EXPECT_EQ("done", write("M.a[03]", "8").state);
    EXPECT_EQ(8u, controller_.getAt(kOfWords, 'f', kArrayAt + 3 * 16));
    EXPECT_EQ(100u, controller_.getAt(kDefault, 'f', kArrayAt + 3 * 16));
    EXPECT_EQ("done", write("M.pair[0004]", "9").state);
    EXPECT_EQ(9u, controller_.getAt(kOfDoubleWords, 'l', kPairAt + 4 * 32));
    EXPECT_EQ(0u, controller_.getAt(kDefault, 'l', kPairAt + 4 * 32));
}

TEST_F(StationBySpelling, IndexInTheOtherCase)
{
    EXPECT_EQ("done", write("M.hexed[b]", "8").state);
    EXPECT_EQ(8u, controller_.getAt(kOfWords, 'f', kHexedAt + 16));
    expectOnly(kOfWords);
}

TEST_F(StationBySpelling, ElementOfAPolledArrayOfTexts)
{
    EXPECT_EQ("done", write("M.names[02]", "abc").state);
    EXPECT_EQ(0x6261u, controller_.getAt(kOfWords, 'f', kNamesAt + 256));
    EXPECT_EQ(0x0063u, controller_.getAt(kOfWords, 'f', kNamesAt + 256 + 16));
    expectOnly(kOfWords);
}

TEST_F(StationBySpelling, OtherNameOfTheSameElement)
{
    EXPECT_EQ("done", write("M.alias", "5").state);
    EXPECT_EQ("done", write("M.alias.b[7]", "1").state);
    EXPECT_EQ(0x85u, controller_.getAt(kOfWords, 'f', kWordAt));
    expectOnly(kOfWords);
}

TEST_F(StationBySpelling, ReadsShowTheElementsOwnStation)
{
    setAll('f', kWordAt, 0x1010);
    setAll('f', kArrayAt + 3 * 16, 100);
    setAll('l', kDwordAt, 1000);
    EXPECT_EQ("200", read("M.a[03]").value);
    EXPECT_EQ("1", read("M.w.b[5]").value); // of 0x2020; the default station has 0x1010
    EXPECT_EQ("8224", read("M.alias").value);
    EXPECT_EQ("3000", read("M.d").value);
    EXPECT_EQ("8224", read("M.w").value);
}

TEST_F(StationBySpelling, WhatIsNotPolledGoesToTheDefaultStation)
{
    setAll('f', kManyAt, 100);
    EXPECT_EQ("100", read("M.many[0]").value);
    EXPECT_EQ("done", write("M.many[1]", "4").state);
    EXPECT_EQ(4u, controller_.getAt(kDefault, 'f', kManyAt + 16));
    EXPECT_EQ("done", write("M.hexed[A]", "6").state); // the neighbour of a polled one
    EXPECT_EQ(6u, controller_.getAt(kDefault, 'f', kHexedAt));
    expectOnly(kDefault);
}

} // namespace tavmir::host
