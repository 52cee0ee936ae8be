#include "checked/callbacks.h"

#include "checked/calls.h"
#include "checked/report.h"
#include "checked/text.h"

#include <ctime>

#include <cstring>

namespace tavmir
{
namespace checked
{

namespace
{

const int kLongestCallbackMs = 2000; // a right one takes microseconds

struct SetUp {
    const ComInfo* record;
    VarDoneCallback varDone;
    CommFailCallback commFail;
};

// What the host handed over last, or a callback has set since. Zero before.
SetUp handed;

// The cycle has been called: what the host set by hand until then it was free to set.
bool compared;

// The call in which callbacks are looked after, and the host's own ones meanwhile.
Call* turn;
VarDoneCallback hostVarDone;
CommFailCallback hostCommFail;

qint64 nowMs()
{
    timespec now = timespec();
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<qint64>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// The address of a list's own data: another one after every change that moves it.
template <typename Entry> const void* dataOf(const QList<Entry>& list)
{
    const void* data = nullptr;
    std::memcpy(&data, static_cast<const void*>(&list), sizeof data);
    return data;
}

// What a turn's end still uses, as it was before a callback.
class TurnState
{
public:
    TurnState()
        : polledData_(dataOf(PLC_driver.readVarList)), polled_(PLC_driver.readVarList.size()),
          requests_(PLC_driver.protocolList.size()), batch_(PLC_driver.batchCount),
          cycleState_(PLC_driver.cycleState), status_(PLC_driver.retVar.status),
          hostKey_(PLC_driver.retVar.hostKey), address_(PLC_driver.retVar.elementAddress),
          head_(headStatus())
    {
        std::memcpy(elements_, PLC_driver.batchElements, sizeof elements_);
    }

    // The name of a member that changed, or null.
    const char* changed() const
    {
        if (dataOf(PLC_driver.readVarList) != polledData_ ||
            PLC_driver.readVarList.size() != polled_ || headStatus() != head_) {
            return "readVarList";
        }
        if (PLC_driver.protocolList.size() != requests_) {
            return "protocolList";
        }
        if (PLC_driver.batchCount != batch_) {
            return "batchCount";
        }
        if (PLC_driver.cycleState != cycleState_) {
            return "cycleState";
        }
        if (PLC_driver.retVar.status != status_ || PLC_driver.retVar.hostKey != hostKey_ ||
            PLC_driver.retVar.elementAddress != address_) {
            return "retVar";
        }
        const bool same = std::memcmp(elements_, PLC_driver.batchElements, sizeof elements_) == 0;
        return same ? nullptr : "batchElements";
    }

private:
    static qint32 headStatus()
    {
        const QList<RW_VAR>& polled = PLC_driver.readVarList;
        return polled.isEmpty() ? 0 : polled.first().status;
    }

    const void* polledData_;
    int polled_;
    int requests_;
    qint32 batch_;
    qint32 cycleState_;
    qint32 status_;
    qint32 hostKey_;
    qint32 address_;
    qint32 head_;
    RW_VAR* elements_[255];
};

int varDoneLookedAfter(int station, int hostKey, int varKey, int result);
int commFailLookedAfter(QList<RW_VAR> vars, int hostKey, int flag);

void putOurs()
{
    PLC_driver.varDoneCallback = hostVarDone ? &varDoneLookedAfter : nullptr;
    PLC_driver.commFailCallback = hostCommFail ? &commFailLookedAfter : nullptr;
}

// Puts the host's callbacks into the context. One that was handed over while ours was there stays.
void putHosts()
{
    if (PLC_driver.varDoneCallback == &varDoneLookedAfter) {
        PLC_driver.varDoneCallback = hostVarDone;
    }
    if (PLC_driver.commFailCallback == &commFailLookedAfter) {
        PLC_driver.commFailCallback = hostCommFail;
    }
}

// From before a host's callback until after it.
class Visit
{
public:
    explicit Visit(const char* name) : name_(name), call_(*turn), begun_(nowMs())
    {
        putHosts();
        call_.setCallback(name_);
    }

    void threw() const { report(kCallbackThrows, call_, text("ran %s, which threw.", name_)); }

    void ended()
    {
        call_.setCallback(nullptr);
        if (const char* member = before_.changed()) {
            report(kCallbackChangesTurn, call_,
                   text("ran %s, and %s changed meanwhile.", name_, member));
        }
        const long took = static_cast<long>(nowMs() - begun_);
        if (took >= kLongestCallbackMs) {
            report(kCallbackBlocks, call_, text("ran %s, which took %ld ms.", name_, took));
        }
        if (PLC_driver.listMutex.tryLock()) {
            PLC_driver.listMutex.unlock();
            report(kCallbackUnlocksLists, call_, text("ran %s, which unlocked listMutex.", name_));
        }
        turn = &call_;
        hostVarDone = handed.varDone = PLC_driver.varDoneCallback;
        hostCommFail = handed.commFail = PLC_driver.commFailCallback;
        putOurs();
    }

private:
    Visit(const Visit&);
    Visit& operator=(const Visit&);

    const char* name_;
    Call& call_;
    qint64 begun_;
    TurnState before_;
};

int varDoneLookedAfter(int station, int hostKey, int varKey, int result)
{
    Visit visit("varDoneCallback");
    int answer = 0;
    try {
        answer = hostVarDone(station, hostKey, varKey, result);
    } catch (...) {
        visit.threw();
        throw;
    }
    visit.ended();
    return answer;
}

int commFailLookedAfter(QList<RW_VAR> vars, int hostKey, int flag)
{
    Visit visit("commFailCallback");
    int answer = 0;
    try {
        answer = hostCommFail(vars, hostKey, flag);
    } catch (...) {
        visit.threw();
        throw;
    }
    visit.ended();
    return answer;
}

} // namespace

// A DataCom out of a callback, told already, finds no callback of ours in the context.
CallbacksLookedAfter::CallbacksLookedAfter(Call& call)
{
    turn = &call;
    hostVarDone = PLC_driver.varDoneCallback;
    hostCommFail = PLC_driver.commFailCallback;
    putOurs();
}

CallbacksLookedAfter::~CallbacksLookedAfter()
{
    putHosts();
}

void rememberCallbacks(VarDoneCallback varDone, CommFailCallback commFail)
{
    handed.varDone = varDone;
    handed.commFail = commFail;
}

void rememberRecord(const ComInfo* record)
{
    handed.record = record;
}

void compareSetUp(const Call& call)
{
    const char* member = nullptr;
    if (PLC_driver.comInfo != handed.record) {
        member = "comInfo";
    } else if (PLC_driver.varDoneCallback != handed.varDone) {
        member = "varDoneCallback";
    } else if (PLC_driver.commFailCallback != handed.commFail) {
        member = "commFailCallback";
    }
    const bool first = !compared;
    compared = true;
    if (!member) {
        return;
    }
    if (!first) {
        report(kSetUpMemberChanged, call, text("found another %s than was handed over.", member));
    }
    handed.record = PLC_driver.comInfo;
    handed.varDone = PLC_driver.varDoneCallback;
    handed.commFail = PLC_driver.commFailCallback;
}

} // namespace checked
} // namespace tavmir
