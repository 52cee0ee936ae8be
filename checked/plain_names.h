// Forced into each of the driver's sources when they are compiled for the checked library: the
// entry points get other names, under which the checked ones call them. What the driver calls of
// itself stays among these, so that only a host's calls are looked at.
#ifndef TAVMIR_CHECKED_PLAIN_NAMES_H
#define TAVMIR_CHECKED_PLAIN_NAMES_H

#define SetComInfo tavmir_plain_SetComInfo
#define RegistCallBackFuncIntf tavmir_plain_RegistCallBackFuncIntf
#define FlashLocalRegister tavmir_plain_FlashLocalRegister
#define PassVarName_2 tavmir_plain_PassVarName_2
#define AddListReadVar tavmir_plain_AddListReadVar
#define AddListWriteVar tavmir_plain_AddListWriteVar
#define AddListOnceReadVar tavmir_plain_AddListOnceReadVar
#define ReCreatReadVarList tavmir_plain_ReCreatReadVarList
#define ComCommunication tavmir_plain_ComCommunication
#define DataCom tavmir_plain_DataCom
#define GetRegisterData tavmir_plain_GetRegisterData
#define SetRegisterData tavmir_plain_SetRegisterData
#define EnCommStation tavmir_plain_EnCommStation
#define EnableEthernet tavmir_plain_EnableEthernet
#define PLCAddressChangeIntef tavmir_plain_PLCAddressChangeIntef
#define QueryFinishFlag tavmir_plain_QueryFinishFlag
#define Ethernetcontains tavmir_plain_Ethernetcontains

#endif
