// The entry points that only keep what the host hands over, or answer a constant.
#include "tavmir_kx_tcp/host_interface.h"

void* LB = nullptr;
void* LW = nullptr;
void* RWI = nullptr;

void SetComInfo(ComInfo* comInfo) TAVMIR_KX_TCP_NOTHROW
{
    PLC_driver.comInfo = comInfo;
    comInfo->hostWord10 = 0;
    comInfo->hostWord13 = 0;
}

void RegistCallBackFuncIntf(VarDoneCallback varDone,
                            CommFailCallback commFail) TAVMIR_KX_TCP_NOTHROW
{
    PLC_driver.varDoneCallback = varDone;
    PLC_driver.commFailCallback = commFail;
}

void FlashLocalRegister(void* lb, void* lw, void* rwi) TAVMIR_KX_TCP_NOTHROW
{
    LB = lb;
    LW = lw;
    RWI = rwi;
}

int PLCAddressChangeIntef() TAVMIR_KX_TCP_NOTHROW
{
    return -1;
}

int QueryFinishFlag() TAVMIR_KX_TCP_NOTHROW
{
    return 1;
}
