// The entry points of setting up, and those of the stations.
#include "checked/callbacks.h"
#include "checked/calls.h"
#include "checked/labels.h"
#include "checked/locks.h"
#include "checked/plain.h"
#include "checked/report.h"

using tavmir::checked::Call;
using namespace tavmir::checked;

namespace
{

void expectNoCycle(const Call& call)
{
    if (cycleHasBegun()) {
        report(kSetUpAfterCycle, call, "was called after the cycle had begun.");
    }
}

} // namespace

void SetComInfo(ComInfo* comInfo) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kSetComInfo, __builtin_return_address(0));
    expectNoCycle(call);
    if (!comInfo) {
        report(kComInfoNull, call, "was given null.");
    }
    rememberRecord(comInfo);
    tavmir_plain_SetComInfo(comInfo);
}

void RegistCallBackFuncIntf(VarDoneCallback varDone,
                            CommFailCallback commFail) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kRegistCallBackFuncIntf, __builtin_return_address(0));
    // A callback may set another one.
    if (!call.isNested() || call.isOutOfMessageHandler()) {
        expectNoCycle(call);
    }
    rememberCallbacks(varDone, commFail);
    tavmir_plain_RegistCallBackFuncIntf(varDone, commFail);
}

void FlashLocalRegister(void* lb, void* lw, void* rwi) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kFlashLocalRegister, __builtin_return_address(0));
    expectNoCycle(call);
    tavmir_plain_FlashLocalRegister(lb, lw, rwi);
}

void PassVarName_2(QList<Label_Type_Info>* labels) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kPassVarName2, __builtin_return_address(0));
    if (labels) {
        checkLabels(*labels, call);
    }
    tavmir_plain_PassVarName_2(labels);
}

void EnCommStation(int station, int enable) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kEnCommStation, __builtin_return_address(0));
    expectStationsOpen(call);
    tavmir_plain_EnCommStation(station, enable);
}

void EnableEthernet(int station, int enable) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kEnableEthernet, __builtin_return_address(0));
    expectStationsOpen(call);
    tavmir_plain_EnableEthernet(station, enable);
}

bool Ethernetcontains(int station) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kEthernetcontains, __builtin_return_address(0));
    expectStationsOpen(call);
    return tavmir_plain_Ethernetcontains(station);
}

int PLCAddressChangeIntef() TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kPLCAddressChangeIntef, __builtin_return_address(0));
    return tavmir_plain_PLCAddressChangeIntef();
}

int QueryFinishFlag() TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kQueryFinishFlag, __builtin_return_address(0));
    return tavmir_plain_QueryFinishFlag();
}
