// Reading cached values.
#include "support/exchange_test.h"
#include "support/label_tree.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class GetData : public ExchangeTest
{
protected:
    static QByteArray zeros(int size) { return QByteArray(size, '\0'); }
};

TEST_F(GetData, ARefusedAddressGivesTwoZerosPerCount)
{
    for (const char* address : {"", "P", "Q.W", "P.Nope", "P.W[1]", "P.Ws[x]"}) {
        EXPECT_EQ(read(address, 3, 0), zeros(6)) << address;
        EXPECT_EQ(read(address, 0, 0), QByteArray()) << address;
        EXPECT_EQ(read(address, -4, 0), QByteArray()) << address;
    }
}

TEST_F(GetData, WordsOfAnArrayLeastSignificantByteFirst)
{
    PLC_driver.wordCache.insert(0, 0x1234);
    PLC_driver.wordCache.insert(32, 0x00FF);
    EXPECT_EQ(read("P.Ws[0]", 3), hex("34 12 00 00 FF 00"));
}

TEST_F(GetData, OutsideAnArrayOnlyOneElementIsRead)
{
    PLC_driver.wordCache.insert(1000, 0x1234);
    PLC_driver.wordCache.insert(1016, 0x5678);
    EXPECT_EQ(read("P.W", 3), hex("34 12 00 00 00 00"));
    PLC_driver.byteCache.insert(100, 7);
    PLC_driver.byteCache.insert(101, 8);
    EXPECT_EQ(read("P.B", 3), hex("07 00 00"));
    PLC_driver.dwordCache.insert(2000, 0x01020304);
    PLC_driver.dwordCache.insert(2032, 5);
    EXPECT_EQ(read("P.D", 4), hex("04 03 02 01 00 00 00 00"));
    PLC_driver.dwordCache.insert(3000, 9);
    PLC_driver.dwordCache.insert(3032, 5);
    EXPECT_EQ(read("P.U", 4), hex("09 00 00 00 00 00 00 00"));
}

TEST_F(GetData, ElementsOfAnArrayAreCutToItsLimit)
{
    for (int i = 0; i < 20; ++i) {
        PLC_driver.byteCache.insert(10000 + i, static_cast<unsigned char>(i + 1));
        PLC_driver.wordCache.insert(16 * i, static_cast<unsigned short>(i + 1));
        PLC_driver.dwordCache.insert(20000 + 32 * i, static_cast<unsigned int>(i + 1));
    }
    QByteArray bits = read("P.Bs[0]", 15);
    ASSERT_EQ(bits.size(), 15);
    EXPECT_EQ(bits.at(9), 10);
    EXPECT_EQ(bits.at(10), 0);
    QByteArray words = read("P.Ws[2]", 15);
    ASSERT_EQ(words.size(), 30);
    EXPECT_EQ(words.at(0), 3);
    EXPECT_EQ(words.at(18), 12) << "the limit does not shrink with the index";
    EXPECT_EQ(words.at(20), 0);
    QByteArray doubleWords = read("P.Ds[0]", 30);
    ASSERT_EQ(doubleWords.size(), 60);
    EXPECT_EQ(doubleWords.at(36), 10);
    EXPECT_EQ(doubleWords.at(40), 0);
}

TEST_F(GetData, BitsAreOneKeyApart)
{
    PLC_driver.byteCache.insert(10002, 5);
    PLC_driver.byteCache.insert(10004, 0xFF);
    EXPECT_EQ(read("P.Bs[1]", 4), hex("00 05 00 FF"));
}

TEST_F(GetData, DoubleWordsCountTwoUnitsEach)
{
    PLC_driver.dwordCache.insert(20000, 0x04030201);
    PLC_driver.dwordCache.insert(20032, 0x08070605);
    EXPECT_EQ(read("P.Ds[0]", 3), hex("01 02 03 04 05 06 07 08"));
    EXPECT_EQ(read("P.Ds[0]", 4), hex("01 02 03 04 05 06 07 08"));
    EXPECT_EQ(read("P.Ds[0]", 2), hex("01 02 03 04"));
    EXPECT_EQ(read("P.Ds[0]", 1), hex("01 02 03 04"));
    EXPECT_EQ(read("P.D", 3).size(), 8);
    PLC_driver.dwordCache.insert(30032, 0xFFFEFDFC);
    EXPECT_EQ(read("P.Us[0]", 4), hex("00 00 00 00 FC FD FE FF"));
}

TEST_F(GetData, TextsAreSteppedBy16AndNotCut)
{
    PLC_driver.wordCache.insert(4000, 0x4241);
    PLC_driver.wordCache.insert(4016, 0x4443);
    PLC_driver.wordCache.insert(4048, 0xFFFF);
    EXPECT_EQ(read("P.T", 3), hex("41 42 43 44 00 00"));
    for (int i = 0; i < 20; ++i) {
        PLC_driver.wordCache.insert(40000 + 256 + 16 * i, static_cast<unsigned short>(i + 1));
    }
    QByteArray text = read("P.Ts[1]", 15);
    ASSERT_EQ(text.size(), 30);
    for (int i = 0; i < 15; ++i) {
        EXPECT_EQ(text.at(2 * i), i + 1);
    }
}

TEST_F(GetData, ATextOutsideAnArrayIsReadWhole)
{
    passLabels({label("N", QList<Label_Type_Info>() << textVariable("T", 48, 999))});
    PLC_driver.wordCache.insert(48, 1);
    PLC_driver.wordCache.insert(64, 2);
    EXPECT_EQ(read("N.T", 2), hex("01 00 02 00"));
}

