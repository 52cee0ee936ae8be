// The binary interface, fixed at compile time: size, alignment and every member's position of each
// record that crosses the boundary, for 32-bit and for 64-bit pointers, with Qt 4.8 and Qt 5 alike.
// Hosts are compiled apart from the driver: a number that changes here breaks every host there is.
#include "tavmir_kx_tcp/host_interface.h"

#include <climits>
#include <cstddef>

static_assert(CHAR_BIT == 8, "host and driver exchange bytes of 8 bits");
static_assert(sizeof(void*) == 4 || sizeof(void*) == 8, "pointers of 32 or 64 bits");
static_assert(sizeof(int) == 4, "int is one word of the records");

// What the records are made of: each of Qt's values is one pointer wide.
static_assert(sizeof(QString) == sizeof(void*), "QString");
static_assert(sizeof(QByteArray) == sizeof(void*), "QByteArray");
static_assert(sizeof(QList<int>) == sizeof(void*), "QList");
static_assert(sizeof(QMap<int, int>) == sizeof(void*), "QMap");
static_assert(sizeof(QHash<int, int>) == sizeof(void*), "QHash");
static_assert(sizeof(QMutex) == sizeof(void*), "QMutex");

#define TAVMIR_RECORD(Record, size32, size64, alignment32, alignment64)                            \
    static_assert(sizeof(Record) == (sizeof(void*) == 4 ? size32 : size64), "size of " #Record);   \
    static_assert(alignof(Record) == (sizeof(void*) == 4 ? alignment32 : alignment64),             \
                  "alignment of " #Record)

#define TAVMIR_AT(Record, member, offset32, offset64)                                              \
    static_assert(offsetof(Record, member) == (sizeof(void*) == 4 ? offset32 : offset64),          \
                  "position of " #Record "::" #member)

TAVMIR_RECORD(ComInfo, 76, 76, 4, 4);
TAVMIR_AT(ComInfo, hostWord0, 0, 0);
TAVMIR_AT(ComInfo, hostWord1, 4, 4);
TAVMIR_AT(ComInfo, hostWord2, 8, 8);
TAVMIR_AT(ComInfo, hostWord3, 12, 12);
TAVMIR_AT(ComInfo, hostWord4, 16, 16);
TAVMIR_AT(ComInfo, hostWord5, 20, 20);
TAVMIR_AT(ComInfo, defaultStation, 24, 24);
TAVMIR_AT(ComInfo, retryLimit, 28, 28);
TAVMIR_AT(ComInfo, retryCount, 32, 32);
TAVMIR_AT(ComInfo, stationMode, 36, 36);
TAVMIR_AT(ComInfo, hostWord10, 40, 40);
TAVMIR_AT(ComInfo, replyQuota, 44, 44);
TAVMIR_AT(ComInfo, replyCount, 48, 48);
TAVMIR_AT(ComInfo, hostWord13, 52, 52);
TAVMIR_AT(ComInfo, hostWord14, 56, 56);
TAVMIR_AT(ComInfo, hostWord15, 60, 60);
TAVMIR_AT(ComInfo, writeMode, 64, 64);
TAVMIR_AT(ComInfo, scanDone, 68, 68);
TAVMIR_AT(ComInfo, comStation, 72, 72);

TAVMIR_RECORD(RW_VAR, 60, 72, 4, 8);
TAVMIR_AT(RW_VAR, hostKey, 0, 0);
TAVMIR_AT(RW_VAR, varKey, 4, 4);
TAVMIR_AT(RW_VAR, hostData2, 8, 8);
TAVMIR_AT(RW_VAR, hostData3, 12, 12);
TAVMIR_AT(RW_VAR, hostData4, 16, 16);
TAVMIR_AT(RW_VAR, status, 20, 20);
TAVMIR_AT(RW_VAR, addressText, 24, 24);
TAVMIR_AT(RW_VAR, auxText, 28, 32);
TAVMIR_AT(RW_VAR, dataType, 32, 40);
TAVMIR_AT(RW_VAR, elementAddress, 36, 44);
TAVMIR_AT(RW_VAR, station, 40, 48);
TAVMIR_AT(RW_VAR, count, 44, 52);
TAVMIR_AT(RW_VAR, hostData12, 48, 56);
TAVMIR_AT(RW_VAR, hostData13, 52, 60);
TAVMIR_AT(RW_VAR, value, 56, 64);

TAVMIR_RECORD(EXTENDVAR, 16, 24, 4, 8);
TAVMIR_AT(EXTENDVAR, hostData0, 0, 0);
TAVMIR_AT(EXTENDVAR, hostData1, 4, 4);
TAVMIR_AT(EXTENDVAR, hostData2, 8, 8);
TAVMIR_AT(EXTENDVAR, value, 12, 16);

TAVMIR_RECORD(Protocol, 92, 112, 4, 8);
TAVMIR_AT(Protocol, frame, 0, 0);
TAVMIR_AT(Protocol, frameLength, 4, 8);
TAVMIR_AT(Protocol, replyLength, 8, 12);
TAVMIR_AT(Protocol, replyDataOffset, 12, 16);
TAVMIR_AT(Protocol, replyState, 16, 20);
TAVMIR_AT(Protocol, var, 20, 24);
TAVMIR_AT(Protocol, hostData0, 80, 96);
TAVMIR_AT(Protocol, hostData1, 84, 100);
TAVMIR_AT(Protocol, hostData2, 88, 104);

TAVMIR_RECORD(Label_Type_Info, 52, 80, 4, 8);
TAVMIR_AT(Label_Type_Info, name, 0, 0);
TAVMIR_AT(Label_Type_Info, typeFlags, 4, 8);
TAVMIR_AT(Label_Type_Info, offset, 8, 12);
TAVMIR_AT(Label_Type_Info, dimensionCount, 12, 16);
TAVMIR_AT(Label_Type_Info, memberCount, 16, 20);
TAVMIR_AT(Label_Type_Info, arrayBounds, 20, 24);
TAVMIR_AT(Label_Type_Info, members, 24, 32);
TAVMIR_AT(Label_Type_Info, elementType, 28, 40);
TAVMIR_AT(Label_Type_Info, extraText, 32, 48);
TAVMIR_AT(Label_Type_Info, extraValue1, 36, 56);
TAVMIR_AT(Label_Type_Info, extraValue2, 40, 60);
TAVMIR_AT(Label_Type_Info, elementSizes, 44, 64);
TAVMIR_AT(Label_Type_Info, extraTexts, 48, 72);

TAVMIR_RECORD(HOSTVAR, 20, 32, 4, 8);
TAVMIR_AT(HOSTVAR, hostByte0, 0, 0);
TAVMIR_AT(HOSTVAR, hostByte1, 1, 1);
TAVMIR_AT(HOSTVAR, station, 2, 2);
TAVMIR_AT(HOSTVAR, hostByte3, 3, 3);
TAVMIR_AT(HOSTVAR, hostWord4, 4, 4);
TAVMIR_AT(HOSTVAR, auxText, 8, 8);
TAVMIR_AT(HOSTVAR, addressText, 12, 16);
TAVMIR_AT(HOSTVAR, count, 16, 24);

TAVMIR_RECORD(Communication_Protocol, 2204, 3312, 4, 8);
TAVMIR_AT(Communication_Protocol, comInfo, 0, 0);
TAVMIR_AT(Communication_Protocol, readVarList, 4, 8);
TAVMIR_AT(Communication_Protocol, pendingReadList, 8, 16);
TAVMIR_AT(Communication_Protocol, writeVarList, 12, 24);
TAVMIR_AT(Communication_Protocol, onceReadList, 16, 32);
TAVMIR_AT(Communication_Protocol, auxVarList, 20, 40);
TAVMIR_AT(Communication_Protocol, protocolList, 24, 48);
TAVMIR_AT(Communication_Protocol, extendVarList, 28, 56);
TAVMIR_AT(Communication_Protocol, varDoneCallback, 32, 64);
TAVMIR_AT(Communication_Protocol, commFailCallback, 36, 72);
TAVMIR_AT(Communication_Protocol, listMutex, 40, 80);
TAVMIR_AT(Communication_Protocol, cacheMutex, 44, 88);
TAVMIR_AT(Communication_Protocol, stationMutex, 48, 96);
TAVMIR_AT(Communication_Protocol, stationMap, 52, 104);
TAVMIR_AT(Communication_Protocol, retVar, 56, 112);
TAVMIR_AT(Communication_Protocol, cycleState, 116, 184);
TAVMIR_AT(Communication_Protocol, writeTurns, 120, 188);
TAVMIR_AT(Communication_Protocol, onceReadTurns, 124, 192);
TAVMIR_AT(Communication_Protocol, scanCount, 128, 196);
TAVMIR_AT(Communication_Protocol, commFailed, 132, 200);
TAVMIR_AT(Communication_Protocol, batchCount, 136, 204);
TAVMIR_AT(Communication_Protocol, batchElements, 140, 208);
TAVMIR_AT(Communication_Protocol, transactionCounter, 1160, 2248);
TAVMIR_AT(Communication_Protocol, sendBuffer, 1162, 2250);
TAVMIR_AT(Communication_Protocol, labelTable, 2188, 3280);
TAVMIR_AT(Communication_Protocol, byteCache, 2192, 3288);
TAVMIR_AT(Communication_Protocol, wordCache, 2196, 3296);
TAVMIR_AT(Communication_Protocol, dwordCache, 2200, 3304);
