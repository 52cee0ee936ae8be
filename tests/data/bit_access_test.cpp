// Reading and writing single bits of words and double words.
#include "support/exchange_test.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class BitRead : public ExchangeTest
{
};

TEST_F(BitRead, BitsOfAWordOneByteEach)
{
    PLC_driver.wordCache.insert(1000, 0xA5F0);
    EXPECT_EQ(read("P.W.b[0]", 16), hex("00 00 00 00 01 01 01 01 01 00 01 00 00 01 00 01"));
    EXPECT_EQ(read("P.W.b[4]", 1), hex("01"));
    EXPECT_EQ(read("P.W.b[15]", 1), hex("01"));
}

TEST_F(BitRead, AboveTheLastBitThereAreZeros)
{
    PLC_driver.wordCache.insert(1000, 0x4000);
    EXPECT_EQ(read("P.W.b[14]", 4), hex("01 00 00 00"));
    PLC_driver.wordCache.insert(1000, 0xFFFF);
    EXPECT_EQ(read("P.W.b[14]", 4), hex("01 01 00 00"));
    EXPECT_EQ(read("P.W.b[16]", 3), hex("00 00 00"));
    EXPECT_EQ(read("P.W.b[2147483647]", 3), hex("00 00 00"));
}

TEST_F(BitRead, BitsOfADoubleWord)
{
    PLC_driver.dwordCache.insert(2000, 0x80010003u);
    EXPECT_EQ(read("P.D.b[0]", 3), hex("01 01 00"));
    EXPECT_EQ(read("P.D.b[16]", 2), hex("01 00"));
    EXPECT_EQ(read("P.D.b[30]", 4), hex("00 01 00 00"));
    EXPECT_EQ(read("P.D.b[32]", 2), hex("00 00"));
}

TEST_F(BitRead, NegativeNumbersNameNoBit)
{
    PLC_driver.wordCache.insert(1000, 0xFFFF);
    PLC_driver.dwordCache.insert(2000, 0xFFFFFFFFu);
    EXPECT_EQ(read("P.W.b[-2]", 4), hex("00 00 01 01"));
    EXPECT_EQ(read("P.D.b[-1]", 3), hex("00 01 01"));
    EXPECT_EQ(read("P.W.b[-2147483648]", 3), hex("00 00 00"));
    EXPECT_EQ(read("P.W.b[-5]", 3), hex("00 00 00"));
}

TEST_F(BitRead, AWordNeverReceivedReadsZeroAndIsInserted)
{
    EXPECT_EQ(read("P.W.b[3]", 2), hex("00 00"));
    EXPECT_EQ(PLC_driver.wordCache.size(), 1);
    EXPECT_TRUE(PLC_driver.wordCache.contains(1000));
    EXPECT_EQ(PLC_driver.wordCache.value(1000, 9), 0);
    EXPECT_EQ(read("P.D.b[3]", 2), hex("00 00"));
    EXPECT_EQ(PLC_driver.dwordCache.size(), 1);
    EXPECT_EQ(PLC_driver.dwordCache.value(2000, 9), 0u);
}

TEST_F(BitRead, WithoutABitToReadNothingIsInserted)
{
    EXPECT_EQ(read("P.W.b[16]", 2), hex("00 00"));
    EXPECT_EQ(read("P.D.b[32]", 2), hex("00 00"));
    EXPECT_EQ(read("P.W.b[3]", 0), QByteArray());
    EXPECT_EQ(read("P.D.b[3]", -1), QByteArray());
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    EXPECT_TRUE(PLC_driver.dwordCache.isEmpty());
}

TEST_F(BitRead, TheSixteenthBitOfAWordDoesNotComeFromItsNeighbour)
{
    PLC_driver.wordCache.insert(0, 0);
    PLC_driver.wordCache.insert(16, 0xFFFF);
    EXPECT_EQ(read("P.Ws[0].b[15]", 3), hex("00 00 00"));
    EXPECT_EQ(read("P.Ws[1].b[15]", 1), hex("01"));
}

