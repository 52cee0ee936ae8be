// The rebuild beside the running cycle.
#include "support/cycle_test.h"
#include "support/label_tree.h"
#include "support/locks.h"

using namespace tavmir::test;

namespace
{

class RebuildLocks : public CycleTest
{
protected:
    RebuildLocks()
    {
        passLabels({label("P", QList<Label_Type_Info>() << variable("B", 1, 10))});
        vars << hostVar("P.B", 20);
    }

    QList<HOSTVAR> vars;
};

TEST_F(RebuildLocks, OpeningAndClosingLinesAreWrittenWithTheMutexFree)
{
    int lines = 0;
    diagnostics.onLine([&](const QString&) {
        ++lines;
        EXPECT_TRUE(isFree(PLC_driver.listMutex));
    });
    ReCreatReadVarList(&vars);
    EXPECT_EQ(lines, 1 + 20);
    QList<HOSTVAR> none;
    ReCreatReadVarList(&none);
    EXPECT_EQ(lines, 21 + 2);
}

TEST_F(RebuildLocks, ClosingLinesNameTheListThatWasBuiltThoughTheCycleTookIt)
{
    // A message handler that lets the cycle run, as another thread may at that moment.
    bool taken = false;
    diagnostics.onLine([&](const QString& line) {
        if (taken || !line.contains("357")) {
            return;
        }
        taken = true;
        ComCommunication();
        EXPECT_TRUE(PLC_driver.pendingReadList.isEmpty());
    });
    EXPECT_EQ(ReCreatReadVarList(&vars), 20);
    EXPECT_TRUE(taken);
    EXPECT_EQ(diagnostics.lines().size(), 1 + 20);
}

TEST_F(RebuildLocks, TheRebuildWaitsForTheListMutexAndForNoOther)
{
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [this] { ReCreatReadVarList(&vars); }));
    EXPECT_TRUE(endsWhileHeld(PLC_driver.cacheMutex, [this] { ReCreatReadVarList(&vars); }));
    EXPECT_TRUE(endsWhileHeld(PLC_driver.stationMutex, [this] { ReCreatReadVarList(&vars); }));
    EXPECT_TRUE(isFree(PLC_driver.listMutex));
}

TEST_F(RebuildLocks, ARequestInFlightIsNotDisturbed)
{
    poll(4, 16, 5, 6);
    poll(1, 900);
    ComCommunication();
    ReCreatReadVarList(&vars);
    QByteArray reply = readReply(2, {0x1234});
    EXPECT_EQ(DataCom(&reply, reply.size())->status, 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    EXPECT_EQ(PLC_driver.retVar.hostKey, 5);
    ComCommunication();
    EXPECT_EQ(PLC_driver.readVarList.size(), 20);
    EXPECT_EQ(PLC_driver.batchElements[0]->elementAddress, 10);
}

} // namespace
