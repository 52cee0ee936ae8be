// Handing in values to write.
#include "support/exchange_test.h"
#include "support/label_tree.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class SetData : public ExchangeTest
{
protected:
    // Values of the queued records, in order.
    static QList<QByteArray> queuedValues()
    {
        QList<QByteArray> values;
        for (const RW_VAR& var : PLC_driver.writeVarList) {
            values << var.value;
        }
        return values;
    }

    static bool cachesAreEmpty()
    {
        return PLC_driver.byteCache.isEmpty() && PLC_driver.wordCache.isEmpty() &&
               PLC_driver.dwordCache.isEmpty();
    }
};

typedef QList<QByteArray> Values;
typedef std::vector<int> Addresses;

TEST_F(SetData, ARefusedAddressReturnsZeroAndChangesNothing)
{
    PLC_driver.writeVarList << element(4, 0);
    for (const char* address : {"", "P", "Q.W", "P.Nope", "P.W[1]", "P.Ws[x]"}) {
        EXPECT_EQ(write(address, hex("01 02"), 1), 0) << address;
    }
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_TRUE(cachesAreEmpty());
}

TEST_F(SetData, ATypeWithoutValueReturnsZeroAndChangesNothing)
{
    PLC_driver.writeVarList << element(4, 0);
    for (const qint32 mode : {2, 0}) {
        host.info.writeMode = mode;
        for (const char* address :
             {"P.X0", "P.X2", "P.X3", "P.X5", "P.X8", "P.X9", "P.X11", "P.S"}) {
            EXPECT_EQ(write(address, hex("01 02 03 04"), 2), 0) << address;
        }
    }
    EXPECT_EQ(PLC_driver.writeVarList.size(), 1);
    EXPECT_TRUE(cachesAreEmpty());
}

TEST_F(SetData, WordsAreQueuedOneByOne)
{
    EXPECT_EQ(write("P.Ws[2]", hex("01 00 02 00"), 2), 2);
    EXPECT_EQ(addressesOf(PLC_driver.writeVarList), (Addresses{32, 48}));
    EXPECT_EQ(queuedValues(), Values() << hex("01 00") << hex("02 00"));
    EXPECT_TRUE(cachesAreEmpty());
}

TEST_F(SetData, EveryMemberOfAQueuedRecordIsSet)
{
    write("P.Ws[2]", hex("34 12 78 56"), 2);
    RW_VAR expected = writeOf(4, 32, hex("34 12"), 11, 12);
    expected.hostData3 = 14014;
    expected.hostData4 = 15015;
    expected.status = 0;
    expected.addressText = "P.Ws[2]";
    expected.auxText = "aux";
    expected.station = 7;
    expected.count = 1;
    ASSERT_EQ(PLC_driver.writeVarList.size(), 2);
    EXPECT_TRUE(sameRecord(PLC_driver.writeVarList.at(0), expected));
    expected.elementAddress = 48;
    expected.value = hex("78 56");
    EXPECT_TRUE(sameRecord(PLC_driver.writeVarList.at(1), expected));
}

TEST_F(SetData, TheArgumentStationIsUsedWhileTheModeIsNotZero)
{
    for (const qint32 mode : {1, 2, -1}) {
        host.info.stationMode = mode;
        write("P.W", hex("01 00"), 1);
        EXPECT_EQ(PLC_driver.writeVarList.last().station, 3);
    }
    host.info.stationMode = 0;
    write("P.W", hex("01 00"), 1);
    EXPECT_EQ(PLC_driver.writeVarList.last().station, 7);
}

TEST_F(SetData, OtherWriteModesOnlyStoreInTheCaches)
{
    for (const qint32 mode : {0, 1, 3, -1}) {
        PLC_driver.wordCache.clear();
        host.info.writeMode = mode;
        EXPECT_EQ(write("P.Ws[0]", hex("01 00 02 00"), 2), 0);
        EXPECT_EQ(PLC_driver.wordCache.value(0), 1) << mode;
        EXPECT_EQ(PLC_driver.wordCache.value(16), 2) << mode;
        EXPECT_EQ(PLC_driver.wordCache.size(), 2);
    }
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
    PLC_driver.writeVarList << element(4, 0) << element(4, 0);
    EXPECT_EQ(write("P.W", hex("01 00"), 1), 2) << "the unchanged size";
}