class BitWrite : public ExchangeTest
{
protected:
    static QString infoLine(int number, const char* auxText, int address, int count,
                            const char* value)
    {
        return expectedLine({"Func_GetOrSetData", " ", quoted("SetRegisterData"), " ", number,
                             "INFO ", quoted(auxText), address, count, quoted(value)});
    }
};

TEST_F(BitWrite, ChangesOneBitOfTheCachedWordAndQueuesTheWord)
{
    PLC_driver.wordCache.insert(1000, 0x0100);
    EXPECT_EQ(write("P.W.b[3]", hex("01"), 1), 1);
    RW_VAR expected = writeOf(4, 1000, hex("08 01"), 11, 12);
    expected.hostData3 = 14014;
    expected.hostData4 = 15015;
    expected.addressText = "P.W.b[3]";
    expected.auxText = "aux";
    expected.station = 7;
    expected.count = 2;
    ASSERT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_TRUE(sameRecord(PLC_driver.writeVarList.first(), expected));
    EXPECT_EQ(PLC_driver.wordCache.value(1000), 0x0100) << "stored when the request is built";
    EXPECT_EQ(diagnostics.lines(), QStringList() << infoLine(362, "aux", 1000, 2, "0801"));
}

TEST_F(BitWrite, ChangesOneBitOfTheCachedDoubleWord)
{
    PLC_driver.dwordCache.insert(2000, 0x80000001u);
    EXPECT_EQ(write("P.D.b[31]", hex("00"), 1), 1);
    ASSERT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_EQ(PLC_driver.writeVarList.first().dataType, 6);
    EXPECT_EQ(PLC_driver.writeVarList.first().value, hex("01 00 00 00"));
    EXPECT_EQ(PLC_driver.writeVarList.first().count, 4);
    EXPECT_EQ(PLC_driver.writeVarList.first().hostData2, 1);
    EXPECT_EQ(diagnostics.lines(), QStringList() << infoLine(412, "aux", 2000, 4, "01000000"));
}

TEST_F(BitWrite, SetsAndClearsAsManyBitsAsThereAreBytes)
{
    PLC_driver.wordCache.insert(1000, 0x00F0);
    write("P.W.b[2]", hex("01 FF 00 00 01"), 1);
    // Bits 2 and 3 set, 4 and 5 cleared, 6 set again; the count is not looked at.
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("CC 00"));
    write("P.W.b[2]", hex("01"), 16);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("F4 00"));
}

TEST_F(BitWrite, BytesBeyondTheLastBitAreIgnored)
{
    write("P.W.b[14]", hex("01 01 01 01 01"), 5);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("00 C0"));
    write("P.D.b[30]", hex("01 01 01 01 01"), 5);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("00 00 00 C0"));
}

TEST_F(BitWrite, ANumberAboveTheLimitDeliversTheWordUnchanged)
{
    PLC_driver.wordCache.insert(1000, 0x1234);
    EXPECT_EQ(write("P.W.b[16]", hex("01"), 1), 1);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("34 12"));
    PLC_driver.dwordCache.insert(2000, 0x12345678);
    EXPECT_EQ(write("P.D.b[32]", hex("01"), 1), 2);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("78 56 34 12"));
    EXPECT_EQ(diagnostics.lines().size(), 2);
}

TEST_F(BitWrite, NegativeNumbersTouchNoBit)
{
    PLC_driver.wordCache.insert(1000, 0x0000);
    EXPECT_EQ(write("P.W.b[-1]", hex("01"), 1), 1);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("00 00"));
    EXPECT_EQ(write("P.W.b[-2]", hex("01 01 01 00 01"), 1), 2);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("05 00")) << "0 and up as usual";
    EXPECT_EQ(write("P.D.b[-1]", hex("01 01"), 1), 3);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("01 00 00 00"));
    EXPECT_EQ(write("P.D.b[-2147483648]", hex("01 01"), 1), 4);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("00 00 00 00"));
}

TEST_F(BitWrite, WithoutBytesTheWordIsDeliveredUnchanged)
{
    PLC_driver.wordCache.insert(1000, 0x1234);
    EXPECT_EQ(write("P.W.b[3]", QByteArray(), 1), 1);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("34 12"));
    EXPECT_EQ(SetRegisterData("P.W.b[3]", 0, QString(), 0, nullptr, 1, 0, 0), 2);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("34 12"));
}

