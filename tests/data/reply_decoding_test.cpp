// From the bytes of a reply to the value caches.
#include "data/Func_DealData.h"

#include "support/driver_test.h"
#include "support/records.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class ReplyDecoding : public DriverTest
{
protected:
    // A request in flight for these elements.
    void expectReplyTo(const std::vector<RW_VAR>& elements, int dataOffset = 9)
    {
        batch = elements;
        makeBatch(batch);
        Protocol request;
        request.replyDataOffset = dataOffset;
        if (!batch.empty()) {
            request.var = batch.front();
        }
        PLC_driver.protocolList.clear();
        PLC_driver.protocolList << request << Protocol();
    }

    void store(const QByteArray& bytes)
    {
        QByteArray reply = bytes;
        SaveToLocalDataErea(&reply);
    }

    bool nothingStored() const
    {
        return PLC_driver.byteCache.isEmpty() && PLC_driver.wordCache.isEmpty() &&
               PLC_driver.dwordCache.isEmpty();
    }

    std::vector<RW_VAR> batch;
};

TEST_F(ReplyDecoding, TwoWords)
{
    expectReplyTo({element(4, 100), element(4, 116)});
    store(hex("01 02 03 04 05 06 07 08 09 00 00 00 64 12 34 00 00 00 74 AB CD"));
    EXPECT_EQ(PLC_driver.wordCache.size(), 2);
    EXPECT_EQ(PLC_driver.wordCache.value(100), 0x1234);
    EXPECT_EQ(PLC_driver.wordCache.value(116), 0xABCD);
    EXPECT_TRUE(PLC_driver.byteCache.isEmpty());
    EXPECT_TRUE(PLC_driver.dwordCache.isEmpty());
}

TEST_F(ReplyDecoding, DoubleWords)
{
    expectReplyTo({element(6, 64), element(6, 96)});
    store(hex("00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 86 A0 00 00 00 00 FF EE DD CC"));
    EXPECT_EQ(PLC_driver.dwordCache.value(64), 100000u);
    EXPECT_EQ(PLC_driver.dwordCache.value(96), 0xFFEEDDCCu);
}

TEST_F(ReplyDecoding, ABitIsStoredAsItArrives)
{
    expectReplyTo({element(1, 7), element(1, 8), element(1, 9)});
    store(readReply(1, {0x05, 0, 0xFF}));
    EXPECT_EQ(PLC_driver.byteCache.value(7), 5);
    EXPECT_EQ(PLC_driver.byteCache.value(8, 99), 0);
    EXPECT_EQ(PLC_driver.byteCache.value(9), 255);
}

TEST_F(ReplyDecoding, TextsAreWordsAndType7IsADoubleWord)
{
    expectReplyTo({element(10, 32)});
    store(readReply(2, {0x4142}));
    EXPECT_EQ(PLC_driver.wordCache.value(32), 0x4142);
    expectReplyTo({element(7, 32)});
    store(readReply(4, {0x80000001u}));
    EXPECT_EQ(PLC_driver.dwordCache.value(32), 0x80000001u);
}

TEST_F(ReplyDecoding, HeaderAndEntryAddressesAreNotLookedAt)
{
    expectReplyTo({element(4, 100)});
    store(hex("FF FF FF FF FF FF FF FF FF DE AD BE EF 12 34"));
    EXPECT_EQ(PLC_driver.wordCache.size(), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(100), 0x1234);
}

TEST_F(ReplyDecoding, TheFirstElementDecidesTheTypeOfAll)
{
    expectReplyTo({element(4, 16), element(1, 32)});
    store(readReply(2, {1, 2}));
    EXPECT_EQ(PLC_driver.wordCache.value(32), 2);
    EXPECT_TRUE(PLC_driver.byteCache.isEmpty());
}

TEST_F(ReplyDecoding, ALaterValueReplacesAnEarlierOne)
{
    PLC_driver.wordCache.insert(16, 0xFFFF);
    expectReplyTo({element(4, 16), element(4, 16)});
    store(readReply(2, {1, 2}));
    EXPECT_EQ(PLC_driver.wordCache.size(), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 2);
}

TEST_F(ReplyDecoding, TheFirstEntryBeginsAtTheRequestsOffset)
{
    expectReplyTo({element(4, 16)}, 0);
    store(hex("00 00 00 00 12 34"));
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    expectReplyTo({element(4, 16)}, 3);
    store(hex("00 00 00 00 00 00 00 56 78"));
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x5678);
}

