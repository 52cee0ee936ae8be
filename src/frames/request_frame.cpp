#include "frames/request_frame.h"

#include "core/big_endian.h"
#include "core/cycle_state.h"

namespace tavmir
{

namespace
{

// The header's `length` counts from behind itself.
const int kBytesBeforeCounting = 6;

} // namespace

int batchFrameLength(int entryBytes)
{
    const int count = PLC_driver.batchCount;
    if (count < 1 || count > kBatchSlots) {
        return 0;
    }
    const int length = kHeaderBytes + count * entryBytes;
    return length <= static_cast<int>(sizeof PLC_driver.sendBuffer) ? length : 0;
}

void putHeader(int frameLength)
{
    unsigned char* frame = PLC_driver.sendBuffer;
    putBigEndian16(frame, PLC_driver.transactionCounter);
    putBigEndian16(frame + 2, 0);
    putBigEndian16(frame + 4, static_cast<quint16>(frameLength - kBytesBeforeCounting));
    frame[6] = static_cast<unsigned char>(PLC_driver.batchElements[0]->station & 0xFF);
    frame[8] = static_cast<unsigned char>(PLC_driver.batchCount & 0xFF);
}

void queueRequest(int frameLength, int replyLength, int replyDataOffset)
{
    PLC_driver.protocolList.append(Protocol());
    Protocol& request = PLC_driver.protocolList.last();
    request.frame = QByteArray(reinterpret_cast<const char*>(PLC_driver.sendBuffer), frameLength);
    request.frameLength = frameLength;
    request.replyLength = replyLength;
    request.replyDataOffset = replyDataOffset;
    request.var = *PLC_driver.batchElements[0];

    PLC_driver.comInfo->replyQuota = 1;
    PLC_driver.comInfo->replyCount = 0;
    ++PLC_driver.transactionCounter;
}

} // namespace tavmir
