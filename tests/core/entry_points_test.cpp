// The entry points that only store or only answer.
#include "support/driver_test.h"

using namespace tavmir::test;

namespace
{

class EntryPoints : public DriverTest
{
};

int otherVarDone(int, int, int, int)
{
    return 0;
}

int otherCommFail(QList<RW_VAR>, int, int)
{
    return 0;
}

TEST_F(EntryPoints, SetComInfoKeepsThePointerAndClearsWords10And13Only)
{
    HostRecord other;
    SetComInfo(&other.info);
    EXPECT_EQ(PLC_driver.comInfo, &other.info);
    const std::map<int, qint32> cleared = {{10, 0}, {13, 0}};
    EXPECT_EQ(other.changedWords(), cleared);
}

TEST_F(EntryPoints, SetComInfoAgainReplacesThePointer)
{
    HostRecord first;
    HostRecord second;
    SetComInfo(&first.info);
    SetComInfo(&second.info);
    EXPECT_EQ(PLC_driver.comInfo, &second.info);
}

TEST_F(EntryPoints, TheFirstCallbackReportsVariablesAndTheSecondGiveUps)
{
    RegistCallBackFuncIntf(otherVarDone, otherCommFail);
    EXPECT_EQ(PLC_driver.varDoneCallback, &otherVarDone);
    EXPECT_EQ(PLC_driver.commFailCallback, &otherCommFail);
    RegistCallBackFuncIntf(nullptr, nullptr);
    EXPECT_EQ(PLC_driver.varDoneCallback, nullptr);
    EXPECT_EQ(PLC_driver.commFailCallback, nullptr);
}

TEST_F(EntryPoints, FlashLocalRegisterStoresLbLwRwiInThisOrder)
{
    char lb = 'b';
    char lw = 'w';
    char rwi = 'i';
    FlashLocalRegister(&lb, &lw, &rwi);
    EXPECT_EQ(LB, &lb);
    EXPECT_EQ(LW, &lw);
    EXPECT_EQ(RWI, &rwi);
    EXPECT_EQ(lb, 'b');
    EXPECT_EQ(lw, 'w');
    EXPECT_EQ(rwi, 'i');
}

TEST_F(EntryPoints, TheStubsAnswerTheSameInEveryState)
{
    EXPECT_EQ(PLCAddressChangeIntef(), -1);
    EXPECT_EQ(QueryFinishFlag(), 1);

    RW_VAR var;
    var.dataType = 4;
    AddListReadVar(&var);
    ComCommunication();
    PLC_driver.commFailed = true;
    host.info.scanDone = 0;
    EXPECT_EQ(PLCAddressChangeIntef(), -1);
    EXPECT_EQ(QueryFinishFlag(), 1);
    EXPECT_EQ(host.info.scanDone, 0);
    EXPECT_EQ(PLC_driver.protocolList.size(), 1);

    resetDriver();
    EXPECT_EQ(PLCAddressChangeIntef(), -1);
    EXPECT_EQ(QueryFinishFlag(), 1);
}

TEST_F(EntryPoints, SetUpCallsWriteNoLine)
{
    HostRecord other;
    SetComInfo(&other.info);
    RegistCallBackFuncIntf(otherVarDone, otherCommFail);
    FlashLocalRegister(nullptr, nullptr, nullptr);
    EnCommStation(1, 0);
    PLCAddressChangeIntef();
    QueryFinishFlag();
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

} // namespace
