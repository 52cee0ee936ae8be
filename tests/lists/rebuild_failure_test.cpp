// Rebuilds that skip a variable or give up.
#include "support/driver_test.h"
#include "support/label_tree.h"
#include "support/records.h"

using namespace tavmir::test;

namespace
{

class RebuildFailure : public DriverTest
{
protected:
    RebuildFailure()
    {
        QList<Label_Type_Info> variables;
        variables << variable("B", 1, 10) << variable("W", 4, 16) << variable("R", 4, 99);
        for (const int code : {0, 2, 3, 5, 8, 9, 11, 200}) {
            variables << variable(qPrintable(QString("X%1").arg(code)), code, 1);
        }
        variables << structureVariable("S", 0, structureType(QList<Label_Type_Info>()));
        passLabels({label("P", variables)});
        PLC_driver.pendingReadList << element(4, 0) << element(4, 16);
        PLC_driver.scanCount = 9;
        host.info.scanDone = 1;
    }

    static QString line(int number, const char* level, const LineItem& payload)
    {
        return expectedLine(
            {"Func_Init", " ", quoted("ReCreatReadVarList"), " ", number, level, payload});
    }

    const QString opening = line(197, "TRACE ", "");
};

TEST_F(RebuildFailure, AnEmptyListIsLoggedAndEmptiesThePendingList)
{
    QList<HOSTVAR> none;
    EXPECT_EQ(ReCreatReadVarList(&none), 0);
    EXPECT_TRUE(PLC_driver.pendingReadList.isEmpty());
    EXPECT_EQ(diagnostics.lines(), QStringList() << opening << line(204, "ERROR ", "null"));
    EXPECT_TRUE(isFree(PLC_driver.listMutex));
    EXPECT_EQ(PLC_driver.scanCount, 9) << "the pass goes on";
    EXPECT_EQ(host.info.scanDone, 1);
}

TEST_F(RebuildFailure, AMissingListCountsAsEmpty)
{
    EXPECT_EQ(ReCreatReadVarList(nullptr), 0);
    EXPECT_TRUE(PLC_driver.pendingReadList.isEmpty());
    EXPECT_EQ(diagnostics.lines(), QStringList() << opening << line(204, "ERROR ", "null"));
    EXPECT_TRUE(isFree(PLC_driver.listMutex));
}

TEST_F(RebuildFailure, ARefusedAddressIsLoggedAndSkipped)
{
    QList<HOSTVAR> vars = {hostVar("P.W", 1), hostVar("P.No\"pe", 1), hostVar("P.R[1]", 1),
                           hostVar("P.B", 1)};
    EXPECT_EQ(ReCreatReadVarList(&vars), 2);
    EXPECT_EQ(addressesOf(PLC_driver.pendingReadList), (std::vector<int>{10, 16}));
    const QStringList lines = diagnostics.lines();
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines.at(0), opening);
    EXPECT_EQ(lines.at(1), line(234, "ERROR ", quoted("P.No\"pe")));
    EXPECT_EQ(lines.at(2), line(234, "ERROR ", quoted("P.R[1]")));
    EXPECT_TRUE(isFree(PLC_driver.listMutex));
}

TEST_F(RebuildFailure, WhenEveryAddressIsRefusedTheNewListIsEmpty)
{
    QList<HOSTVAR> vars = {hostVar("P.Nope", 1)};
    EXPECT_EQ(ReCreatReadVarList(&vars), 0);
    EXPECT_TRUE(PLC_driver.pendingReadList.isEmpty());
    EXPECT_TRUE(isFree(PLC_driver.listMutex));
    EXPECT_EQ(PLC_driver.scanCount, 0);
    EXPECT_EQ(host.info.scanDone, 0);
    EXPECT_EQ(ComCommunication(), nullptr) << "an empty new list replaces nothing";
}

TEST_F(RebuildFailure, AnUnsupportedTypeEndsItWithTheListMutexLeftLocked)
{
    for (const char* address :
         {"P.X0", "P.X2", "P.X3", "P.X5", "P.X8", "P.X9", "P.X11", "P.X200", "P.S"}) {
        PLC_driver.pendingReadList << element(4, 0);
        PLC_driver.scanCount = 9;
        host.info.scanDone = 1;
        diagnostics.clear();
        QList<HOSTVAR> vars = {hostVar("P.B", 1), hostVar("P.W", 1), hostVar(address, 1),
                               hostVar("P.Nope", 1)};
        EXPECT_EQ(ReCreatReadVarList(&vars), 0) << address;
        const bool leftLocked = !PLC_driver.listMutex.tryLock();
        EXPECT_TRUE(leftLocked) << address;
        PLC_driver.listMutex.unlock();
        EXPECT_TRUE(PLC_driver.pendingReadList.isEmpty()) << address;
        EXPECT_EQ(diagnostics.lines(), QStringList() << opening) << address;
        EXPECT_EQ(PLC_driver.scanCount, 0);
        EXPECT_EQ(host.info.scanDone, 0);
    }
}

TEST_F(RebuildFailure, AnUnsupportedTypeEndsItEvenWithoutElements)
{
    QList<HOSTVAR> vars = {hostVar("P.X3", 0)};
    EXPECT_EQ(ReCreatReadVarList(&vars), 0);
    EXPECT_FALSE(PLC_driver.listMutex.tryLock());
    PLC_driver.listMutex.unlock();
}

TEST_F(RebuildFailure, AfterTheHostFreesTheMutexARebuildWorksAgain)
{
    QList<HOSTVAR> bad = {hostVar("P.X3", 1)};
    ReCreatReadVarList(&bad);
    PLC_driver.listMutex.unlock();
    QList<HOSTVAR> good = {hostVar("P.W", 1)};
    EXPECT_EQ(ReCreatReadVarList(&good), 1);
    EXPECT_TRUE(isFree(PLC_driver.listMutex));
}

} // namespace
