// The bytes of a read request, and the record that is queued with it.
#include "frames/read_request.h"

#include "support/driver_test.h"
#include "support/records.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class ReadRequest : public DriverTest
{
protected:
    const Protocol& build(const std::vector<RW_VAR>& elements)
    {
        batch = elements;
        makeBatch(batch);
        ReadAnalog();
        return PLC_driver.protocolList.last();
    }

    static std::vector<RW_VAR> elementsOf(int number, int dataType)
    {
        std::vector<RW_VAR> elements;
        for (int i = 0; i < number; ++i) {
            elements.push_back(element(dataType, 0x01020300 + i));
        }
        return elements;
    }

    std::vector<RW_VAR> batch;
};

TEST_F(ReadRequest, TwoWords)
{
    PLC_driver.transactionCounter = 258;
    const Protocol& request = build({element(4, 100), element(4, 101)});
    EXPECT_EQ(request.frame, hex("01 02 00 00 00 0B 01 66 02 00 00 00 64 00 00 00 65"));
    EXPECT_EQ(request.frameLength, 17);
    EXPECT_EQ(request.replyLength, 21);
}

TEST_F(ReadRequest, OneBit)
{
    const Protocol& request = build({element(1, 4660, 3)});
    EXPECT_EQ(request.frame, hex("00 00 00 00 00 07 03 64 01 00 00 12 34"));
    EXPECT_EQ(request.replyLength, 14);
}

TEST_F(ReadRequest, FunctionAndReplyLengthOfEachType)
{
    const int types[5] = {1, 4, 10, 6, 7};
    const char functions[5] = {'d', 'f', 'f', 'l', 'l'};
    const int sizes[5] = {5, 6, 6, 8, 8};
    for (int i = 0; i < 5; ++i) {
        const Protocol& request = build(elementsOf(3, types[i]));
        EXPECT_EQ(request.frame.at(7), functions[i]) << types[i];
        EXPECT_EQ(request.replyLength, 3 * sizes[i] + 9) << types[i];
        EXPECT_EQ(request.frameLength, 9 + 12) << types[i];
        EXPECT_EQ(request.frame.mid(4, 2), hex("00 0F")) << types[i];
    }
}

TEST_F(ReadRequest, TheFullBatches)
{
    const Protocol& doubleWords = build(elementsOf(28, 6));
    EXPECT_EQ(doubleWords.frame.size(), 121);
    EXPECT_EQ(doubleWords.frame.left(9), hex("00 00 00 00 00 73 01 6C 1C"));
    EXPECT_EQ(doubleWords.replyLength, 233);
    const Protocol& bits = build(elementsOf(45, 1));
    EXPECT_EQ(bits.frame.size(), 189);
    EXPECT_EQ(bits.frame.left(9), hex("00 01 00 00 00 B7 01 64 2D"));
    EXPECT_EQ(bits.replyLength, 234);
    const Protocol& words = build(elementsOf(38, 4));
    EXPECT_EQ(words.frame.size(), 161);
    EXPECT_EQ(words.replyLength, 237);
}

TEST_F(ReadRequest, ElementAddressesAreMostSignificantByteFirst)
{
    const Protocol& request =
        build({element(4, 0x01020304), element(4, -2), element(4, INT_MIN), element(4, INT_MAX)});
    EXPECT_EQ(request.frame.mid(9), hex("01 02 03 04 FF FF FF FE 80 00 00 00 7F FF FF FF"));
}

TEST_F(ReadRequest, ALengthAbove255UsesBothBytes)
{
    const Protocol& request = build(elementsOf(70, 1));
    EXPECT_EQ(request.frame.mid(4, 2), hex("01 1B")) << "3 + 4 * 70 = 283";
    EXPECT_EQ(request.frame.size(), 289);
}

TEST_F(ReadRequest, TheStationIsTheLowByteOfTheFirstElements)
{
    const int stations[5] = {1, 255, 256, 0x12345, -1};
    const char bytes[5] = {1, '\xFF', 0, 0x45, '\xFF'};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(build({element(4, 0, stations[i])}).frame.at(6), bytes[i]) << stations[i];
    }
    EXPECT_EQ(build({element(4, 0, 1), element(4, 16, 2)}).frame.at(6), char(1));
    EXPECT_EQ(PLC_driver.protocolList.last().frame.at(8), char(2));
}