TEST_F(GetData, ValuesNeverReceivedAreZeroAndNotInserted)
{
    EXPECT_EQ(read("P.Bs[0]", 3), zeros(3));
    EXPECT_EQ(read("P.Ws[0]", 3), zeros(6));
    EXPECT_EQ(read("P.Ds[0]", 3), zeros(8));
    EXPECT_EQ(read("P.T", 3), zeros(6));
    EXPECT_TRUE(PLC_driver.byteCache.isEmpty());
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    EXPECT_TRUE(PLC_driver.dwordCache.isEmpty());
}

TEST_F(GetData, TypesWithoutValueGiveTwoZerosPerCount)
{
    for (const char* address : {"P.X0", "P.X2", "P.X3", "P.X5", "P.X8", "P.X9", "P.X11", "P.S"}) {
        EXPECT_EQ(read(address, 3), zeros(6)) << address;
        EXPECT_EQ(read(address, -3), QByteArray()) << address;
    }
}

TEST_F(GetData, CountsBelowOneReadNothing)
{
    PLC_driver.byteCache.insert(100, 1);
    PLC_driver.byteCache.insert(10000, 1);
    PLC_driver.wordCache.insert(1000, 1);
    PLC_driver.wordCache.insert(0, 1);
    PLC_driver.wordCache.insert(4000, 1);
    PLC_driver.dwordCache.insert(2000, 1);
    PLC_driver.dwordCache.insert(20000, 1);
    for (const char* address : {"P.B", "P.Bs[0]", "P.W", "P.Ws[0]", "P.T", "P.Ts[0]", "P.D",
                                "P.Ds[0]", "P.W.b[1]", "P.D.b[1]", "P.Bit.b[1]"}) {
        for (const int count : {0, -1, -2, -3, -1073741825, -1073741830, INT_MIN}) {
            EXPECT_EQ(read(address, count), QByteArray()) << address << ' ' << count;
        }
    }
    for (const int count : {0, -1, -1073741825, INT_MIN}) {
        EXPECT_EQ(read("P.Nope", count, 0), QByteArray()) << count;
        EXPECT_EQ(read("P.X3", count), QByteArray()) << count;
    }
}

TEST_F(GetData, ASizeThatWrapsBelowZeroIsNoSize)
{
    PLC_driver.wordCache.insert(1000, 1);
    PLC_driver.wordCache.insert(0, 1);
    PLC_driver.wordCache.insert(4000, 1);
    PLC_driver.dwordCache.insert(2000, 1);
    PLC_driver.dwordCache.insert(20000, 1);
    for (const char* address : {"P.W", "P.Ws[0]", "P.T", "P.Ts[0]", "P.D", "P.Ds[0]", "P.X3"}) {
        for (const int count : {0x40000000, 0x60000000, INT_MAX - 1, INT_MAX}) {
            EXPECT_EQ(read(address, count), QByteArray()) << address << ' ' << count;
        }
    }
}

TEST_F(GetData, ANegativeLimitReadsNothing)
{
    passLabels({label("N", QList<Label_Type_Info>()
                               << arrayVariable("W", 4, 16, QList<int>() << 5 << 3)
                               << arrayVariable("B", 1, 16, QList<int>() << 5 << 5)
                               << arrayVariable("D", 6, 16, QList<int>() << 5 << -100))});
    PLC_driver.wordCache.insert(16, 1);
    PLC_driver.byteCache.insert(16, 1);
    PLC_driver.dwordCache.insert(16, 1);
    EXPECT_EQ(read("N.W[5]", 2), zeros(4));
    EXPECT_EQ(read("N.B[5]", 2), zeros(2));
    EXPECT_EQ(read("N.D[5]", 2), zeros(4));
}

TEST_F(GetData, KeysWrapIn32Bits)
{
    passLabels({label("N", QList<Label_Type_Info>()
                               << arrayVariable("W", 4, INT_MAX - 15, QList<int>() << 0 << 5)
                               << textVariable("T", INT_MAX - 15, 1))});
    PLC_driver.wordCache.insert(INT_MAX - 15, 1);
    PLC_driver.wordCache.insert(INT_MIN, 2);
    EXPECT_EQ(read("N.W[0]", 2), hex("01 00 02 00"));
    EXPECT_EQ(read("N.T", 2), hex("01 00 02 00"));
}

TEST_F(GetData, WithoutABufferNothingIsStored)
{
    PLC_driver.wordCache.insert(1000, 1);
    EXPECT_EQ(GetRegisterData("P.W", 0, 0, 0, nullptr, 3), 1);
    EXPECT_EQ(GetRegisterData("P.Nope", 0, 0, 0, nullptr, 3), 0);
    EXPECT_TRUE(isFree(PLC_driver.cacheMutex));
}

TEST_F(GetData, TheUnusedArgumentsChangeNothing)
{
    PLC_driver.wordCache.insert(1000, 0x1234);
    QByteArray data;
    EXPECT_EQ(GetRegisterData("P.W", -1, INT_MAX, INT_MIN, &data, 1), 1);
    EXPECT_EQ(data, hex("34 12"));
}

TEST_F(GetData, ReadingSaysNothing)
{
    read("P.W", 1);
    read("P.W.b[1]", 1);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

} // namespace
