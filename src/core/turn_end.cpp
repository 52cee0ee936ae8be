#include "core/turn_end.h"

#include "core/cycle_state.h"
#include "core/finished_variables.h"
#include "core/result_record.h"
#include "core/shared_words.h"
#include "lists/rotation.h"

#include <QtCore/QMutexLocker>

namespace tavmir
{

namespace
{

const int kVariableDone = 1;
const int kVariableFailed = 2;
const int kGivenUpFlag = 1;

// Takes the batch's entries off the list's front and reports their variables. A variable that
// still waits in the list reports success only once, after its last entry.
void finishListTurn(QList<RW_VAR>& list, bool failed)
{
    const FinishedVariables finished(list, PLC_driver.batchCount);
    if (PLC_driver.batchCount >= list.size())
        list.clear();
    else
        list.erase(list.begin(), list.begin() + PLC_driver.batchCount);

    if (!PLC_driver.varDoneCallback)
        return;
    const FinishedVariables::Flags waiting =
        failed ? FinishedVariables::Flags() : finished.findIn(list);
    const int station = PLC_driver.comInfo->comStation;
    for (int i = 0; i < finished.count(); ++i) {
        if (!waiting[i])
            PLC_driver.varDoneCallback(station, finished.hostKey(i), finished.varKey(i),
                                       failed ? kVariableFailed : kVariableDone);
    }
}

// Hands the batch's head to the host as the result and moves the batch to the list's end.
void finishReadTurn()
{
    QList<RW_VAR>& list = PLC_driver.readVarList;
    if (list.isEmpty() || list.first().status != kHeadInFlight)
        return;
    RW_VAR& head = list.first();
    head.status = 0;
    passRetValue(head, PLC_driver.retVar);
    rotate(list, PLC_driver.batchCount);
}

} // namespace

void endTurn(int code)
{
    // Declared before the lock: what a give-up drops is destroyed after the lock is released.
    QList<RW_VAR> dropped;
    QMutexLocker lock(&PLC_driver.listMutex);
    const bool failed = loadShared(PLC_driver.commFailed);

    if (PLC_driver.cycleState == kWriteInFlight)
        finishListTurn(PLC_driver.writeVarList, failed);
    else if (PLC_driver.cycleState == kOnceReadInFlight)
        finishListTurn(PLC_driver.onceReadList, failed);
    else if (PLC_driver.cycleState == kReadInFlight)
        finishReadTurn();

    if (failed) {
        if (PLC_driver.commFailCallback)
            PLC_driver.commFailCallback(QList<RW_VAR>(), PLC_driver.retVar.hostKey, kGivenUpFlag);
        // Work queued behind the failed batch goes without a callback: hosts take the
        // failure report above as the end of all of it.
        if (PLC_driver.cycleState == kWriteInFlight)
            dropped.swap(PLC_driver.writeVarList);
        else if (PLC_driver.cycleState == kOnceReadInFlight)
            dropped.swap(PLC_driver.onceReadList);
    }
    PLC_driver.retVar.status = code;
}

} // namespace tavmir
