// Positions of every member of every record that crosses the driver's boundary, as this compiler
// lays them out.
#include "record_table.h"

#include "tavmir_kx_tcp/host_interface.h"

#include <cstddef>

namespace tavmir
{
namespace probe
{

namespace
{

#define TAVMIR_MEMBER(Record, member)                                                              \
    {                                                                                              \
#member, offsetof(Record, member), sizeof(static_cast <Record*>(nullptr)->member)          \
    }

const Member kComInfoMembers[] = {
    TAVMIR_MEMBER(ComInfo, hostWord0),      TAVMIR_MEMBER(ComInfo, hostWord1),
    TAVMIR_MEMBER(ComInfo, hostWord2),      TAVMIR_MEMBER(ComInfo, hostWord3),
    TAVMIR_MEMBER(ComInfo, hostWord4),      TAVMIR_MEMBER(ComInfo, hostWord5),
    TAVMIR_MEMBER(ComInfo, defaultStation), TAVMIR_MEMBER(ComInfo, retryLimit),
    TAVMIR_MEMBER(ComInfo, retryCount),     TAVMIR_MEMBER(ComInfo, stationMode),
    TAVMIR_MEMBER(ComInfo, hostWord10),     TAVMIR_MEMBER(ComInfo, replyQuota),
    TAVMIR_MEMBER(ComInfo, replyCount),     TAVMIR_MEMBER(ComInfo, hostWord13),
    TAVMIR_MEMBER(ComInfo, hostWord14),     TAVMIR_MEMBER(ComInfo, hostWord15),
    TAVMIR_MEMBER(ComInfo, writeMode),      TAVMIR_MEMBER(ComInfo, scanDone),
    TAVMIR_MEMBER(ComInfo, comStation),
};

const Member kRWVARMembers[] = {
    TAVMIR_MEMBER(RW_VAR, hostKey),     TAVMIR_MEMBER(RW_VAR, varKey),
    TAVMIR_MEMBER(RW_VAR, hostData2),   TAVMIR_MEMBER(RW_VAR, hostData3),
    TAVMIR_MEMBER(RW_VAR, hostData4),   TAVMIR_MEMBER(RW_VAR, status),
    TAVMIR_MEMBER(RW_VAR, addressText), TAVMIR_MEMBER(RW_VAR, auxText),
    TAVMIR_MEMBER(RW_VAR, dataType),    TAVMIR_MEMBER(RW_VAR, elementAddress),
    TAVMIR_MEMBER(RW_VAR, station),     TAVMIR_MEMBER(RW_VAR, count),
    TAVMIR_MEMBER(RW_VAR, hostData12),  TAVMIR_MEMBER(RW_VAR, hostData13),
    TAVMIR_MEMBER(RW_VAR, value),
};

const Member kEXTENDVARMembers[] = {
    TAVMIR_MEMBER(EXTENDVAR, hostData0),
    TAVMIR_MEMBER(EXTENDVAR, hostData1),
    TAVMIR_MEMBER(EXTENDVAR, hostData2),
    TAVMIR_MEMBER(EXTENDVAR, value),
};

const Member kProtocolMembers[] = {
    TAVMIR_MEMBER(Protocol, frame),       TAVMIR_MEMBER(Protocol, frameLength),
    TAVMIR_MEMBER(Protocol, replyLength), TAVMIR_MEMBER(Protocol, replyDataOffset),
    TAVMIR_MEMBER(Protocol, replyState),  TAVMIR_MEMBER(Protocol, var),
    TAVMIR_MEMBER(Protocol, hostData0),   TAVMIR_MEMBER(Protocol, hostData1),
    TAVMIR_MEMBER(Protocol, hostData2),
};

const Member kLabelTypeInfoMembers[] = {
    TAVMIR_MEMBER(Label_Type_Info, name),        TAVMIR_MEMBER(Label_Type_Info, typeFlags),
    TAVMIR_MEMBER(Label_Type_Info, offset),      TAVMIR_MEMBER(Label_Type_Info, dimensionCount),
    TAVMIR_MEMBER(Label_Type_Info, memberCount), TAVMIR_MEMBER(Label_Type_Info, arrayBounds),
    TAVMIR_MEMBER(Label_Type_Info, members),     TAVMIR_MEMBER(Label_Type_Info, elementType),
    TAVMIR_MEMBER(Label_Type_Info, extraText),   TAVMIR_MEMBER(Label_Type_Info, extraValue1),
    TAVMIR_MEMBER(Label_Type_Info, extraValue2), TAVMIR_MEMBER(Label_Type_Info, elementSizes),
    TAVMIR_MEMBER(Label_Type_Info, extraTexts),
};

const Member kHOSTVARMembers[] = {
    TAVMIR_MEMBER(HOSTVAR, hostByte0),   TAVMIR_MEMBER(HOSTVAR, hostByte1),
    TAVMIR_MEMBER(HOSTVAR, station),     TAVMIR_MEMBER(HOSTVAR, hostByte3),
    TAVMIR_MEMBER(HOSTVAR, hostWord4),   TAVMIR_MEMBER(HOSTVAR, auxText),
    TAVMIR_MEMBER(HOSTVAR, addressText), TAVMIR_MEMBER(HOSTVAR, count),
};

const Member kCommunicationProtocolMembers[] = {
    TAVMIR_MEMBER(Communication_Protocol, comInfo),
    TAVMIR_MEMBER(Communication_Protocol, readVarList),
    TAVMIR_MEMBER(Communication_Protocol, pendingReadList),
    TAVMIR_MEMBER(Communication_Protocol, writeVarList),
    TAVMIR_MEMBER(Communication_Protocol, onceReadList),
    TAVMIR_MEMBER(Communication_Protocol, auxVarList),
    TAVMIR_MEMBER(Communication_Protocol, protocolList),
    TAVMIR_MEMBER(Communication_Protocol, extendVarList),
    TAVMIR_MEMBER(Communication_Protocol, varDoneCallback),
    TAVMIR_MEMBER(Communication_Protocol, commFailCallback),
    TAVMIR_MEMBER(Communication_Protocol, listMutex),
    TAVMIR_MEMBER(Communication_Protocol, cacheMutex),
    TAVMIR_MEMBER(Communication_Protocol, stationMutex),
    TAVMIR_MEMBER(Communication_Protocol, stationMap),
    TAVMIR_MEMBER(Communication_Protocol, retVar),
    TAVMIR_MEMBER(Communication_Protocol, cycleState),
    TAVMIR_MEMBER(Communication_Protocol, writeTurns),
    TAVMIR_MEMBER(Communication_Protocol, onceReadTurns),
    TAVMIR_MEMBER(Communication_Protocol, scanCount),
    TAVMIR_MEMBER(Communication_Protocol, commFailed),
    TAVMIR_MEMBER(Communication_Protocol, batchCount),
    TAVMIR_MEMBER(Communication_Protocol, batchElements),
    TAVMIR_MEMBER(Communication_Protocol, transactionCounter),
    TAVMIR_MEMBER(Communication_Protocol, sendBuffer),
    TAVMIR_MEMBER(Communication_Protocol, labelTable),
    TAVMIR_MEMBER(Communication_Protocol, byteCache),
    TAVMIR_MEMBER(Communication_Protocol, wordCache),
    TAVMIR_MEMBER(Communication_Protocol, dwordCache),
};

#undef TAVMIR_MEMBER

template <typename Record, std::size_t count>
RecordLayout layoutOf(const char* name, const Member (&members)[count])
{
    return RecordLayout{name, sizeof(Record), alignof(Record),
                        std::vector<Member>(members, members + count)};
}

} // namespace

std::vector<RecordLayout> recordTable()
{
    return {
        layoutOf<ComInfo>("ComInfo", kComInfoMembers),
        layoutOf<RW_VAR>("RW_VAR", kRWVARMembers),
        layoutOf<EXTENDVAR>("EXTENDVAR", kEXTENDVARMembers),
        layoutOf<Protocol>("Protocol", kProtocolMembers),
        layoutOf<Label_Type_Info>("Label_Type_Info", kLabelTypeInfoMembers),
        layoutOf<HOSTVAR>("HOSTVAR", kHOSTVARMembers),
        layoutOf<Communication_Protocol>("Communication_Protocol", kCommunicationProtocolMembers),
    };
}

} // namespace probe
} // namespace tavmir
