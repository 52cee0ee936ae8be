// The driver's own entry points, under the names that plain_names.h gives them. Private.
#ifndef TAVMIR_CHECKED_PLAIN_H
#define TAVMIR_CHECKED_PLAIN_H

#include "tavmir_kx_tcp/host_interface.h"

extern "C" {

void tavmir_plain_SetComInfo(ComInfo* comInfo) TAVMIR_KX_TCP_NOTHROW;
void tavmir_plain_RegistCallBackFuncIntf(VarDoneCallback varDone,
                                         CommFailCallback commFail) TAVMIR_KX_TCP_NOTHROW;
void tavmir_plain_FlashLocalRegister(void* lb, void* lw, void* rwi) TAVMIR_KX_TCP_NOTHROW;
void tavmir_plain_PassVarName_2(QList<Label_Type_Info>* labels) TAVMIR_KX_TCP_NOTHROW;
int tavmir_plain_AddListReadVar(const RW_VAR* var) TAVMIR_KX_TCP_NOTHROW;
int tavmir_plain_AddListWriteVar(const RW_VAR* var) TAVMIR_KX_TCP_NOTHROW;
int tavmir_plain_AddListOnceReadVar(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW;
int tavmir_plain_ReCreatReadVarList(QList<HOSTVAR>* vars) TAVMIR_KX_TCP_NOTHROW;
Protocol* tavmir_plain_ComCommunication() TAVMIR_KX_TCP_NOTHROW;
RW_VAR* tavmir_plain_DataCom(QByteArray* reply, int received) TAVMIR_KX_TCP_NOTHROW;
int tavmir_plain_GetRegisterData(const QString& address, int unused2, int unused3, int unused4,
                                 QByteArray* data, int count) TAVMIR_KX_TCP_NOTHROW;
int tavmir_plain_SetRegisterData(const QString& address, int unused2, const QString& text,
                                 int station, QByteArray* data, int count, int hostKey,
                                 int varKey) TAVMIR_KX_TCP_NOTHROW;
void tavmir_plain_EnCommStation(int station, int enable) TAVMIR_KX_TCP_NOTHROW;
void tavmir_plain_EnableEthernet(int station, int enable) TAVMIR_KX_TCP_NOTHROW;
int tavmir_plain_PLCAddressChangeIntef() TAVMIR_KX_TCP_NOTHROW;
int tavmir_plain_QueryFinishFlag() TAVMIR_KX_TCP_NOTHROW;

} // extern "C"

bool tavmir_plain_Ethernetcontains(int station) TAVMIR_KX_TCP_NOTHROW;

#endif
