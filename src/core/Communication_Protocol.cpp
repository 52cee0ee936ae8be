// The driver context and the communication cycle over it:
//
//   ComCommunication: choose a turn ──▶ form a batch ──▶ build its request
//   DataCom:          judge the answer ──▶ store it ──▶ repeat, give up or end the turn
#include "core/batch.h"
#include "core/cycle_state.h"
#include "core/diagnostic_log.h"
#include "core/reply_check.h"
#include "core/return_codes.h"
#include "core/shared_words.h"
#include "core/turn_end.h"
#include "core/wrapping.h"
#include "frames/Func_Write.h"
#include "frames/read_request.h"
#include "lists/remove_front.h"

#include <QtCore/QMutexLocker>

using tavmir::loadShared;
using tavmir::storeShared;

Communication_Protocol PLC_driver;

namespace
{

const char kFile[] = "Communication_Protocol";

const int kTurnsInARow = 5; // of writes, and of one-shot reads, before polling gets a turn

const int kWillBeResent = 0;

enum Turn { kNoTurn, kWriteTurn, kOnceReadTurn, kReadTurn };

void takePendingReadList()
{
    // Declared before the lock: the old list is destroyed after the lock is released.
    QList<RW_VAR> old;
    QMutexLocker lock(&PLC_driver.listMutex);
    if (PLC_driver.pendingReadList.isEmpty()) {
        return;
    }
    old.swap(PLC_driver.readVarList);
    PLC_driver.readVarList.swap(PLC_driver.pendingReadList);
}

// Writes win over one-shot reads, both win over polling, each for `kTurnsInARow` turns.
Turn chooseTurnAndBatch()
{
    PLC_driver.batchCount = 0;
    {
        QMutexLocker lock(&PLC_driver.listMutex);
        if (!PLC_driver.writeVarList.isEmpty() && PLC_driver.writeTurns < kTurnsInARow) {
            tavmir::formBatch(PLC_driver.writeVarList);
            return kWriteTurn;
        }
        if (!PLC_driver.onceReadList.isEmpty() && PLC_driver.onceReadTurns < kTurnsInARow) {
            tavmir::formBatch(PLC_driver.onceReadList);
            return kOnceReadTurn;
        }
    }
    if (PLC_driver.readVarList.isEmpty()) {
        return kNoTurn;
    }
    PLC_driver.readVarList.first().status = tavmir::kHeadInFlight;
    tavmir::formBatch(PLC_driver.readVarList);
    return kReadTurn;
}

// A batch without write encoding can never be sent: it must not stop the turns after it.
void dropRefusedWrites()
{
    QMutexLocker lock(&PLC_driver.listMutex);
    tavmir::removeFront(PLC_driver.writeVarList, PLC_driver.batchCount);
}

// Builds the request of the turn; false when the turn made none and another is to be chosen.
bool buildRequest(Turn turn)
{
    if (turn == kWriteTurn) {
        if (!tavmir::requestWrites()) {
            dropRefusedWrites();
            return false;
        }
        PLC_driver.cycleState = tavmir::kWriteInFlight;
        ++PLC_driver.writeTurns;
        return true;
    }
    ReadRegister();
    if (turn == kOnceReadTurn) {
        PLC_driver.cycleState = tavmir::kOnceReadInFlight;
        ++PLC_driver.onceReadTurns;
        return true;
    }
    PLC_driver.cycleState = tavmir::kReadInFlight;
    PLC_driver.writeTurns = 0;
    PLC_driver.onceReadTurns = 0;
    return true;
}

void setStatus(int status)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    PLC_driver.retVar.status = status;
}

// One more turn end towards the scan-done flag.
void countTurnEnd()
{
    ComInfo& host = *PLC_driver.comInfo;
    if (loadShared(host.scanDone) != 0) {
        return;
    }
    const qint32 before = loadShared(PLC_driver.scanCount);
    const qint32 turnEnds = tavmir::wrapAdd(before, 1);
    const bool passDone = turnEnds > PLC_driver.readVarList.size();
    // A rebuild that started the count anew meanwhile wins.
    tavmir::replaceShared(PLC_driver.scanCount, before, passDone ? 0 : turnEnds);
    if (passDone) {
        storeShared(host.scanDone, 1);
    }
}