TEST_F(SetData, OtherWriteModesStoreWhateverTheLink)
{
    host.info.writeMode = 0;
    PLC_driver.commFailed = true;
    EXPECT_EQ(write("P.W", hex("01 00"), 1), 0);
    EXPECT_EQ(PLC_driver.wordCache.value(1000), 1);
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
}

TEST_F(SetData, WhileTheLinkIsFailedWritesAreQueuedAndStored)
{
    PLC_driver.commFailed = true;
    EXPECT_EQ(write("P.Ws[0]", hex("01 00 02 00"), 2), 2);
    EXPECT_EQ(PLC_driver.wordCache.value(0), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 2);
    EXPECT_EQ(PLC_driver.writeVarList.size(), 2);
}

TEST_F(SetData, BitsAreReducedToZeroAndOne)
{
    EXPECT_EQ(write("P.Bs[0]", hex("00 05 FF"), 3), 3);
    EXPECT_EQ(queuedValues(), Values() << hex("00") << hex("01") << hex("01"));
    EXPECT_EQ(addressesOf(PLC_driver.writeVarList), (Addresses{10000, 10001, 10002}));
    host.info.writeMode = 0;
    write("P.Bs[0]", hex("80 00 7F"), 3);
    EXPECT_EQ(PLC_driver.byteCache.value(10000), 1);
    EXPECT_EQ(PLC_driver.byteCache.value(10001, 9), 0);
    EXPECT_EQ(PLC_driver.byteCache.value(10002), 1);
}

TEST_F(SetData, DoubleWordsCountTwoUnitsEach)
{
    EXPECT_EQ(write("P.Ds[1]", hex("01 02 03 04 05 06"), 3), 2);
    EXPECT_EQ(queuedValues(), Values() << hex("01 02 03 04") << hex("00 00 00 00"))
        << "the second is not all there";
    EXPECT_EQ(addressesOf(PLC_driver.writeVarList), (Addresses{20032, 20064}));
    PLC_driver.writeVarList.clear();
    EXPECT_EQ(write("P.Us[0]", hex("01 02 03 04 05 06 07 08"), 4), 2);
    EXPECT_EQ(queuedValues(), Values() << hex("01 02 03 04") << hex("05 06 07 08"));
    EXPECT_EQ(PLC_driver.writeVarList.first().dataType, 7);
    EXPECT_EQ(write("P.D", hex("01 02 03 04"), 1), 3);
}

TEST_F(SetData, TextsAreSteppedBy16)
{
    EXPECT_EQ(write("P.T", hex("41 42 43 44 45"), 3), 3);
    EXPECT_EQ(addressesOf(PLC_driver.writeVarList), (Addresses{4000, 4016, 4032}));
    EXPECT_EQ(queuedValues(), Values() << hex("41 42") << hex("43 44") << hex("00 00"));
    EXPECT_EQ(PLC_driver.writeVarList.first().dataType, 10);
    PLC_driver.writeVarList.clear();
    write("P.Ts[1]", hex("41 42 43 44"), 2);
    EXPECT_EQ(addressesOf(PLC_driver.writeVarList), (Addresses{40256, 40272}));
}

TEST_F(SetData, MissingBytesAreWrittenAsZero)
{
    write("P.Ws[0]", hex("01 02 03"), 3);
    EXPECT_EQ(queuedValues(), Values() << hex("01 02") << hex("00 00") << hex("00 00"));
    PLC_driver.writeVarList.clear();
    write("P.Bs[0]", hex("01"), 3);
    EXPECT_EQ(queuedValues(), Values() << hex("01") << hex("00") << hex("00"));
    PLC_driver.writeVarList.clear();
    write("P.Ds[0]", hex("01 02 03"), 1);
    EXPECT_EQ(queuedValues(), Values() << hex("00 00 00 00"));
}

TEST_F(SetData, BytesBeyondTheCountAreIgnored)
{
    EXPECT_EQ(write("P.Ws[0]", hex("01 02 03 04 05 06"), 1), 1);
    EXPECT_EQ(queuedValues(), Values() << hex("01 02"));
}

