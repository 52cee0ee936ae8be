// The driver right after loading. Nothing in this program touches it before, so run as a whole
// or test by test it is the first use of the library.
#include "support/diagnostic_capture.h"
#include "support/qt_printers.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <gtest/gtest.h>

using namespace tavmir::test;

namespace
{

TEST(FreshLibrary, StartsInNoStateOfTheCycleWithoutARequest)
{
    EXPECT_EQ(PLC_driver.cycleState, 100);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_EQ(PLC_driver.comInfo, nullptr);
    EXPECT_EQ(PLC_driver.varDoneCallback, nullptr);
    EXPECT_EQ(PLC_driver.commFailCallback, nullptr);
    EXPECT_EQ(PLC_driver.transactionCounter, 0);
    EXPECT_FALSE(PLC_driver.commFailed);
    EXPECT_EQ(PLC_driver.batchCount, 0);
    EXPECT_EQ(PLC_driver.batchElements[0], nullptr);
    EXPECT_EQ(PLC_driver.batchElements[254], nullptr);
    EXPECT_EQ(PLC_driver.sendBuffer[0], 0);
    EXPECT_EQ(PLC_driver.sendBuffer[1025], 0);
    EXPECT_TRUE(PLC_driver.labelTable.isEmpty());
    EXPECT_TRUE(PLC_driver.stationMap.isEmpty());
}

TEST(FreshLibrary, LocalAreasAreNull)
{
    EXPECT_EQ(LB, nullptr);
    EXPECT_EQ(LW, nullptr);
    EXPECT_EQ(RWI, nullptr);
}

TEST(FreshLibrary, AFirstReplyIsToldThatNothingWasInFlight)
{
    const DiagnosticCapture diagnostics;
    QByteArray reply("unexpected");
    RW_VAR* result = DataCom(&reply, reply.size());
    EXPECT_EQ(result, &PLC_driver.retVar);
    EXPECT_EQ(result->status, 1);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
    EXPECT_EQ(PLC_driver.cycleState, 100);
    EXPECT_EQ(diagnostics.lines(), QStringList());
    EXPECT_EQ(DataCom(nullptr, 0)->status, 1);
}

} // namespace