// Removes the answered request; true when its turn is over.
bool finishRequest()
{
    ComInfo& host = *PLC_driver.comInfo;
    storeShared(PLC_driver.commFailed, false);
    host.replyCount = tavmir::wrapAdd(host.replyCount, 1);
    const bool turnOver = host.replyCount >= host.replyQuota;
    if (turnOver) {
        countTurnEnd();
    }
    PLC_driver.protocolList.removeFirst();
    return turnOver;
}

void logFailure(const QByteArray* reply)
{
    tavmir::diagnosticLine(kFile, "DataCom", tavmir::kLineFailedRequest, tavmir::kError)
        << tavmir::hexText(&PLC_driver.protocolList.first().frame);
    tavmir::diagnosticLine(kFile, "DataCom", tavmir::kLineFailedReply, tavmir::kError)
        << tavmir::hexText(reply);
}

// Counts a failure; true when the retry limit is passed, and with it every request dropped.
// The count is one of failures since the last give-up: a good reply does not reset it.
bool giveUpAfterFailure()
{
    ComInfo& host = *PLC_driver.comInfo;
    host.retryCount = tavmir::wrapAdd(host.retryCount, 1);
    if (host.retryCount <= host.retryLimit) {
        return false;
    }
    storeShared(PLC_driver.commFailed, true);
    storeShared(PLC_driver.scanCount, 0);
    storeShared(host.scanDone, 0);
    host.retryCount = 0;
    PLC_driver.protocolList.clear();
    return true;
}

} // namespace

Communication_Protocol::Communication_Protocol()
    : comInfo(nullptr), varDoneCallback(nullptr), commFailCallback(nullptr), cycleState(0),
      writeTurns(0), onceReadTurns(0), scanCount(0), commFailed(false), batchCount(0),
      batchElements(), transactionCounter(0), sendBuffer()
{
    tavmir::diagnosticLine(kFile, "Communication_Protocol", tavmir::kLineContextConstructed,
                           tavmir::kTrace)
        << "----";
    cycleState = tavmir::kNothingYet;
}

Communication_Protocol::~Communication_Protocol() {}

int Communication_Protocol::get_data_type_size(int dataType)
{
    static const qint32 kSizes[] = {5, 6, 6, 6, 6, 8, 8, 6, 6, 6};
    static const int kDefaultSize = 6;
    return dataType >= 1 && dataType <= 10 ? kSizes[dataType - 1] : kDefaultSize;
}

Protocol* ComCommunication() TAVMIR_KX_TCP_NOTHROW
{
    if (!PLC_driver.protocolList.isEmpty()) {
        return &PLC_driver.protocolList.first();
    }

    takePendingReadList();
    Turn turn = chooseTurnAndBatch();
    while (turn != kNoTurn && !buildRequest(turn)) {
        turn = chooseTurnAndBatch();
    }

    if (PLC_driver.protocolList.isEmpty()) {
        PLC_driver.writeTurns = 0;
        PLC_driver.onceReadTurns = 0;
        storeShared(PLC_driver.comInfo->scanDone, 1);
        return nullptr;
    }
    return &PLC_driver.protocolList.first();
}

RW_VAR* DataCom(QByteArray* reply, int received) TAVMIR_KX_TCP_NOTHROW
{
    PLC_driver.retVar.status = kCodeGood;
    if (PLC_driver.protocolList.isEmpty()) {
        return &PLC_driver.retVar;
    }

    const int code = DealDataOfLocalArea(reply, received);
    if (isGoodCode(code)) {
        if (finishRequest()) {
            tavmir::endTurn(code);
        } else {
            setStatus(code);
        }
        return &PLC_driver.retVar;
    }

    logFailure(reply);
    if (giveUpAfterFailure()) {
        tavmir::endTurn(code);
    } else {
        setStatus(kWillBeResent);
    }
    return &PLC_driver.retVar;
}