TEST_F(BitWrite, AWordNeverReceivedCountsAsZeroAndIsInserted)
{
    EXPECT_EQ(write("P.W.b[0]", hex("01"), 1), 1);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("01 00"));
    EXPECT_TRUE(PLC_driver.wordCache.contains(1000));
    EXPECT_EQ(PLC_driver.wordCache.value(1000, 9), 0);
    EXPECT_EQ(write("P.D.b[0]", hex("01"), 1), 2);
    EXPECT_TRUE(PLC_driver.dwordCache.contains(2000));
    EXPECT_EQ(PLC_driver.dwordCache.value(2000, 9), 0u);
    EXPECT_EQ(PLC_driver.wordCache.size(), 1);
    EXPECT_EQ(PLC_driver.dwordCache.size(), 1);
}

TEST_F(BitWrite, StoredLocallyItsCountClearsTheKeysBehindTheWord)
{
    host.info.writeMode = 0;
    PLC_driver.wordCache.insert(1000, 0x0100);
    PLC_driver.wordCache.insert(1001, 0xFFFF);
    PLC_driver.wordCache.insert(1002, 0xFFFF);
    EXPECT_EQ(write("P.W.b[3]", hex("01"), 1), 0);
    EXPECT_EQ(PLC_driver.wordCache.value(1000), 0x0108);
    EXPECT_EQ(PLC_driver.wordCache.value(1001, 9), 0);
    EXPECT_EQ(PLC_driver.wordCache.value(1002), 0xFFFF);
    PLC_driver.dwordCache.insert(2003, 0xFFFFFFFFu);
    PLC_driver.dwordCache.insert(2004, 0xFFFFFFFFu);
    EXPECT_EQ(write("P.D.b[8]", hex("01"), 1), 0);
    EXPECT_EQ(PLC_driver.dwordCache.value(2000), 0x100u);
    EXPECT_EQ(PLC_driver.dwordCache.value(2001, 9), 0u);
    EXPECT_EQ(PLC_driver.dwordCache.value(2003, 9), 0u);
    EXPECT_EQ(PLC_driver.dwordCache.value(2004), 0xFFFFFFFFu);
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
}

TEST_F(BitWrite, WhileTheLinkIsFailedItIsQueuedAndStored)
{
    PLC_driver.commFailed = true;
    EXPECT_EQ(write("P.W.b[3]", hex("01"), 1), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(1000), 8);
}

TEST_F(BitWrite, TwoBitsInARowBothArriveOnlyWhenTheFirstWasStored)
{
    host.info.writeMode = 0;
    write("P.W.b[0]", hex("01"), 1);
    write("P.W.b[1]", hex("01"), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(1000), 3);
}

TEST_F(BitWrite, AQueuedBitWriteSendsTheWholeWord)
{
    PLC_driver.wordCache.insert(1000, 0x0100);
    write("P.W.b[3]", hex("01"), 1);
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(request->frame, hex("00 00 00 00 00 09 07 67 01 00 00 03 E8 08 01"));
    EXPECT_EQ(PLC_driver.wordCache.value(1000), 0x0108);
    EXPECT_EQ(PLC_driver.wordCache.value(1001, 9), 0);
}

TEST_F(BitWrite, TheLineQuotesTheAuxText)
{
    QByteArray data = hex("01");
    SetRegisterData("P.W.b[0]", 0, "say \"hi\"", 0, &data, 1, 0, 0);
    EXPECT_EQ(diagnostics.lines(), QStringList() << infoLine(362, "say \"hi\"", 1000, 2, "0100"));
}

TEST_F(BitWrite, OfAnArrayElement)
{
    PLC_driver.wordCache.insert(32, 0xF000);
    write("P.Ws[2].b[0]", hex("01"), 1);
    EXPECT_EQ(PLC_driver.writeVarList.last().elementAddress, 32);
    EXPECT_EQ(PLC_driver.writeVarList.last().value, hex("01 F0"));
}

} // namespace
