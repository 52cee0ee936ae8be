#include "support/driver_test.h"

#include <cstring>

namespace tavmir
{
namespace test
{

void resetDriver()
{
    Communication_Protocol& driver = PLC_driver;
    driver.comInfo = nullptr;
    driver.readVarList.clear();
    driver.pendingReadList.clear();
    driver.writeVarList.clear();
    driver.onceReadList.clear();
    driver.auxVarList.clear();
    driver.protocolList.clear();
    driver.extendVarList.clear();
    driver.varDoneCallback = nullptr;
    driver.commFailCallback = nullptr;
    driver.stationMap.clear();
    driver.retVar = RW_VAR();
    driver.cycleState = 100;
    driver.writeTurns = 0;
    driver.onceReadTurns = 0;
    driver.scanCount = 0;
    driver.commFailed = false;
    driver.batchCount = 0;
    for (RW_VAR*& element : driver.batchElements) {
        element = nullptr;
    }
    driver.transactionCounter = 0;
    std::memset(driver.sendBuffer, 0, sizeof driver.sendBuffer);
    driver.labelTable.clear();
    driver.byteCache.clear();
    driver.wordCache.clear();
    driver.dwordCache.clear();
    LB = nullptr;
    LW = nullptr;
    RWI = nullptr;
}

bool isFree(QMutex& mutex)
{
    if (!mutex.tryLock()) {
        return false;
    }
    mutex.unlock();
    return true;
}

DriverTest::DriverTest()
{
    resetDriver();
    host.setUpForOperation();
    SetComInfo(&host.info);
    RegistCallBackFuncIntf(&CallbackRecorder::varDoneFunction, &CallbackRecorder::commFailFunction);
    diagnostics.clear();
}

DriverTest::~DriverTest()
{
    for (QMutex* mutex :
         {&PLC_driver.listMutex, &PLC_driver.cacheMutex, &PLC_driver.stationMutex}) {
        const bool leftFree = mutex->tryLock();
        EXPECT_TRUE(leftFree) << "a mutex was left locked";
        mutex->unlock();
    }
    resetDriver();
}

} // namespace test
} // namespace tavmir
