// The entry points that fill the request lists.
#include "checked/calls.h"
#include "checked/locks.h"
#include "checked/plain.h"
#include "checked/quiet_address.h"
#include "checked/read_words.h"
#include "checked/records.h"
#include "checked/report.h"
#include "checked/text.h"

#include <QtCore/QMutexLocker>

using namespace tavmir::checked;

namespace
{

const int kOnceReadLimit = 1024;

// False, and told, for a null record.
bool expectRecord(const void* var, const Call& call)
{
    if (!var) {
        report(kNullArgument, call, "was given null.");
    }
    return var != nullptr;
}

bool isQueued(const RW_VAR& var, qint32 elementAddress)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    const QList<RW_VAR>& list = PLC_driver.onceReadList;
    // The cycle has taken entries since: the one looked for may be among them.
    if (list.size() < kOnceReadLimit) {
        return true;
    }
    for (int i = list.size() - 1; i >= 0; --i) {
        const RW_VAR& entry = list.at(i);
        if (entry.elementAddress == elementAddress && entry.hostKey == var.hostKey &&
            entry.varKey == var.varKey && entry.dataType == var.dataType) {
            return true;
        }
    }
    return false;
}

// `first` is where the variable's elements begin; `var` is as the driver leaves it.
void expectAllQueued(const RW_VAR& var, qint32 first, qint32 step, const Call& call)
{
    if (step == 0 || var.elementAddress == first) {
        return;
    }
    if (!isQueued(var, var.elementAddress - step)) {
        report(kOnceReadOverflow, call,
               text("found %d one-shot reads queued and dropped what did not fit.", kOnceReadLimit),
               "address " + quoted(var.addressText));
    }
}

} // namespace

int AddListReadVar(const RW_VAR* var) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kAddListReadVar, __builtin_return_address(0));
    if (cycleHasBegun()) {
        report(kReadVarAfterCycle, call, "was called after the cycle had begun.");
    }
    if (expectRecord(var, call)) {
        checkPolled(*var, call);
    }
    return tavmir_plain_AddListReadVar(var);
}

int AddListWriteVar(const RW_VAR* var) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kAddListWriteVar, __builtin_return_address(0));
    if (expectRecord(var, call)) {
        checkWrite(*var, call);
        noteStored(var->dataType, var->elementAddress);
    }
    if (!call.isNested()) {
        expectListsOpen(call);
    }
    return tavmir_plain_AddListWriteVar(var);
}

int AddListOnceReadVar(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kAddListOnceReadVar, __builtin_return_address(0));
    ControlInformationM info;
    if (expectRecord(var, call)) {
        const bool resolved = tavmir_quiet_address_info(var->addressText, info) == kAddressResolved;
        checkOnceRead(*var, resolved ? &info : nullptr, call);
    }
    if (!call.isNested()) {
        expectListsOpen(call);
    }
    const int queued = tavmir_plain_AddListOnceReadVar(var);
    if (queued >= kOnceReadLimit) {
        const qint32 step = info.dataType == 10 ? 16 : info.elementWidth;
        expectAllQueued(*var, info.elementAddress, step, call);
    }
    return queued;
}

int ReCreatReadVarList(QList<HOSTVAR>* vars) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kReCreatReadVarList, __builtin_return_address(0));
    if (!call.isNested()) {
        expectListsOpen(call);
    }
    // As long as the driver itself holds the mutex for the rebuild, so that what hosts change
    // without it is seen.
    if (vars && !call.isNested()) {
        QMutexLocker lock(&PLC_driver.listMutex);
        const ListWatch lists;
        checkRebuild(*vars, call);
        lists.compare(call);
    }
    return tavmir_plain_ReCreatReadVarList(vars);
}
