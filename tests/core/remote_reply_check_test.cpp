// The remote variant of the reply check, which hosts may resolve by name.
#include "core/reply_check.h"

#include "support/driver_test.h"
#include "support/locks.h"
#include "support/records.h"

using namespace tavmir::test;

namespace
{

class RemoteReplyCheck : public DriverTest
{
protected:
    void requestInFlight(int replyLength, int hostData12, int hostKey = 0, int hostData2 = 0)
    {
        batch = {element(4, 16)};
        makeBatch(batch);
        Protocol protocol;
        protocol.replyLength = replyLength;
        protocol.replyDataOffset = 9;
        protocol.var = batch[0];
        protocol.var.hostKey = hostKey;
        protocol.var.hostData2 = hostData2;
        protocol.var.hostData12 = hostData12;
        PLC_driver.protocolList.clear();
        PLC_driver.protocolList.append(protocol);
        PLC_driver.wordCache.clear();
        host.info.replyCount = 0;
    }

    std::vector<RW_VAR> batch;
    QByteArray reply = readReply(2, {0x1234});
};

TEST_F(RemoteReplyCheck, NoAnswerThoughOneWasExpected)
{
    requestInFlight(15, -1, 2);
    EXPECT_EQ(DealDataOfRemoteArea(nullptr, 0), 143);
    requestInFlight(-1, -1, 20);
    EXPECT_EQ(DealDataOfRemoteArea(nullptr, 0), 141);
}

TEST_F(RemoteReplyCheck, AWrongLengthIsRefused)
{
    requestInFlight(15, -1, 11);
    EXPECT_EQ(DealDataOfRemoteArea(&reply, 14), 182);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(RemoteReplyCheck, AnAnswerWhereNoneWasExpectedIsGoodAndNotLookedAt)
{
    requestInFlight(0, -1);
    EXPECT_EQ(DealDataOfRemoteArea(&reply, 15), 1);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(RemoteReplyCheck, NoAnswerWhereNoneWasExpectedGoesOnToTheCheck)
{
    requestInFlight(0, 0);
    EXPECT_EQ(DealDataOfRemoteArea(&reply, 0), 100);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    requestInFlight(0, -1);
    EXPECT_EQ(DealDataOfRemoteArea(&reply, 0), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    requestInFlight(0, -1);
    EXPECT_EQ(DealDataOfRemoteArea(nullptr, 0), 1);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(RemoteReplyCheck, AnotherHostData12IsAcceptedWithoutStoring)
{
    for (const int hostData12 : {0, 1, -2}) {
        requestInFlight(15, hostData12);
        EXPECT_EQ(DealDataOfRemoteArea(&reply, 15), 100);
        requestInFlight(15, hostData12, 0, 7);
        EXPECT_EQ(DealDataOfRemoteArea(&reply, 15), 100);
        EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    }
}

TEST_F(RemoteReplyCheck, MinusOneStoresAndTheFirstReplyGives100)
{
    requestInFlight(15, -1);
    host.info.replyCount = 1;
    EXPECT_EQ(DealDataOfRemoteArea(&reply, 15), 100);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    for (const qint32 count : {0, 2, -1}) {
        requestInFlight(15, -1);
        host.info.replyCount = count;
        EXPECT_EQ(DealDataOfRemoteArea(&reply, 15), 1) << count;
        EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    }
}

TEST_F(RemoteReplyCheck, StoresAlsoWhatTheLocalCheckWouldNot)
{
    requestInFlight(15, -1, 0, 7);
    EXPECT_EQ(DealDataOfRemoteArea(&reply, 15), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
}

TEST_F(RemoteReplyCheck, AnyLengthIsStoredWhenAnyIsAccepted)
{
    requestInFlight(-1, -1);
    EXPECT_EQ(DealDataOfRemoteArea(&reply, 999), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
}

TEST_F(RemoteReplyCheck, TakesNoLock)
{
    requestInFlight(15, -1);
    EXPECT_TRUE(endsWhileHeld(PLC_driver.cacheMutex, [this] { DealDataOfRemoteArea(&reply, 15); }));
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
}

} // namespace
