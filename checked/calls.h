// The host's calls that are running: on this thread one within the other, on other threads beside
// it. Private.
#ifndef TAVMIR_CHECKED_CALLS_H
#define TAVMIR_CHECKED_CALLS_H

#include <string>

namespace tavmir
{
namespace checked
{

enum CallName {
    kSetComInfo,
    kRegistCallBackFuncIntf,
    kFlashLocalRegister,
    kPassVarName2,
    kAddListReadVar,
    kAddListWriteVar,
    kAddListOnceReadVar,
    kReCreatReadVarList,
    kComCommunication,
    kDataCom,
    kGetRegisterData,
    kSetRegisterData,
    kEnCommStation,
    kEnableEthernet,
    kPLCAddressChangeIntef,
    kQueryFinishFlag,
    kEthernetcontains,
    kCallNames
};

const char* nameOf(CallName name);

// One call of the host, from its first line to its last. Tells at once when it is made out of a
// callback or a message handler that must not make it, before SetComInfo, or beside a call that it
// must be kept apart from: before it waits or crashes.
class Call
{
public:
    Call(CallName name, const void* caller);
    ~Call();

    CallName name() const { return name_; }
    const void* caller() const { return caller_; }

    // Made while another call of the same thread is running.
    bool isNested() const { return outer_ != nullptr; }
    bool isOutOfMessageHandler() const { return outer_ && !outer_->callback_; }

    // While a host's callback runs within this call: its name, else null.
    void setCallback(const char* name) { callback_ = name; }

private:
    Call(const Call&);
    Call& operator=(const Call&);

    void checkSetUp() const;
    void checkNesting() const;
    void checkNeighbours() const;
    void checkLabelTable() const;

    CallName name_;
    const void* caller_;
    const char* callback_;
    Call* outer_;
};

// A bit write is a call that must be kept apart from others besides.
class BitWrite
{
public:
    explicit BitWrite(const Call& call);
    ~BitWrite();

private:
    BitWrite(const BitWrite&);
    BitWrite& operator=(const BitWrite&);
};

// True from the first call of the cycle's two on.
bool cycleHasBegun();

// "DataCom, 2 times GetRegisterData", or nothing when no call is running, `except` set aside.
std::string runningCalls(const Call* except = nullptr);

} // namespace checked
} // namespace tavmir

#endif
