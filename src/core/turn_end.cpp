#include "core/turn_end.h"

#include "core/cycle_state.h"
#include "core/finished_variables.h"
#include "core/result_record.h"
#include "core/shared_words.h"
#include "lists/remove_front.h"
#include "lists/rotation.h"

#include <QtCore/QMutexLocker>

namespace tavmir
{

namespace
{

const int kVariableDone = 1;
const int kVariableFailed = 2;
const int kGivenUpFlag = 1;

// Whether a finished variable still waits in the list. The list is looked at once, and again only
// after a callback has changed it.
class WaitingVariables
{
public:
    WaitingVariables(const QList<RW_VAR>& list, const FinishedVariables& finished)
        : list_(list), finished_(finished), looked_(false)
    {
    }

    bool contain(int i)
    {
        if (!looked_) {
            looked_ = true;
            // A change takes the list away from the one that is shared here.
            seen_ = list_;
            found_ = finished_.findIn(seen_);
        }
        return list_.isSharedWith(seen_) ? found_[static_cast<std::size_t>(i)]
                                         : finished_.occursIn(list_, i);
    }

private:
    const QList<RW_VAR>& list_;
    const FinishedVariables& finished_;
    bool looked_;
    QList<RW_VAR> seen_;
    FinishedVariables::Flags found_;
};

// Takes the batch's entries off the list's front and reports their variables. A variable that
// still waits in the list reports success only once, after its last entry. What a callback
// changes counts from the next report on.
void finishListTurn(QList<RW_VAR>& list)
{
    const FinishedVariables finished(list, PLC_driver.batchCount);
    removeFront(list, PLC_driver.batchCount);

    WaitingVariables waiting(list, finished);
    for (int i = 0; i < finished.count(); ++i) {
        const VarDoneCallback report = PLC_driver.varDoneCallback;
        if (!report) {
            continue;
        }
        const bool failed = loadShared(PLC_driver.commFailed);
        if (failed || !waiting.contain(i)) {
            report(PLC_driver.comInfo->comStation, finished.hostKey(i), finished.varKey(i),
                   failed ? kVariableFailed : kVariableDone);
        }
    }
}

// Hands the batch's head to the host as the result and moves the batch to the list's end.
void finishReadTurn()
{
    QList<RW_VAR>& list = PLC_driver.readVarList;
    if (list.isEmpty() || list.first().status != kHeadInFlight) {
        return;
    }
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

    if (PLC_driver.cycleState == kWriteInFlight) {
        finishListTurn(PLC_driver.writeVarList);
    } else if (PLC_driver.cycleState == kOnceReadInFlight) {
        finishListTurn(PLC_driver.onceReadList);
    } else if (PLC_driver.cycleState == kReadInFlight) {
        finishReadTurn();
    }

    if (loadShared(PLC_driver.commFailed)) {
        if (const CommFailCallback report = PLC_driver.commFailCallback) {
            report(QList<RW_VAR>(), PLC_driver.retVar.hostKey, kGivenUpFlag);
        }
        // Work queued behind the failed batch goes without a report of its own: the one above
        // stands for all of it.
        if (PLC_driver.cycleState == kWriteInFlight) {
            dropped.swap(PLC_driver.writeVarList);
        } else if (PLC_driver.cycleState == kOnceReadInFlight) {
            dropped.swap(PLC_driver.onceReadList);
        }
    }
    PLC_driver.retVar.status = code;
}

} // namespace tavmir
