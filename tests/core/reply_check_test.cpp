// The check of a reply against the request in flight.
#include "core/reply_check.h"

#include "support/driver_test.h"
#include "support/locks.h"
#include "support/records.h"

using namespace tavmir::test;

namespace
{

class ReplyCheck : public DriverTest
{
protected:
    // A read of two words at 16 and 32.
    void requestInFlight(int replyLength, int hostKey = 0, int hostData2 = 0)
    {
        batch = {element(4, 16), element(4, 32)};
        makeBatch(batch);
        Protocol protocol;
        protocol.replyLength = replyLength;
        protocol.replyDataOffset = 9;
        protocol.var = batch[0];
        protocol.var.hostKey = hostKey;
        protocol.var.hostData2 = hostData2;
        PLC_driver.protocolList.clear();
        PLC_driver.protocolList.append(protocol);
    }

    std::vector<RW_VAR> batch;
    QByteArray reply = readReply(2, {0x1234, 0xABCD});
};

TEST_F(ReplyCheck, NoAnswerThoughOneWasExpected)
{
    requestInFlight(21, 3);
    EXPECT_EQ(DealDataOfLocalArea(nullptr, 0), 44);
    requestInFlight(-1, 12);
    EXPECT_EQ(DealDataOfLocalArea(nullptr, 0), 41);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(ReplyCheck, NoAnswerWhereNoneWasExpectedIsGood)
{
    requestInFlight(0);
    EXPECT_EQ(DealDataOfLocalArea(nullptr, 0), 1);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(ReplyCheck, AnAnswerWhereNoneWasExpectedIsGoodAndNotLookedAt)
{
    requestInFlight(0);
    EXPECT_EQ(DealDataOfLocalArea(&reply, 21), 1);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(ReplyCheck, AWrongLengthIsRefused)
{
    for (const int received : {1, 20, 22, 9, -1, 1000}) {
        requestInFlight(21, 11);
        EXPECT_EQ(DealDataOfLocalArea(&reply, received), 82) << received;
    }
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(ReplyCheck, TheExpectedLengthIsStored)
{
    requestInFlight(21);
    EXPECT_EQ(DealDataOfLocalArea(&reply, 21), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    EXPECT_EQ(PLC_driver.wordCache.value(32), 0xABCD);
}

TEST_F(ReplyCheck, AnyLengthIsStoredWhenAnyIsAccepted)
{
    requestInFlight(-1);
    QByteArray longer = reply + hex("01 02 03");
    EXPECT_EQ(DealDataOfLocalArea(&longer, longer.size()), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(32), 0xABCD);
}

TEST_F(ReplyCheck, OfAReplyShorterThanItSaysOnlyWholeElementsAreStored)
{
    requestInFlight(21);
    QByteArray cut = reply.left(20);
    EXPECT_EQ(DealDataOfLocalArea(&cut, 21), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    EXPECT_FALSE(PLC_driver.wordCache.contains(32));
    QByteArray empty;
    EXPECT_EQ(DealDataOfLocalArea(&empty, 21), 1);
    EXPECT_EQ(PLC_driver.wordCache.size(), 1);
}

TEST_F(ReplyCheck, AMissingBufferStoresNothing)
{
    requestInFlight(21);
    EXPECT_EQ(DealDataOfLocalArea(nullptr, 21), 1);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
}

TEST_F(ReplyCheck, AReplyWithoutValuesIsGoodAndNotStored)
{
    for (const int marker : {1, 7, -1}) {
        requestInFlight(21, 0, marker);
        EXPECT_EQ(DealDataOfLocalArea(&reply, 21), 1);
        EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    }
}

TEST_F(ReplyCheck, TakesTheCacheMutexToStoreAndTheListMutexNever)
{
    requestInFlight(21);
    EXPECT_TRUE(waitsFor(PLC_driver.cacheMutex, [this] { DealDataOfLocalArea(&reply, 21); }));
    EXPECT_TRUE(endsWhileHeld(PLC_driver.listMutex, [this] { DealDataOfLocalArea(&reply, 21); }));
}

} // namespace
