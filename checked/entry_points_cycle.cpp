// The two entry points of the communication cycle.
#include "checked/callbacks.h"
#include "checked/calls.h"
#include "checked/host_memory.h"
#include "checked/in_flight.h"
#include "checked/locks.h"
#include "checked/plain.h"
#include "checked/read_words.h"
#include "checked/report.h"
#include "checked/sleep_watch.h"
#include "checked/text.h"
#include "core/cycle_state.h"
#include "core/shared_words.h"

using namespace tavmir::checked;

namespace
{

// What both look at. Not for a call out of a callback, which is told of already: the turn is at
// its end and the mutex locked.
void checkTurn(const Call& call)
{
    const ComInfo* const record = PLC_driver.comInfo;
    if (record && !isReadable(record)) {
        report(kComInfoUnreadable, call,
               text("found the connection record at %p unreadable.",
                    static_cast<const void*>(record)));
    }
    compareSetUp(call);
    checkSleep(call);
    expectListsOpen(call);
    inFlight.compare(call);
}

// A write turn stores what it sends.
bool willStoreWrites()
{
    if (tavmir::loadShared(PLC_driver.commFailed) || !PLC_driver.listMutex.tryLock()) {
        return false;
    }
    const bool waiting = !PLC_driver.writeVarList.isEmpty();
    PLC_driver.listMutex.unlock();
    return waiting;
}

void noteReplyStored(int code)
{
    if (code != 1) {
        return;
    }
    for (int i = 0; i < inFlight.batch(); ++i) {
        noteStored(inFlight.dataType(), inFlight.address(i));
    }
}

} // namespace

Protocol* ComCommunication() TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kComCommunication, __builtin_return_address(0));
    if (call.isNested()) {
        return tavmir_plain_ComCommunication();
    }
    checkTurn(call);
    const bool resent = !PLC_driver.protocolList.isEmpty();
    if (!resent && willStoreWrites()) {
        expectCachesOpen(call);
    }
    Protocol* const request = tavmir_plain_ComCommunication();
    if (!request) {
        noteNull();
    } else {
        noteRequest();
    }
    if (!resent) {
        inFlight.remember(request);
    }
    return request;
}

RW_VAR* DataCom(QByteArray* reply, int received) TAVMIR_KX_TCP_NOTHROW
{
    Call call(kDataCom, __builtin_return_address(0));
    if (call.isNested()) {
        return tavmir_plain_DataCom(reply, received);
    }
    checkTurn(call);
    expectCachesOpen(call);
    inFlight.checkReply(reply, received, call);
    RW_VAR* result = nullptr;
    {
        const CallbacksLookedAfter callbacks(call);
        result = tavmir_plain_DataCom(reply, received);
    }
    if (inFlight.isKnown()) {
        noteReplyStored(result->status);
    }
    return result;
}
