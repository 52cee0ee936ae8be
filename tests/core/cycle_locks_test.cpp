// Which mutex is held when: seen from callbacks, from the message handler and from other threads.
#include "support/cycle_test.h"
#include "support/label_tree.h"
#include "support/locks.h"

using namespace tavmir::test;

namespace
{

class CycleLocks : public CycleTest
{
};

TEST_F(CycleLocks, CallbacksRunWithTheListMutexHeldAndNoOther)
{
    int calls = 0;
    callbacks.insideCallback = [&] {
        ++calls;
        EXPECT_FALSE(isFree(PLC_driver.listMutex));
        EXPECT_TRUE(isFree(PLC_driver.cacheMutex));
        EXPECT_TRUE(isFree(PLC_driver.stationMutex));
    };
    queueWrite(4, 0, 1, 1);
    turn();
    queueOnce(4, 0, 2, 2);
    turn();
    EXPECT_EQ(calls, 2);
    queueWrite(4, 0, 1, 1);
    ComCommunication();
    answerNothing();
    EXPECT_EQ(calls, 4) << "one report of the write, one of the give-up";
}

TEST_F(CycleLocks, ACallbackMayReadValues)
{
    passLabels({mainLabel()});
    PLC_driver.wordCache.insert(3000, 0x1234);
    QByteArray value;
    callbacks.insideCallback = [&] { GetRegisterData("Main.W", 0, 0, 0, &value, 1); };
    queueWrite(4, 0, 1, 1);
    turn();
    EXPECT_EQ(value, hex("34 12"));
}

TEST_F(CycleLocks, NoMutexStaysLockedAfterAnyKindOfTurn)
{
    queueWrite(4, 0);
    queueWrite(3, 0);
    queueOnce(4, 0);
    poll(4, 0);
    for (int i = 0; i < 4; ++i) {
        turn();
        EXPECT_TRUE(isFree(PLC_driver.listMutex));
        EXPECT_TRUE(isFree(PLC_driver.cacheMutex));
    }
    host.info.retryLimit = 1;
    for (int i = 0; i < 2; ++i) {
        ComCommunication();
        answerNothing();
        EXPECT_TRUE(isFree(PLC_driver.listMutex));
    }
}

TEST_F(CycleLocks, LinesOfTheCycleAreWrittenWithTheListMutexFree)
{
    int lines = 0;
    diagnostics.onLine([&](const QString&) {
        ++lines;
        EXPECT_TRUE(isFree(PLC_driver.listMutex));
        EXPECT_TRUE(isFree(PLC_driver.cacheMutex));
    });
    queueWrite(4, 0);
    ComCommunication();
    EXPECT_EQ(lines, 1) << "the write frame";
    answerNothing();
    EXPECT_EQ(lines, 3) << "the failed request and its reply";
}

TEST_F(CycleLocks, AReplyIsStoredUnderTheCacheMutexAlone)
{
    // A data type that no reply carries makes the decoder speak, which shows what it holds.
    poll(2, 0);
    ComCommunication();
    PLC_driver.protocolList.first().replyLength = -1;
    bool spoke = false;
    diagnostics.onLine([&](const QString&) {
        spoke = true;
        EXPECT_FALSE(isFree(PLC_driver.cacheMutex));
        EXPECT_TRUE(isFree(PLC_driver.listMutex));
    });
    QByteArray reply = hex("00 00 00 00 00 00 00 00 00");
    DataCom(&reply, reply.size());
    EXPECT_TRUE(spoke);
}

TEST_F(CycleLocks, TheChoiceWaitsForTheListMutex)
{
    PLC_driver.pendingReadList.append(element(4, 0));
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] { ComCommunication(); }));
    EXPECT_EQ(PLC_driver.readVarList.size(), 1);
}

TEST_F(CycleLocks, ResendingNeedsNoLock)
{
    poll(4, 0);
    ComCommunication();
    EXPECT_TRUE(endsWhileHeld(PLC_driver.listMutex, [] { ComCommunication(); }));
}

TEST_F(CycleLocks, TheTurnEndWaitsForTheListMutex)
{
    poll(4, 0);
    ComCommunication();
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [this] { answer(); }));
    host.info.retryLimit = 1;
    ComCommunication();
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [this] { answerNothing(); }));
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [this] { answerNothing(); }));
}

TEST_F(CycleLocks, StoringAReplyWaitsForTheCacheMutex)
{
    poll(4, 0);
    ComCommunication();
    EXPECT_TRUE(waitsFor(PLC_driver.cacheMutex, [this] { answer(); }));
}

TEST_F(CycleLocks, AReplyThatStoresNothingNeedsNoCacheMutex)
{
    poll(4, 0);
    PLC_driver.readVarList.first().hostData2 = 1;
    ComCommunication();
    EXPECT_TRUE(endsWhileHeld(PLC_driver.cacheMutex, [this] { answer(); }));
}

} // namespace
