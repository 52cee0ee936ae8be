// Result codes: the band of each outcome, and the place inside it.
#include "core/return_codes.h"

#include "support/driver_test.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class ReturnCodes : public DriverTest
{
protected:
    void requestInFlight(int hostKey)
    {
        Protocol protocol;
        protocol.var.hostKey = hostKey;
        PLC_driver.protocolList.clear();
        PLC_driver.protocolList.append(protocol);
        Protocol behind;
        behind.var.hostKey = 7;
        PLC_driver.protocolList.append(behind);
    }
};

TEST_F(ReturnCodes, BandOfEachOutcome)
{
    const int codes[8] = {1, 11, 41, 71, 100, 111, 141, 171};
    requestInFlight(0);
    for (int kind = 0; kind < 8; ++kind) {
        EXPECT_EQ(GetDriverReturnValue(kind), codes[kind]) << kind;
    }
}

TEST_F(ReturnCodes, GoodAndRemoteAcceptanceDoNotDependOnTheRequest)
{
    for (const int hostKey : {0, 5, 11, 12, -1}) {
        requestInFlight(hostKey);
        EXPECT_EQ(GetDriverReturnValue(0), 1);
        EXPECT_EQ(GetDriverReturnValue(4), 100);
    }
}

TEST_F(ReturnCodes, GoodAndUnknownKindsNeedNoRequest)
{
    EXPECT_EQ(GetDriverReturnValue(0), 1);
    EXPECT_EQ(GetDriverReturnValue(4), 100);
    EXPECT_EQ(GetDriverReturnValue(8), 200);
}

TEST_F(ReturnCodes, UnknownKindsGive200)
{
    requestInFlight(3);
    for (const int kind : {8, 9, 100, -1, -7, INT_MAX, INT_MIN}) {
        EXPECT_EQ(GetDriverReturnValue(kind), 200) << kind;
    }
}

TEST_F(ReturnCodes, HostKeyZeroToElevenMovesTheCodeInsideItsBand)
{
    for (int hostKey = 0; hostKey <= 11; ++hostKey) {
        requestInFlight(hostKey);
        EXPECT_EQ(GetDriverReturnValue(1), 11 + hostKey);
        EXPECT_EQ(GetDriverReturnValue(2), 41 + hostKey);
        EXPECT_EQ(GetDriverReturnValue(3), 71 + hostKey);
        EXPECT_EQ(GetDriverReturnValue(5), 111 + hostKey);
        EXPECT_EQ(GetDriverReturnValue(6), 141 + hostKey);
        EXPECT_EQ(GetDriverReturnValue(7), 171 + hostKey);
    }
}

TEST_F(ReturnCodes, OtherHostKeysGiveTheFirstCodeOfTheBand)
{
    for (const int hostKey : {12, 13, -1, -11, INT_MAX, INT_MIN}) {
        requestInFlight(hostKey);
        EXPECT_EQ(GetDriverReturnValue(2), 41) << hostKey;
        EXPECT_EQ(SwitchErrorReturn(10), 11) << hostKey;
    }
}

TEST_F(ReturnCodes, WithoutARequestAFailureIsTheFirstCodeOfItsBand)
{
    EXPECT_EQ(GetDriverReturnValue(2), 41);
    EXPECT_EQ(SwitchErrorReturn(10), 11);
}

TEST_F(ReturnCodes, SwitchErrorReturnAddsOneAndTheHostKeyToAnyBase)
{
    requestInFlight(11);
    EXPECT_EQ(SwitchErrorReturn(0), 12);
    EXPECT_EQ(SwitchErrorReturn(170), 182);
    EXPECT_EQ(SwitchErrorReturn(-40), -28);
}

} // namespace
