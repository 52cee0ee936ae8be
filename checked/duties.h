// The one table of a host's duties: what the checked driver looks at, what it says, and what the
// driver alone would do. Private.
#ifndef TAVMIR_CHECKED_DUTIES_H
#define TAVMIR_CHECKED_DUTIES_H

#include <string>

namespace tavmir
{
namespace checked
{

// In the order of the table.
enum Duty {
    // Setting up
    kComInfoMissing,
    kComInfoNull,
    kComInfoUnreadable,
    kSetUpOrder,
    kSetUpAfterCycle,
    kSetUpMemberChanged,
    kReadVarAfterCycle,
    kUnloadDuringCall,
    // Threads and locks
    kCycleThread,
    kCycleOverlap,
    kPassLabelsBesideParsing,
    kBitWriteBesideCycle,
    kBitWritesBesideEachOther,
    kLockHeldTooLong,
    kListsLeftLocked,
    kListWithoutLock,
    // Callbacks and message handlers
    kCallInCallback,
    kCallInMessageHandler,
    kCallbackBlocks,
    kCallbackChangesTurn,
    kCallbackUnlocksLists,
    kCallbackThrows,
    // Records
    kNullArgument,
    kReadVarType,
    kReadVarHostData2,
    kWriteVarType,
    kWriteVarHostData2,
    kWriteVarCount,
    kWriteVarValueSize,
    kOnceReadHostData2,
    kOnceReadOverflow,
    kSetDataSize,
    kCountBelowOne,
    kCountPastVariable,
    kBitWriteUnread,
    kRebuildType,
    // Labels
    kLabelName,
    kLabelMemberCount,
    kLabelBounds,
    kLabelTypeMissing,
    kLabelSizeMissing,
    kLabelTypeCode,
    // Replies
    kReplyNull,
    kReceivedSize,
    kReplyShort,
    kReplyTransaction,
    kReplyProtocol,
    kReplyStation,
    kReplyRefusal,
    kReplyFunction,
    kReplyLength,
    kReplyElementCount,
    kReplyAddresses,
    // The turn in flight
    kSleepWithWork,
    kInFlightMoved,
    kListCopyKept,
    kBatchCountInvalid,
    kCycleStateInvalid,
    kProtocolListInvalid,
    kDuties
};

struct DutyText {
    Duty duty;
    const char* id;        // as reports and TAVMIR_CHECK name it; never changes
    const char* sentence;  // what the host owes
    const char* otherwise; // what the driver does when it is broken
};

const DutyText& textOf(Duty duty);

// `kDuties` when there is no such identifier.
Duty dutyOf(const std::string& id);

} // namespace checked
} // namespace tavmir

#endif