TEST_F(ReplyDecoding, AnOffsetOutsideTheReplyStoresNothing)
{
    for (const int offset : {100, INT_MAX, -1, INT_MIN, -9}) {
        for (const int dataType : {1, 4, 6}) {
            expectReplyTo({element(dataType, 16)}, offset);
            store(readReply(4, {0x12345678}));
        }
    }
    EXPECT_TRUE(nothingStored());
}

TEST_F(ReplyDecoding, OfAShortReplyOnlyWholeValuesAreStored)
{
    for (const int valueBytes : {1, 2, 4}) {
        const int dataType = valueBytes == 1 ? 1 : valueBytes == 2 ? 4 : 6;
        const QByteArray whole = readReply(valueBytes, {1, 2, 3});
        for (int size = 0; size <= whole.size(); ++size) {
            PLC_driver.byteCache.clear();
            PLC_driver.wordCache.clear();
            PLC_driver.dwordCache.clear();
            expectReplyTo({element(dataType, 0), element(dataType, 32), element(dataType, 64)});
            store(whole.left(size));
            const int stored = PLC_driver.byteCache.size() + PLC_driver.wordCache.size() +
                               PLC_driver.dwordCache.size();
            EXPECT_EQ(stored, size < 9 ? 0 : (size - 9) / (4 + valueBytes)) << size;
        }
    }
}

TEST_F(ReplyDecoding, ALongerReplyStoresTheBatchOnly)
{
    expectReplyTo({element(4, 16)});
    store(readReply(2, {1, 2, 3}));
    EXPECT_EQ(PLC_driver.wordCache.size(), 1);
}

TEST_F(ReplyDecoding, AnEmptyBatchStoresNothing)
{
    expectReplyTo({element(4, 16)});
    for (const int count : {0, -1, INT_MIN}) {
        PLC_driver.batchCount = count;
        store(readReply(2, {1, 2, 3}));
    }
    EXPECT_TRUE(nothingStored());
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(ReplyDecoding, ATypeWithoutEncodingStoresNothingAndWritesOneLine)
{
    QStringList expected;
    for (const int dataType : {0, 2, 3, 5, 8, 9, 11, 255, -1}) {
        expectReplyTo({element(dataType, 16), element(dataType, 32)});
        store(readReply(2, {1, 2}));
        expected << expectedLine(
            {"Func_DealData", " ", quoted("SaveToLocalDataErea"), " ", 65, "ERROR ", dataType});
    }
    EXPECT_EQ(diagnostics.lines(), expected);
    EXPECT_TRUE(nothingStored());
}

TEST_F(ReplyDecoding, AMissingReplyStoresNothing)
{
    expectReplyTo({element(4, 16)});
    SaveToLocalDataErea(nullptr);
    EXPECT_TRUE(nothingStored());
}

TEST_F(ReplyDecoding, TheHostsCopyOfTheReplyIsNotChanged)
{
    expectReplyTo({element(4, 16)});
    QByteArray reply = readReply(2, {0x1234});
    const QByteArray copy = reply;
    SaveToLocalDataErea(&reply);
    EXPECT_EQ(copy, readReply(2, {0x1234}));
    EXPECT_EQ(reply, readReply(2, {0x1234}));
}

TEST_F(ReplyDecoding, TheMarkerOfTheHeadRequestSaysWhetherValuesCome)
{
    Protocol request;
    PLC_driver.protocolList << request << request;
    PLC_driver.protocolList.last().var.hostData2 = 1;
    const QByteArray reply = hex("01");
    EXPECT_EQ(CheckGetData(&reply, 1), 1);
    EXPECT_EQ(CheckGetData(nullptr, 0), 1);
    for (const int marker : {1, 7, -1, INT_MIN}) {
        PLC_driver.protocolList.first().var.hostData2 = marker;
        EXPECT_EQ(CheckGetData(&reply, 1), 2);
        EXPECT_EQ(CheckGetData(nullptr, -5), 2);
    }
}

TEST_F(ReplyDecoding, AFailedLinkKeepsTheLastKnownValues)
{
    RW_VAR polled = element(4, 16);
    AddListReadVar(&polled);
    ComCommunication();
    QByteArray reply = readReply(2, {0x1234});
    DataCom(&reply, reply.size());
    ComCommunication();
    DataCom(nullptr, 0);
    EXPECT_TRUE(PLC_driver.commFailed);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
}

} // namespace
