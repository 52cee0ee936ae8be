// The bytes of a write request, its record, and the values that enter the caches with it.
#include "frames/Func_Write.h"

#include "support/driver_test.h"
#include "support/records.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class WriteRequest : public DriverTest
{
protected:
    const Protocol& build(const std::vector<RW_VAR>& elements)
    {
        batch = elements;
        makeBatch(batch);
        WriteAnalog();
        return PLC_driver.protocolList.last();
    }

    static std::vector<RW_VAR> elementsOf(int number, int dataType, const QByteArray& value)
    {
        std::vector<RW_VAR> elements;
        for (int i = 0; i < number; ++i) {
            elements.push_back(writeOf(dataType, i, value));
        }
        return elements;
    }

    std::vector<RW_VAR> batch;
};

TEST_F(WriteRequest, OneBit)
{
    PLC_driver.transactionCounter = 5;
    const Protocol& request = build({writeOf(1, 16, hex("01"))});
    EXPECT_EQ(request.frame, hex("00 05 00 00 00 08 01 65 01 00 00 00 10 01"));
    EXPECT_EQ(request.frameLength, 14);
    EXPECT_EQ(diagnostics.lines(),
              QStringList() << expectedLine({"Func_Write", " ", quoted("WriteAnalog"), " ", 109,
                                             "TRACE ", quoted("0005000000080165010000001001")}));
    EXPECT_EQ(diagnostics.types(), std::vector<QtMsgType>{QtDebugMsg});
}

TEST_F(WriteRequest, TwoWords)
{
    const Protocol& request = build({writeOf(4, 32, hex("12 34")), writeOf(4, 33, hex("AB CD"))});
    EXPECT_EQ(request.frame, hex("00 00 00 00 00 0F 01 67 02 00 00 00 20 12 34 00 00 00 21 AB CD"));
    EXPECT_EQ(request.frameLength, 21);
}

TEST_F(WriteRequest, FunctionAndEntryOfEachType)
{
    const int types[5] = {1, 4, 10, 6, 7};
    const char functions[5] = {'e', 'g', 'g', 'm', 'm'};
    const int valueBytes[5] = {1, 2, 2, 4, 4};
    const QByteArray value = hex("A1 B2 C3 D4 E5");
    for (int i = 0; i < 5; ++i) {
        const Protocol& request = build({writeOf(types[i], 0x01020304, value)});
        EXPECT_EQ(request.frame.at(7), functions[i]) << types[i];
        EXPECT_EQ(request.frame.mid(9), hex("01 02 03 04") + value.left(valueBytes[i]))
            << "value bytes in stored order, the rest of the array left out";
        EXPECT_EQ(request.replyLength, 9) << types[i];
    }
}

TEST_F(WriteRequest, TheFullBatches)
{
    const Protocol& words = build(elementsOf(38, 4, hex("00 00")));
    EXPECT_EQ(words.frame.size(), 237);
    EXPECT_EQ(words.frame.left(9), hex("00 00 00 00 00 E7 01 67 26"));
    const Protocol& bits = build(elementsOf(45, 1, hex("00")));
    EXPECT_EQ(bits.frame.size(), 234);
    const Protocol& doubleWords = build(elementsOf(28, 6, hex("00 00 00 00")));
    EXPECT_EQ(doubleWords.frame.size(), 233);
    EXPECT_EQ(doubleWords.frame.left(9), hex("00 02 00 00 00 E3 01 6D 1C"));
    EXPECT_EQ(doubleWords.replyLength, 9);
}

TEST_F(WriteRequest, AShortValueIsFilledWithZeros)
{
    EXPECT_EQ(build({writeOf(6, 1, hex("AA BB"))}).frame.mid(9), hex("00 00 00 01 AA BB 00 00"));
    EXPECT_EQ(build({writeOf(4, 1, hex("AA"))}).frame.mid(9), hex("00 00 00 01 AA 00"));
    EXPECT_EQ(build({writeOf(1, 1, QByteArray())}).frame.mid(9), hex("00 00 00 01 00"));
    EXPECT_EQ(build({writeOf(4, 1, QByteArray()), writeOf(4, 2, hex("01 02"))}).frame.mid(9),
              hex("00 00 00 01 00 00 00 00 00 02 01 02"));
}

TEST_F(WriteRequest, ShortValuesDoNotSendWhatAnEarlierFrameLeft)
{
    build(elementsOf(45, 1, hex("FF")));
    EXPECT_EQ(build({writeOf(6, 1, QByteArray())}).frame.mid(9), hex("00 00 00 01 00 00 00 00"));
}

TEST_F(WriteRequest, TheStationIsTheLowByteOfTheFirstElements)
{
    RW_VAR first = writeOf(4, 0, hex("00 00"));
    first.station = 0x1FE;
    RW_VAR second = writeOf(4, 16, hex("00 00"));
    second.station = 2;
    EXPECT_EQ(build({first, second}).frame.at(6), '\xFE');
}

TEST_F(WriteRequest, TransactionIdsFollowEachOtherAndWrap)
{
    PLC_driver.transactionCounter = 65535;
    EXPECT_EQ(build({writeOf(1, 0, hex("01"))}).frame.left(2), hex("FF FF"));
    EXPECT_EQ(PLC_driver.transactionCounter, 0);
    EXPECT_EQ(build({writeOf(1, 0, hex("01"))}).frame.left(2), hex("00 00"));
}

