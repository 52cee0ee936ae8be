// No exception leaves the library: hosts load it by C names and have no frame that could take one.
// The compiler knows for each function whether it may throw.
#include "address/Func_Check.h"
#include "core/reply_check.h"
#include "core/result_record.h"
#include "core/return_codes.h"
#include "data/Func_DealData.h"
#include "data/checksums.h"
#include "data/local_values.h"
#include "frames/Func_Write.h"
#include "frames/read_request.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <gtest/gtest.h>

namespace
{

RW_VAR* const kNoRecord = nullptr;
QByteArray* const kNoBytes = nullptr;
unsigned char* const kNoData = nullptr;
const QString kText;
const QStringList kParts;
const Label_Type_Info kEntry;
ControlInformationM info;
RW_VAR record;

TEST(NoExceptions, LeaveTheEntryPointsWithPlainNames)
{
    EXPECT_TRUE(noexcept(SetComInfo(nullptr)));
    EXPECT_TRUE(noexcept(RegistCallBackFuncIntf(nullptr, nullptr)));
    EXPECT_TRUE(noexcept(FlashLocalRegister(nullptr, nullptr, nullptr)));
    EXPECT_TRUE(noexcept(PassVarName_2(nullptr)));
    EXPECT_TRUE(noexcept(AddListReadVar(kNoRecord)));
    EXPECT_TRUE(noexcept(AddListWriteVar(kNoRecord)));
    EXPECT_TRUE(noexcept(AddListOnceReadVar(kNoRecord)));
    EXPECT_TRUE(noexcept(ReCreatReadVarList(nullptr)));
    EXPECT_TRUE(noexcept(ComCommunication()));
    EXPECT_TRUE(noexcept(DataCom(kNoBytes, 0)));
    EXPECT_TRUE(noexcept(GetRegisterData(kText, 0, 0, 0, kNoBytes, 1)));
    EXPECT_TRUE(noexcept(SetRegisterData(kText, 0, kText, 0, kNoBytes, 1, 0, 0)));
    EXPECT_TRUE(noexcept(EnCommStation(0, 0)));
    EXPECT_TRUE(noexcept(EnableEthernet(0, 0)));
    EXPECT_TRUE(noexcept(PLCAddressChangeIntef()));
    EXPECT_TRUE(noexcept(QueryFinishFlag()));
    EXPECT_TRUE(noexcept(Ethernetcontains(0)));
    EXPECT_TRUE(noexcept(customMessageHandler(QtDebugMsg, "")));
}

TEST(NoExceptions, LeaveTheInnerFunctionsThatTheLibraryShows)
{
    EXPECT_TRUE(noexcept(ReadRegister()));
    EXPECT_TRUE(noexcept(ReadAnalog()));
    EXPECT_TRUE(noexcept(Remote_ReadVar(kNoRecord)));
    EXPECT_TRUE(noexcept(WriteRegister()));
    EXPECT_TRUE(noexcept(WriteAnalog()));
    EXPECT_TRUE(noexcept(Remote_WriteVar(kNoRecord)));
    EXPECT_TRUE(noexcept(CheckGetData(kNoBytes, 0)));
    EXPECT_TRUE(noexcept(SaveToLocalDataErea(kNoBytes)));
    EXPECT_TRUE(noexcept(CalSUM(kNoData, 0)));
    EXPECT_TRUE(noexcept(CalCRC(kNoData, 0)));
    EXPECT_TRUE(noexcept(CalLRC(kNoData, 0)));
    EXPECT_TRUE(noexcept(CalXOR(kNoData, 0)));
    EXPECT_TRUE(noexcept(DigitalToASCII(0)));
    EXPECT_TRUE(noexcept(ASCIIToDigital(0)));
    EXPECT_TRUE(noexcept(WriteDataToLocal(kNoRecord)));
    EXPECT_TRUE(noexcept(get_label_address_info(kText, info)));
    EXPECT_TRUE(noexcept(get_label_address_1(kEntry, kParts, 0, info)));
    EXPECT_TRUE(noexcept(get_label_address_2(kEntry, kParts, 0, info)));
    EXPECT_TRUE(noexcept(get_label_address_query(kParts, 0)));
    EXPECT_TRUE(noexcept(passRetValue(record, record)));
    EXPECT_TRUE(noexcept(GetDriverReturnValue(0)));
    EXPECT_TRUE(noexcept(SwitchErrorReturn(0)));
    EXPECT_TRUE(noexcept(DealDataOfLocalArea(kNoBytes, 0)));
    EXPECT_TRUE(noexcept(DealDataOfRemoteArea(kNoBytes, 0)));
}

} // namespace
