#include "checked/in_flight.h"

#include "checked/report.h"
#include "checked/text.h"
#include "core/big_endian.h"
#include "core/cycle_state.h"
#include "core/data_types.h"

#include <QtCore/QMutexLocker>

#include <cstring>

namespace tavmir
{
namespace checked
{

namespace
{

const unsigned char kRefusalBit = 0x80; // of the function

const QList<RW_VAR>& listOf(int cycleState)
{
    switch (cycleState) {
    case kWriteInFlight:
        return PLC_driver.writeVarList;
    case kOnceReadInFlight:
        return PLC_driver.onceReadList;
    default:
        return PLC_driver.readVarList;
    }
}

const char* nameOfList(int cycleState)
{
    switch (cycleState) {
    case kWriteInFlight:
        return "writeVarList";
    case kOnceReadInFlight:
        return "onceReadList";
    default:
        return "readVarList";
    }
}

const unsigned char* bytesOf(const QByteArray& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

bool isState(int state)
{
    return state == kReadInFlight || state == kWriteInFlight || state == kOnceReadInFlight ||
           state == kNothingYet;
}

// The header in words.
std::string decoded(const unsigned char* header, int bytes)
{
    return text("transaction %u, protocol %u, length %u, station %u, function 0x%02X, %u elements",
                static_cast<unsigned>(header[0] << 8 | header[1]),
                static_cast<unsigned>(header[2] << 8 | header[3]),
                static_cast<unsigned>(header[4] << 8 | header[5]), static_cast<unsigned>(header[6]),
                static_cast<unsigned>(header[7]),
                bytes > 8 ? static_cast<unsigned>(header[8]) : 0u);
}

} // namespace

InFlight inFlight;

void InFlight::remember(const Protocol* request)
{
    request_ = request;
    if (!request) {
        return;
    }
    if (request->frame.size() < kHeaderBytes || PLC_driver.batchCount < 1 ||
        PLC_driver.batchCount > kBatchSlots) {
        request_ = nullptr;
        return;
    }
    std::memcpy(header_, request->frame.constData(), kHeaderBytes);
    frameLength_ = request->frameLength;
    replyLength_ = request->replyLength;
    batch_ = PLC_driver.batchCount;
    dataType_ = request->var.dataType;
    cycleState_ = PLC_driver.cycleState;
    for (int i = 0; i < batch_; ++i) {
        entries_[i] = PLC_driver.batchElements[i];
        addresses_[i] = entries_[i]->elementAddress;
    }
}

bool InFlight::isThisRequest(const Protocol& request) const
{
    return &request == request_ && request.frameLength == frameLength_ &&
           request.frame.size() == frameLength_ && request.replyLength == replyLength_ &&
           std::memcmp(request.frame.constData(), header_, kHeaderBytes) == 0;
}

void InFlight::compare(const Call& call)
{
    const QList<Protocol>& requests = PLC_driver.protocolList;
    if (!request_ || requests.isEmpty()) {
        request_ = nullptr;
        if (!requests.isEmpty()) {
            report(kProtocolListInvalid, call, "found a request that the driver did not make.");
        } else if (!isState(PLC_driver.cycleState)) {
            report(kCycleStateInvalid, call, text("found cycleState %d.", PLC_driver.cycleState));
        }
        return;
    }
    if (requests.size() != 1) {
        report(kProtocolListInvalid, call,
               text("found %d requests where the driver had made one.", requests.size()));
        request_ = nullptr;
        return;
    }
    if (!isThisRequest(requests.first())) {
        report(kProtocolListInvalid, call, "found a request that is not as the driver made it.");
        request_ = nullptr;
        return;
    }
    if (PLC_driver.cycleState != cycleState_) {
        report(kCycleStateInvalid, call,
               text("found cycleState %d; the request in flight has %d.", PLC_driver.cycleState,
                    cycleState_));
    }
    if (PLC_driver.batchCount != batch_) {
        report(kBatchCountInvalid, call,
               text("found batchCount %d; the request in flight has %d elements.",
                    PLC_driver.batchCount, batch_));
    }
    if (cycleState_ == kReadInFlight) {
        compareEntries(PLC_driver.readVarList, call);
        return;
    }
    // A host that holds the lock for ever is told of before: here it is only passed over.
    if (PLC_driver.listMutex.tryLock()) {
        compareEntries(listOf(cycleState_), call);
        PLC_driver.listMutex.unlock();
    }
}

void InFlight::compareEntries(const QList<RW_VAR>& list, const Call& call) const
{
    int same = 0;
    while (same < batch_ && same < list.size() && &list.at(same) == entries_[same] &&
           entries_[same]->elementAddress == addresses_[same]) {
        ++same;
    }
    if (same < batch_) {
        report(
            kInFlightMoved, call,
            text("found entry %d of %s moved, replaced or gone; the request in flight covers %d.",
                 same, nameOfList(cycleState_), batch_),
            text("element address %d", addresses_[same]));
        return;
    }
    if (!list.isDetached()) {
        report(kListCopyKept, call, text("found a copy of %s.", nameOfList(cycleState_)));
    }
}

void InFlight::checkReply(const QByteArray* reply, int received, const Call& call) const
{
    if (received == 0) {
        return;
    }
    if (!reply) {
        report(kReplyNull, call, text("was given no reply and %d as its size.", received));
        return;
    }
    if (received != reply->size()) {
        report(kReceivedSize, call,
               text("was given %d bytes and %d as their number.", reply->size(), received),
               "reply " + hexBytes(*reply));
    }
    if (!isKnown() || received < 0 || received > reply->size()) {
        return;
    }
    if (received < kComparedBytes) {
        report(kReplyShort, call, text("was given a reply of %d bytes.", received),
               "reply " + hexBytes(reply->left(received)));
        return;
    }
    const unsigned char* const header = bytesOf(*reply);
    Duty duty = kDuties;
    if (header[0] != header_[0] || header[1] != header_[1]) {
        duty = kReplyTransaction;
    } else if (header[2] != 0 || header[3] != 0) {
        duty = kReplyProtocol;
    } else if (header[6] != header_[6]) {
        duty = kReplyStation;
    } else if (header[7] == (header_[7] | kRefusalBit)) {
        duty = kReplyRefusal;
    } else if (header[7] != header_[7]) {
        duty = kReplyFunction;
    } else if ((header[4] << 8 | header[5]) != received - 6) {
        duty = kReplyLength;
    } else if (received >= kHeaderBytes && header[8] != header_[8]) {
        duty = kReplyElementCount;
    }
    if (duty != kDuties) {
        // A host may do so in each turn.
        if (wasTold(duty, call)) {
            return;
        }
        report(duty, call, "was given a reply that is not the request's.",
               "request: " + decoded(header_, kHeaderBytes) +
                   "\n             reply:   " + decoded(header, received) +
                   "\n             bytes:   " + hexBytes(reply->left(received)));
        return;
    }
    if (received == replyLength_ && replyLength_ > kHeaderBytes) {
        checkAddresses(reply->left(received), call);
    }
}

void InFlight::checkAddresses(const QByteArray& reply, const Call& call) const
{
    const int entryBytes = (replyLength_ - kHeaderBytes) / batch_;
    const unsigned char* entry = bytesOf(reply) + kHeaderBytes;
    for (int i = 0; i < batch_; ++i, entry += entryBytes) {
        const qint32 address = static_cast<qint32>(getBigEndian<quint32>(entry));
        if (address != addresses_[i]) {
            report(kReplyAddresses, call,
                   text("was given element address %d at place %d, where %d was asked for.",
                        address, i, addresses_[i]),
                   "bytes " + hexBytes(reply));
            return;
        }
    }
}

} // namespace checked
} // namespace tavmir
