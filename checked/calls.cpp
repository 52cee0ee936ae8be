#include "checked/calls.h"

#include "checked/report.h"
#include "checked/text.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

namespace tavmir
{
namespace checked
{

namespace
{

const int kSendToController = 2; // of `writeMode`

std::atomic<int> running[kCallNames];
std::atomic<int> bitWrites;
std::atomic<int> cycleThread;
std::atomic<bool> cycleBegan;

__thread Call* innermost;

bool isCycleCall(CallName name)
{
    return name == kComCommunication || name == kDataCom;
}

bool parsesAddresses(CallName name)
{
    return name == kAddListOnceReadVar || name == kReCreatReadVarList || name == kGetRegisterData ||
           name == kSetRegisterData;
}

int runningParsers()
{
    return running[kAddListOnceReadVar] + running[kReCreatReadVarList] + running[kGetRegisterData] +
           running[kSetRegisterData];
}

int runningCycleCalls()
{
    return running[kComCommunication] + running[kDataCom];
}

bool needsRecord(CallName name)
{
    return name == kAddListOnceReadVar || name == kReCreatReadVarList ||
           name == kComCommunication || name == kSetRegisterData;
}

// Their answers are constants, or the host's own set.
bool goesWithoutSetUp(CallName name)
{
    return name == kSetComInfo || name == kPLCAddressChangeIntef || name == kQueryFinishFlag ||
           name == kEthernetcontains || name == kEnCommStation || name == kEnableEthernet;
}

bool mayBeCalledInCallback(CallName name)
{
    if (name == kSetRegisterData) {
        return !PLC_driver.comInfo || PLC_driver.comInfo->writeMode != kSendToController;
    }
    return name != kAddListWriteVar && name != kAddListOnceReadVar && name != kReCreatReadVarList &&
           !isCycleCall(name);
}

// A thread that was waited for may be seen for a moment yet.
const int kLooks = 50;
const int kBetweenLooksUs = 4000;

bool threadLives(int thread)
{
    for (int look = 0; look < kLooks; ++look) {
        if (::syscall(SYS_tgkill, ::getpid(), thread, 0) != 0) {
            return false;
        }
        ::usleep(kBetweenLooksUs);
    }
    return true;
}

// The communication thread may end and another take its place, but not beside it.
void checkCycleThread(const Call& call)
{
    const int thread = threadId();
    const int before = cycleThread.exchange(thread);
    if (before == 0 || before == thread || !threadLives(before)) {
        return;
    }
    report(
        kCycleThread, call,
        text("was called while thread %d, which called the cycle until now, still lives.", before));
}

} // namespace

const char* nameOf(CallName name)
{
    static const char* const kNames[kCallNames] = {"SetComInfo",
                                                   "RegistCallBackFuncIntf",
                                                   "FlashLocalRegister",
                                                   "PassVarName_2",
                                                   "AddListReadVar",
                                                   "AddListWriteVar",
                                                   "AddListOnceReadVar",
                                                   "ReCreatReadVarList",
                                                   "ComCommunication",
                                                   "DataCom",
                                                   "GetRegisterData",
                                                   "SetRegisterData",
                                                   "EnCommStation",
                                                   "EnableEthernet",
                                                   "PLCAddressChangeIntef",
                                                   "QueryFinishFlag",
                                                   "Ethernetcontains"};
    return kNames[name];
}

Call::Call(CallName name, const void* caller)
    : name_(name), caller_(caller), callback_(nullptr), outer_(innermost)
{
    readyToReport();
    if (outer_) {
        checkNesting();
    } else {
        checkSetUp();
        checkNeighbours();
    }
    if (!isOutOfMessageHandler()) {
        checkLabelTable();
    }
    ++running[name_];
    innermost = this;
    if (isCycleCall(name_)) {
        cycleBegan.store(true, std::memory_order_relaxed);
    }
}

Call::~Call()
{
    innermost = outer_;
    --running[name_];
}

void Call::checkSetUp() const
{
    if (PLC_driver.comInfo || goesWithoutSetUp(name_)) {
        return;
    }
    if (needsRecord(name_)) {
        report(kComInfoMissing, *this, "was called before SetComInfo.");
    } else {
        report(kSetUpOrder, *this, "was called before SetComInfo.");
    }
}

void Call::checkNesting() const
{
    if (outer_->callback_) {
        if (!mayBeCalledInCallback(name_)) {
            report(kCallInCallback, *this,
                   text("was called out of %s, which runs inside %s.", outer_->callback_,
                        nameOf(outer_->name_)));
        }
        return;
    }
    report(kCallInMessageHandler, *this,
           text("was called while %s of the same thread is running: out of a message handler.",
                nameOf(outer_->name_)));
}

void Call::checkNeighbours() const
{
    if (!isCycleCall(name_)) {
        return;
    }
    if (runningCycleCalls() != 0) {
        report(kCycleOverlap, *this,
               text("was called while thread %d is inside the cycle: %s.", cycleThread.load(),
                    runningCalls().c_str()));
    } else {
        checkCycleThread(*this);
    }
    if (bitWrites != 0) {
        report(kBitWriteBesideCycle, *this, "was called while a bit write is running.");
    }
}

void Call::checkLabelTable() const
{
    if (name_ == kPassVarName2 && runningParsers() != 0) {
        report(kPassLabelsBesideParsing, *this,
               "was called while addresses are parsed: " + runningCalls() + '.');
    }
    const bool usesLabels = name_ == kPassVarName2 || parsesAddresses(name_);
    if (usesLabels && running[kPassVarName2] != 0) {
        report(kPassLabelsBesideParsing, *this, "was called while PassVarName_2 is running.");
    }
}

BitWrite::BitWrite(const Call& call)
{
    if (bitWrites++ != 0) {
        report(kBitWritesBesideEachOther, call, "writes a bit while another bit write is running.");
    }
    if (!innermost || runningCycleCalls() == 0) {
        return;
    }
    if (cycleThread != threadId()) {
        report(kBitWriteBesideCycle, call,
               text("writes a bit while thread %d is inside the cycle.", cycleThread.load()));
    }
}

BitWrite::~BitWrite()
{
    --bitWrites;
}

bool cycleHasBegun()
{
    return cycleBegan.load(std::memory_order_relaxed);
}

std::string runningCalls(const Call* except)
{
    std::string names;
    for (int i = 0; i < kCallNames; ++i) {
        const int count = running[i] - (except && except->name() == i ? 1 : 0);
        if (count < 1) {
            continue;
        }
        names += names.empty() ? "" : ", ";
        names += count > 1 ? text("%d times ", count) : "";
        names += nameOf(static_cast<CallName>(i));
    }
    return names;
}

} // namespace checked
} // namespace tavmir
