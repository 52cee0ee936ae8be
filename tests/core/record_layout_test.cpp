// Positions of every member that crosses the library's boundary, for 32- and 64-bit pointers.
#include "address/Func_Check.h"

#include "support/driver_test.h"

#include <cstddef>
#include <type_traits>

namespace
{

const std::size_t P = sizeof(void*);

TEST(RecordLayout, QtValueTypesAreOnePointerWide)
{
    EXPECT_EQ(sizeof(QString), P);
    EXPECT_EQ(sizeof(QByteArray), P);
    EXPECT_EQ(sizeof(QList<int>), P);
}

TEST(RecordLayout, ComInfoWordNStartsAtByte4N)
{
    EXPECT_EQ(offsetof(ComInfo, hostWord0), 0u);
    EXPECT_EQ(offsetof(ComInfo, hostWord5), 20u);
    EXPECT_EQ(offsetof(ComInfo, defaultStation), 4u * 6);
    EXPECT_EQ(offsetof(ComInfo, retryLimit), 4u * 7);
    EXPECT_EQ(offsetof(ComInfo, retryCount), 4u * 8);
    EXPECT_EQ(offsetof(ComInfo, stationMode), 4u * 9);
    EXPECT_EQ(offsetof(ComInfo, hostWord10), 4u * 10);
    EXPECT_EQ(offsetof(ComInfo, replyQuota), 4u * 11);
    EXPECT_EQ(offsetof(ComInfo, replyCount), 4u * 12);
    EXPECT_EQ(offsetof(ComInfo, hostWord13), 4u * 13);
    EXPECT_EQ(offsetof(ComInfo, hostWord14), 4u * 14);
    EXPECT_EQ(offsetof(ComInfo, hostWord15), 4u * 15);
    EXPECT_EQ(offsetof(ComInfo, writeMode), 4u * 16);
    EXPECT_EQ(offsetof(ComInfo, scanDone), 4u * 17);
    EXPECT_EQ(offsetof(ComInfo, comStation), 4u * 18);
    EXPECT_GE(sizeof(ComInfo), 4u * 19);
}

TEST(RecordLayout, VariableRecord)
{
    EXPECT_EQ(offsetof(RW_VAR, hostKey), 0u);
    EXPECT_EQ(offsetof(RW_VAR, varKey), 4u);
    EXPECT_EQ(offsetof(RW_VAR, hostData2), 8u);
    EXPECT_EQ(offsetof(RW_VAR, hostData3), 12u);
    EXPECT_EQ(offsetof(RW_VAR, hostData4), 16u);
    EXPECT_EQ(offsetof(RW_VAR, status), 20u);
    EXPECT_EQ(offsetof(RW_VAR, addressText), 24u);
    EXPECT_EQ(offsetof(RW_VAR, auxText), 24 + P);
    EXPECT_EQ(offsetof(RW_VAR, dataType), 24 + 2 * P);
    EXPECT_EQ(offsetof(RW_VAR, elementAddress), 28 + 2 * P);
    EXPECT_EQ(offsetof(RW_VAR, station), 32 + 2 * P);
    EXPECT_EQ(offsetof(RW_VAR, count), 36 + 2 * P);
    EXPECT_EQ(offsetof(RW_VAR, hostData12), 40 + 2 * P);
    EXPECT_EQ(offsetof(RW_VAR, hostData13), 44 + 2 * P);
    EXPECT_EQ(offsetof(RW_VAR, value), 48 + 2 * P);
    EXPECT_EQ(sizeof(RW_VAR), 48 + 3 * P);
}

TEST(RecordLayout, ExtendVarIsThreeNumbersAndBytes)
{
    EXPECT_EQ(offsetof(EXTENDVAR, hostData0), 0u);
    EXPECT_EQ(offsetof(EXTENDVAR, hostData1), 4u);
    EXPECT_EQ(offsetof(EXTENDVAR, hostData2), 8u);
    EXPECT_EQ(offsetof(EXTENDVAR, value), (12 + P - 1) / P * P);
    EXPECT_EQ(sizeof(EXTENDVAR), (12 + P - 1) / P * P + P);
}

TEST(RecordLayout, RequestRecord)
{
    const std::size_t var = P + 16;
    EXPECT_EQ(offsetof(Protocol, frame), 0u);
    EXPECT_EQ(offsetof(Protocol, frameLength), P);
    EXPECT_EQ(offsetof(Protocol, replyLength), P + 4);
    EXPECT_EQ(offsetof(Protocol, replyDataOffset), P + 8);
    EXPECT_EQ(offsetof(Protocol, replyState), P + 12);
    EXPECT_EQ(offsetof(Protocol, var), var);
    EXPECT_EQ(offsetof(Protocol, hostData0), var + sizeof(RW_VAR));
    EXPECT_EQ(offsetof(Protocol, hostData1), var + sizeof(RW_VAR) + 4);
    EXPECT_EQ(offsetof(Protocol, hostData2), var + sizeof(RW_VAR) + 8);
}

TEST(RecordLayout, LabelTypeInfo)
{
    EXPECT_EQ(offsetof(Label_Type_Info, name), 0u);
    EXPECT_EQ(offsetof(Label_Type_Info, typeFlags), P);
    EXPECT_EQ(offsetof(Label_Type_Info, offset), P + 4);
    EXPECT_EQ(offsetof(Label_Type_Info, dimensionCount), P + 8);
    EXPECT_EQ(offsetof(Label_Type_Info, memberCount), P + 12);
    EXPECT_EQ(offsetof(Label_Type_Info, arrayBounds), P + 16);
    EXPECT_EQ(offsetof(Label_Type_Info, members), 2 * P + 16);
    EXPECT_EQ(offsetof(Label_Type_Info, elementType), 3 * P + 16);
    EXPECT_EQ(offsetof(Label_Type_Info, extraText), 4 * P + 16);
    EXPECT_EQ(offsetof(Label_Type_Info, extraValue1), 5 * P + 16);
    EXPECT_EQ(offsetof(Label_Type_Info, extraValue2), 5 * P + 20);
    EXPECT_EQ(offsetof(Label_Type_Info, elementSizes), 5 * P + 24);
    EXPECT_EQ(offsetof(Label_Type_Info, extraTexts), 6 * P + 24);
    EXPECT_EQ(sizeof(Label_Type_Info), 7 * P + 24);
    ::testing::StaticAssertTypeEq<quint16, decltype(Label_Type_Info::typeFlags)>();
    ::testing::StaticAssertTypeEq<qint32, decltype(Label_Type_Info::offset)>();
    ::testing::StaticAssertTypeEq<qint32, decltype(Label_Type_Info::dimensionCount)>();
    ::testing::StaticAssertTypeEq<quint32, decltype(Label_Type_Info::memberCount)>();
}

TEST(RecordLayout, HostVarAsThePanelLaysItOut)
{
    EXPECT_EQ(offsetof(HOSTVAR, station), 2u);
    EXPECT_EQ(sizeof(HOSTVAR::station), 1u);
    EXPECT_EQ(offsetof(HOSTVAR, auxText), 8u);
    EXPECT_EQ(offsetof(HOSTVAR, addressText), 8 + P);
    EXPECT_EQ(offsetof(HOSTVAR, count), 8 + 2 * P);
    EXPECT_TRUE(std::is_unsigned<decltype(HOSTVAR::station)>::value);
}

TEST(RecordLayout, ParsedAddress)
{
    EXPECT_EQ(offsetof(ControlInformationM, dataType), 0u);
    EXPECT_EQ(offsetof(ControlInformationM, elementAddress), 4u);
    EXPECT_EQ(offsetof(ControlInformationM, elementWidth), 8u);
    EXPECT_EQ(offsetof(ControlInformationM, bitAccess), 12u);
    EXPECT_EQ(offsetof(ControlInformationM, bitIndex), 16u);
    EXPECT_EQ(offsetof(ControlInformationM, isArrayElement), 20u);
    EXPECT_EQ(offsetof(ControlInformationM, arrayBase), 24u);
    EXPECT_EQ(offsetof(ControlInformationM, arrayIndex), 28u);
    EXPECT_EQ(offsetof(ControlInformationM, elementLimit), 32u);
    EXPECT_EQ(sizeof(ControlInformationM), 36u);
    ::testing::StaticAssertTypeEq<quint8, decltype(ControlInformationM::dataType)>();
}

TEST(RecordLayout, FreshRecordsAreZero)
{
    const RW_VAR var;
    for (const qint32 word : {var.hostKey, var.varKey, var.hostData2, var.hostData3, var.hostData4,
                              var.status, var.dataType, var.elementAddress, var.station, var.count,
                              var.hostData12, var.hostData13}) {
        EXPECT_EQ(word, 0);
    }
    EXPECT_TRUE(var.addressText.isEmpty() && var.auxText.isEmpty() && var.value.isEmpty());
}

} // namespace
