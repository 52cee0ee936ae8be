// Members of the driver's context.
#include "request_lists.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr int kOnceReadTurn = 2; // of cycleState

} // namespace

std::vector<BatchEntry> currentBatch(const Communication_Protocol& driver)
{
    std::vector<BatchEntry> entries;
    for (int i = 0; i < driver.batchCount; ++i) {
        const RW_VAR& variable = *driver.batchElements[i];
        entries.push_back({variable.hostKey, variable.varKey});
    }
    return entries;
}

int withdraw(Communication_Protocol& driver, RequestList which,
             const std::function<bool(int hostKey, int varKey)>& goes, int inFlight)
{
    driver.listMutex.lock();
    QList<RW_VAR>& list = which == RequestList::writes ? driver.writeVarList : driver.onceReadList;
    int taken = 0;
    for (int i = list.size(); i > inFlight; --i) {
        const RW_VAR& entry = list.at(i - 1);
        if (goes(entry.hostKey, entry.varKey)) {
            list.removeAt(i - 1);
            ++taken;
        }
    }
    driver.listMutex.unlock();
    return taken;
}

void keepPollingOut(Communication_Protocol& driver, bool writesWait, bool readsWait)
{
    driver.onceReadTurns = 0;
    const bool lastWasRead = driver.cycleState == kOnceReadTurn;
    if (!(writesWait && readsWait) || lastWasRead) {
        driver.writeTurns = 0;
    }
}

void giveUpAtNextFailure(Communication_Protocol& driver)
{
    driver.comInfo->retryCount = std::max(driver.comInfo->retryCount, driver.comInfo->retryLimit);
}

} // namespace tavmir::host