TEST_F(SetData, AMissingArrayCountsAsEmpty)
{
    EXPECT_EQ(SetRegisterData("P.W", 0, QString(), 0, nullptr, 1, 0, 0), 1);
    EXPECT_EQ(SetRegisterData("P.B", 0, QString(), 0, nullptr, 1, 0, 0), 2);
    EXPECT_EQ(SetRegisterData("P.D", 0, QString(), 0, nullptr, 1, 0, 0), 3);
    EXPECT_EQ(queuedValues(), Values() << hex("00 00") << hex("00") << hex("00 00 00 00"));
}

TEST_F(SetData, WritesAreNotCutAtTheEndOfAnArray)
{
    EXPECT_EQ(write("P.Ws[8]", hex("01 00 02 00 03 00 04 00"), 4), 4);
    EXPECT_EQ(write("P.W", hex("01 00 02 00"), 2), 6) << "nor outside an array";
    EXPECT_EQ(addressesOf(PLC_driver.writeVarList), (Addresses{128, 144, 160, 176, 1000, 1016}));
}

TEST_F(SetData, CountsBelowOneReturnTheSizeAndWriteNothing)
{
    PLC_driver.writeVarList << element(4, 0);
    for (const char* address : {"P.B", "P.W", "P.D", "P.U", "P.T", "P.Ws[0]"}) {
        for (const int count : {0, -1, -2, INT_MIN}) {
            EXPECT_EQ(write(address, hex("01 02 03 04"), count), 1) << address << ' ' << count;
        }
    }
    EXPECT_TRUE(cachesAreEmpty());
}

TEST_F(SetData, ABitOfAnotherTypeWritesNothingAndReturnsTheSize)
{
    PLC_driver.writeVarList << element(4, 0) << element(4, 0);
    // Only words and double words of type 6 take a bit suffix; on a bit it is part of no address.
    EXPECT_EQ(write("P.Bit.b[3]", hex("01"), 1), 3) << "a plain write of the bit itself";
    EXPECT_EQ(PLC_driver.writeVarList.last().dataType, 1);
}

TEST_F(SetData, RecordsAreQueuedBehindTheOthers)
{
    write("P.W", hex("01 00"), 1);
    write("P.B", hex("01"), 1);
    write("P.W", hex("02 00"), 1);
    EXPECT_EQ(queuedValues(), Values() << hex("01 00") << hex("01") << hex("02 00"));
}

TEST_F(SetData, AddressesWrapIn32Bits)
{
    passLabels(
        {label("N", QList<Label_Type_Info>()
                        << variable("W", 4, INT_MAX - 15) << variable("B", 1, INT_MAX)
                        << variable("D", 6, INT_MAX - 31) << textVariable("T", INT_MAX - 15, 1))});
    for (const char* address : {"N.W", "N.B", "N.D", "N.T"}) {
        PLC_driver.writeVarList.clear();
        write(address, QByteArray(), 4);
        EXPECT_EQ(PLC_driver.writeVarList.at(1).elementAddress, INT_MIN) << address;
    }
}

TEST_F(SetData, PlainWritesSayNothing)
{
    write("P.W", hex("01 00"), 1);
    host.info.writeMode = 0;
    write("P.D", hex("01 00 00 00"), 2);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(SetData, WhatIsWrittenLocallyReadsBack)
{
    host.info.writeMode = 0;
    write("P.Ws[0]", hex("01 02 03 04 05 06"), 3);
    EXPECT_EQ(read("P.Ws[0]", 3), hex("01 02 03 04 05 06"));
    write("P.Ds[0]", hex("01 02 03 04 05 06 07 08"), 4);
    EXPECT_EQ(read("P.Ds[0]", 4), hex("01 02 03 04 05 06 07 08"));
    write("P.Bs[0]", hex("01 00 07"), 3);
    EXPECT_EQ(read("P.Bs[0]", 3), hex("01 00 01"));
    write("P.T", "Hello!", 3);
    EXPECT_EQ(read("P.T", 3), QByteArray("Hello!"));
}

TEST_F(SetData, WhatIsQueuedReadsBackOnceItsRequestIsBuilt)
{
    write("P.D", hex("78 56 34 12"), 1);
    EXPECT_EQ(read("P.D", 1), hex("00 00 00 00"));
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(request->frame.mid(7), hex("6D 01 00 00 07 D0 78 56 34 12"));
    EXPECT_EQ(read("P.D", 1), hex("78 56 34 12"));
}

} // namespace