TEST_F(ReadRequest, TransactionIdsFollowEachOtherAndWrap)
{
    PLC_driver.transactionCounter = 65534;
    EXPECT_EQ(build({element(4, 0)}).frame.left(2), hex("FF FE"));
    EXPECT_EQ(build({element(4, 0)}).frame.left(2), hex("FF FF"));
    EXPECT_EQ(PLC_driver.transactionCounter, 0);
    EXPECT_EQ(build({element(4, 0)}).frame.left(2), hex("00 00"));
    EXPECT_EQ(PLC_driver.transactionCounter, 1);
}

TEST_F(ReadRequest, TheRecordIsAppendedWithItsDefaults)
{
    Protocol earlier;
    earlier.frame = hex("77");
    PLC_driver.protocolList.append(earlier);
    RW_VAR first = element(4, 100, 3);
    first.hostKey = 5;
    first.varKey = 6;
    first.addressText = "Main.W";
    first.status = -1;
    first.value = hex("01");
    const Protocol& request = build({first, element(4, 116)});
    ASSERT_EQ(PLC_driver.protocolList.size(), 2);
    EXPECT_EQ(PLC_driver.protocolList.first().frame, hex("77"));
    EXPECT_EQ(request.replyDataOffset, 9);
    EXPECT_EQ(request.replyState, 0);
    EXPECT_TRUE(sameRecord(request.var, first));
}

TEST_F(ReadRequest, QuotaAndCountOfRepliesStartAgain)
{
    host.info.replyQuota = 5;
    host.info.replyCount = 6;
    build({element(4, 0)});
    EXPECT_EQ(host.info.replyQuota, 1);
    EXPECT_EQ(host.info.replyCount, 0);
}

TEST_F(ReadRequest, StaleBytesOfAnEarlierFrameAreNotPartOfIt)
{
    build(elementsOf(45, 1));
    const Protocol& request = build({element(4, 100)});
    EXPECT_EQ(request.frame, hex("00 01 00 00 00 07 01 66 01 00 00 00 64"));
    EXPECT_EQ(PLC_driver.sendBuffer[7], 'f');
    EXPECT_EQ(PLC_driver.sendBuffer[15], 0x03) << "the work area keeps what it held behind it";
    EXPECT_EQ(PLC_driver.protocolList.first().frame.size(), 189) << "frames are copies";
    EXPECT_EQ(PLC_driver.protocolList.first().frame.at(7), 'd');
}

TEST_F(ReadRequest, ReadRegisterIsTheSame)
{
    batch = {element(4, 100, 1), element(4, 101, 1)};
    makeBatch(batch);
    PLC_driver.transactionCounter = 258;
    ReadRegister();
    ASSERT_EQ(PLC_driver.protocolList.size(), 1);
    EXPECT_EQ(PLC_driver.protocolList.first().frame,
              hex("01 02 00 00 00 0B 01 66 02 00 00 00 64 00 00 00 65"));
    EXPECT_EQ(PLC_driver.transactionCounter, 259);
}

TEST_F(ReadRequest, AnEmptyBatchMakesNone)
{
    host.info.replyQuota = 5;
    for (const int count : {0, -1, INT_MIN}) {
        PLC_driver.batchCount = count;
        ReadAnalog();
        ReadRegister();
    }
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_EQ(PLC_driver.transactionCounter, 0);
    EXPECT_EQ(host.info.replyQuota, 5);
}

TEST_F(ReadRequest, ABatchThatFillsTheWorkAreaIsBuiltAndALongerOneIsNot)
{
    batch = elementsOf(254, 4);
    makeBatch(batch);
    ReadAnalog();
    ASSERT_EQ(PLC_driver.protocolList.size(), 1);
    EXPECT_EQ(PLC_driver.protocolList.first().frame.size(), 9 + 4 * 254);
    EXPECT_EQ(PLC_driver.protocolList.first().frame.at(8), char(254));
    // 255 elements would need 1029 of 1026 bytes.
    batch = elementsOf(255, 4);
    makeBatch(batch);
    ReadAnalog();
    EXPECT_EQ(PLC_driver.protocolList.size(), 1);
    PLC_driver.batchCount = INT_MAX;
    ReadAnalog();
    EXPECT_EQ(PLC_driver.protocolList.size(), 1);
}

TEST_F(ReadRequest, BuildingSaysNothingAndTheHookDoesNothing)
{
    build({element(4, 100)});
    RW_VAR var = element(4, 16);
    Remote_ReadVar(&var);
    Remote_ReadVar(nullptr);
    EXPECT_TRUE(sameRecord(var, element(4, 16)));
    EXPECT_EQ(PLC_driver.protocolList.size(), 1);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

} // namespace