TEST_F(WriteRequest, TheRecordIsAppendedWithItsDefaults)
{
    PLC_driver.protocolList.append(Protocol());
    RW_VAR first = writeOf(4, 100, hex("01 02"), 5, 6);
    first.addressText = "Main.W";
    const Protocol& request = build({first, writeOf(4, 116, hex("03 04"))});
    ASSERT_EQ(PLC_driver.protocolList.size(), 2);
    EXPECT_EQ(request.replyLength, 9);
    EXPECT_EQ(request.replyDataOffset, 0);
    EXPECT_EQ(request.replyState, 0);
    EXPECT_TRUE(sameRecord(request.var, first));
}

TEST_F(WriteRequest, QuotaAndCountOfRepliesStartAgain)
{
    host.info.replyQuota = 5;
    host.info.replyCount = 6;
    build({writeOf(1, 0, hex("01"))});
    EXPECT_EQ(host.info.replyQuota, 1);
    EXPECT_EQ(host.info.replyCount, 0);
}

TEST_F(WriteRequest, TheBuilderAloneLeavesTheCaches)
{
    build({writeOf(4, 16, hex("34 12"))});
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(WriteRequest, WithTheLinkUpWrittenValuesEnterTheCaches)
{
    batch = {writeOf(4, 16, hex("34 12")), writeOf(4, 32, hex("78 56")),
             writeOf(4, 16, hex("BC 9A"))};
    makeBatch(batch);
    WriteRegister();
    ASSERT_EQ(PLC_driver.protocolList.size(), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x9ABC) << "in batch order, the last one wins";
    EXPECT_EQ(PLC_driver.wordCache.value(32), 0x5678);
    EXPECT_EQ(diagnostics.lines().size(), 1);
}

TEST_F(WriteRequest, EachTypeEntersItsCache)
{
    batch = {writeOf(1, 5, hex("07"))};
    makeBatch(batch);
    WriteRegister();
    EXPECT_EQ(PLC_driver.byteCache.value(5), 7);
    batch = {writeOf(7, 64, hex("A0 86 01 00"))};
    makeBatch(batch);
    WriteRegister();
    EXPECT_EQ(PLC_driver.dwordCache.value(64), 100000u);
    batch = {writeOf(10, 80, hex("41 42"))};
    makeBatch(batch);
    WriteRegister();
    EXPECT_EQ(PLC_driver.wordCache.value(80), 0x4241);
}

TEST_F(WriteRequest, WhileTheLinkIsFailedTheCachesAreLeftAlone)
{
    PLC_driver.commFailed = true;
    batch = {writeOf(4, 16, hex("34 12"))};
    makeBatch(batch);
    WriteRegister();
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    ASSERT_EQ(PLC_driver.protocolList.size(), 1);
    EXPECT_EQ(PLC_driver.protocolList.first().frame,
              hex("00 00 00 00 00 09 01 67 01 00 00 00 10 34 12"));
}

TEST_F(WriteRequest, ATypeWithoutEncodingMakesNoRequestAndOneLine)
{
    host.info.replyQuota = 5;
    QStringList expected;
    for (const int dataType : {0, 2, 3, 5, 8, 9, 11, -1, 1000}) {
        batch = {writeOf(dataType, 16, hex("01 02 03 04")), writeOf(dataType, 32, hex("01"))};
        makeBatch(batch);
        WriteAnalog();
        expected << expectedLine(
            {"Func_Write", " ", quoted("WriteAnalog"), " ", 67, "ERROR ", dataType});
    }
    EXPECT_EQ(diagnostics.lines(), expected);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_EQ(PLC_driver.transactionCounter, 0);
    EXPECT_EQ(host.info.replyQuota, 5);
}

TEST_F(WriteRequest, AnEmptyBatchMakesNone)
{
    for (const int count : {0, -1, INT_MIN}) {
        PLC_driver.batchCount = count;
        WriteAnalog();
        WriteRegister();
    }
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_EQ(PLC_driver.transactionCounter, 0);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(WriteRequest, ABatchThatDoesNotFitTheWorkAreaMakesNone)
{
    // 1026 bytes hold 127 double words: 9 + 127 * 8 = 1025.
    batch = elementsOf(127, 6, hex("01 02 03 04"));
    makeBatch(batch);
    WriteAnalog();
    ASSERT_EQ(PLC_driver.protocolList.size(), 1);
    EXPECT_EQ(PLC_driver.protocolList.first().frame.size(), 1025);
    batch = elementsOf(128, 6, hex("01 02 03 04"));
    makeBatch(batch);
    WriteAnalog();
    EXPECT_EQ(PLC_driver.protocolList.size(), 1);
    WriteRegister();
    PLC_driver.batchCount = INT_MAX;
    WriteAnalog();
    WriteRegister();
    EXPECT_EQ(PLC_driver.protocolList.size(), 1);
    EXPECT_TRUE(PLC_driver.dwordCache.isEmpty()) << "what is not sent is not stored";
}

TEST_F(WriteRequest, TheHookDoesNothing)
{
    RW_VAR var = writeOf(4, 16, hex("01 02"));
    Remote_WriteVar(&var);
    Remote_WriteVar(nullptr);
    EXPECT_TRUE(sameRecord(var, writeOf(4, 16, hex("01 02"))));
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

} // namespace
