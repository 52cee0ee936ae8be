#include "checked/duties.h"

namespace tavmir
{
namespace checked
{

namespace
{

const DutyText kTable[kDuties] = {
    // Setting up
    {kComInfoMissing, "com-info-missing",
     "SetComInfo comes before every call that needs the connection record.",
     "The driver reads through a null pointer: the process ends."},
    {kComInfoNull, "com-info-null", "SetComInfo is given a record.",
     "The driver writes through a null pointer: the process ends."},
    {kComInfoUnreadable, "com-info-unreadable",
     "The connection record stays where it is until the library is unloaded.",
     "The next access to it ends the process, or reads what lies there now."},
    {kSetUpOrder, "set-up-order",
     "SetComInfo comes before every other call but those of the stations and the two whose answer "
     "is fixed.",
     "The call works as long as it needs no record; the next version of it may need one."},
    {kSetUpAfterCycle, "set-up-after-cycle",
     "SetComInfo, RegistCallBackFuncIntf and FlashLocalRegister come before the cycle starts.",
     "The cycle may use half of the old set-up and half of the new one."},
    {kSetUpMemberChanged, "set-up-member-changed",
     "comInfo, varDoneCallback and commFailCallback change before the cycle starts; within a "
     "callback another callback may be set.",
     "The turn in flight ends with another record or callback than it began with."},
    {kReadVarAfterCycle, "read-var-after-cycle",
     "AddListReadVar comes before the cycle starts; later the polled list is rebuilt.",
     "The polled list is changed without a lock while the cycle reads it: entries are lost, or "
     "the process ends."},
    {kUnloadDuringCall, "unload-during-call",
     "The library is unloaded, and the process ended, while no call of it runs.",
     "The call goes on in code and data that are gone: the process crashes."},
    // Threads and locks
    {kCycleThread, "cycle-thread",
     "ComCommunication and DataCom are called by one thread, the communication thread.",
     "What the cycle keeps without a lock is used by two threads: requests are lost or sent "
     "twice, or the process ends."},
    {kCycleOverlap, "cycle-overlap", "ComCommunication and DataCom never run at the same time.",
     "Two calls use the same batch, request and polled list without a lock: a reply is stored "
     "under wrong addresses, or the process ends."},
    {kPassLabelsBesideParsing, "pass-labels-beside-parsing",
     "PassVarName_2 runs while no other thread is in it, AddListOnceReadVar, ReCreatReadVarList, "
     "GetRegisterData or SetRegisterData.",
     "Addresses are looked up in a table that is being moved: they resolve wrongly, or the "
     "process ends."},
    {kBitWriteBesideCycle, "bit-write-beside-cycle",
     "A bit write is kept apart from ComCommunication and DataCom.",
     "It looks its word up in a cache that a reply is changing: it sends old bits, or the "
     "process ends."},
    {kBitWritesBesideEachOther, "bit-writes-beside-each-other",
     "Two bit writes are kept apart from each other.",
     "One of them undoes the other's bit, or the process ends in the cache's look-up."},
    {kLockHeldTooLong, "lock-held-too-long",
     "A host holds a mutex of the driver for a short time, and calls nothing that takes it "
     "meanwhile.",
     "The call waits until the mutex is opened; when this thread holds it, for ever."},
    {kListsLeftLocked, "lists-left-locked",
     "After a rebuild with a data type that cannot be polled, nothing that takes listMutex is "
     "called.",
     "The call waits for listMutex for ever."},
    {kListWithoutLock, "list-without-lock",
     "writeVarList, onceReadList and pendingReadList are changed under listMutex.",
     "The list is changed while the driver changes it: entries are lost, or the process ends."},
    // Callbacks and message handlers
    {kCallInCallback, "call-in-callback",
     "A callback does not call AddListWriteVar, AddListOnceReadVar, ReCreatReadVarList, "
     "ComCommunication or DataCom, nor SetRegisterData while writeMode is 2.",
     "The call waits for listMutex, which DataCom holds around the callback, for ever; or it "
     "upsets the turn that is about to end."},
    {kCallInMessageHandler, "call-in-message-handler",
     "A message handler that is run by one of the driver's diagnostic lines does not call the "
     "driver.",
     "Some lines are written with listMutex or cacheMutex held: a call that takes the same one "
     "waits for ever."},
    {kCallbackBlocks, "callback-blocks", "A callback does not block.",
     "Every call that queues something waits as long, since listMutex is held, and so does the "
     "cycle."},
    {kCallbackChangesTurn, "callback-changes-turn",
     "While a callback runs, readVarList, protocolList, batchElements, batchCount, cycleState "
     "and retVar stay as they are.",
     "The turn ends with what it did not begin with: entries are skipped, reported twice, or "
     "read where there are none."},
    {kCallbackUnlocksLists, "callback-unlocks-lists", "A callback leaves listMutex locked.",
     "The rest of the turn's end runs unguarded, and the driver opens a mutex that another "
     "thread may hold."},
    {kCallbackThrows, "callback-throws", "No exception leaves a callback.",
     "The process ends at once."},
    // Records
    {kNullArgument, "null-argument",
     "AddListReadVar, AddListWriteVar and AddListOnceReadVar are given a record.",
     "The driver reads through a null pointer: the process ends."},
    {kReadVarType, "read-var-type", "A polled variable's dataType is 1, 4, 6, 7 or 10.",
     "Its request goes out with the function code of the request before it."},
    {kReadVarHostData2, "read-var-host-data2", "A polled variable's hostData2 is 0.",
     "The replies to it carry no values for the driver: nothing is stored, without a word."},
    {kWriteVarType, "write-var-type", "A write's dataType is 1, 4, 6, 7 or 10.",
     "The write is dropped with a diagnostic line, and its neighbours of that type with it; no "
     "callback reports them."},
    {kWriteVarHostData2, "write-var-host-data2", "A write's hostData2 is not 0.",
     "The acknowledgement is decoded as values."},
    {kWriteVarCount, "write-var-count", "A write's count is 1.",
     "Each further one stores a value under a neighbouring key of the cache, or none at all for "
     "a count below 1."},
    {kWriteVarValueSize, "write-var-value-size",
     "A write's value holds 1 byte for type 1, 2 for 4 and 10, 4 for 6 and 7.",
     "Missing bytes are sent as zero; those that are too many are not sent."},
    {kOnceReadHostData2, "once-read-host-data2", "A one-shot read's hostData2 is 0.",
     "The reply's values are not stored, and the read is reported as completed all the same."},
    {kOnceReadOverflow, "once-read-overflow",
     "No more than 1024 elements of one-shot reads wait at the same time.",
     "What does not fit is dropped without a word."},
    {kSetDataSize, "set-data-size",
     "SetRegisterData is given as many bytes as the count's elements take; for a bit address, one "
     "byte for each bit, up to the element's last.",
     "Elements whose bytes are missing are written as zero; those that are too many are not sent. "
     "A "
     "bit write without bytes sends the word as the cache holds it."},
    {kCountBelowOne, "count-below-one",
     "A count of elements is at least 1 where the driver goes by it.",
     "Nothing is read, polled or written, and no result says so."},
    {kCountPastVariable, "count-past-variable",
     "SetRegisterData's count ends with the variable: 1 element outside of arrays, the words of a "
     "text.",
     "Writes are not cut: what lies behind the variable in the controller is overwritten."},
    {kBitWriteUnread, "bit-write-unread", "A word is read before a bit of it is written.",
     "The word's other bits are sent as zero."},
    {kRebuildType, "rebuild-type",
     "Each address of a rebuild that resolves at all has a data type that can be polled.",
     "The rebuild stops with listMutex locked: the next call into the lists waits for ever."},
    // Labels
    {kLabelName, "label-name",
     "The name of a label, variable or member is not empty and holds no dot and no pair of "
     "brackets.",
     "It is stored, and no address can name it."},
    {kLabelMemberCount, "label-member-count", "memberCount is not above the number of members.",
     "Every address below that record is refused, or resolves to data type 0."},
    {kLabelBounds, "label-bounds",
     "An array has at least one dimension, a radix that numbers can have, and for each dimension "
     "a low bound and a high bound above it.",
     "Its addresses are refused, or elements lie at the wrong place."},
    {kLabelTypeMissing, "label-type-missing",
     "A label and a structure variable have their structure type in elementType.",
     "Every address below is refused, or resolves to data type 0."},
    {kLabelSizeMissing, "label-size-missing",
     "A text has its words, an array of structures its stride, in elementSizes.",
     "A text has no elements; of the array only index 0 is found."},
    {kLabelTypeCode, "label-type-code",
     "The low byte of a variable's typeFlags is a type: 1 to 10, or 12.",
     "Its address resolves to data type 0, which ReCreatReadVarList takes as a type that cannot "
     "be polled."},
    // Replies
    {kReplyNull, "reply-null", "DataCom is given the reply unless received is 0.",
     "The reply counts as good when the number is the expected one, and nothing is stored."},
    {kReceivedSize, "received-size",
     "received is the number of bytes in the reply, or 0 when nothing came.",
     "The length is judged by one number and the values are taken by the other."},
    {kReplyShort, "reply-short", "A reply has at least the 8 bytes by which it is compared.",
     "It fails by its length; which request it answers was not compared."},
    {kReplyTransaction, "reply-transaction",
     "Bytes 0 and 1 of a reply are the transaction id of the request in flight.",
     "The reply of another request is stored under this one's addresses."},
    {kReplyProtocol, "reply-protocol", "Bytes 2 and 3 of a reply are 0.",
     "Something that is no reply is stored as values."},
    {kReplyStation, "reply-station", "Byte 6 of a reply is the request's station.",
     "The values of another station are stored under this one's addresses."},
    {kReplyRefusal, "reply-refusal",
     "A refusal (the request's function with its top bit set) is handed over as 0 bytes.",
     "It fails by its length, or, when that fits, is stored as values."},
    {kReplyFunction, "reply-function", "Byte 7 of a reply is the request's function.",
     "Values of another kind are stored under this request's addresses."},
    {kReplyLength, "reply-length", "Bytes 4 and 5 of a reply count its bytes from byte 6 on.",
     "A piece of a reply, or two replies, are judged by their length alone."},
    {kReplyElementCount, "reply-element-count",
     "Byte 8 of a reply is the number of elements that the request asked for.",
     "A reply to fewer or more elements is judged by its length alone."},
    {kReplyAddresses, "reply-addresses",
     "The entries of a reply stand under the addresses that were asked for, in their order.",
     "The values are stored by position, each under an address that is not its own."},
    // The turn in flight
    {kSleepWithWork, "sleep-with-work", "A host that gets null asks once more before it sleeps.",
     "Writes and one-shot reads that are queued wait as long as the host sleeps."},
    {kInFlightMoved, "in-flight-moved",
     "The entries that the request in flight covers are not taken out, replaced or moved until "
     "its turn has ended.",
     "The reply is stored under addresses read from memory that is something else by now."},
    {kListCopyKept, "list-copy-kept", "No copy of one of the driver's lists is kept.",
     "The next change moves all entries, and the request in flight points at the old ones."},
    {kBatchCountInvalid, "batch-count-invalid",
     "While a request is in flight, batchCount is the number of its elements.",
     "The turn's end takes off or turns over the wrong number of entries."},
    {kCycleStateInvalid, "cycle-state-invalid",
     "cycleState is that of the request in flight: 0, 1 or 2.",
     "The turn's end takes entries off another list, or off none."},
    {kProtocolListInvalid, "protocol-list-invalid",
     "protocolList is empty or holds the one request that the driver made, as it made it.",
     "The host's record is sent and its reply stored under the addresses of the last batch."},
};

} // namespace

const DutyText& textOf(Duty duty)
{
    return kTable[duty];
}

Duty dutyOf(const std::string& id)
{
    int i = 0;
    while (i < kDuties && id != kTable[i].id) {
        ++i;
    }
    return static_cast<Duty>(i);
}

} // namespace checked
} // namespace tavmir
