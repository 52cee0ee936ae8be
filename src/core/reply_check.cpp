#include "core/reply_check.h"

#include "core/return_codes.h"
#include "data/Func_DealData.h"

#include <QtCore/QMutexLocker>

namespace
{

const int kNoReplyExpected = 0;
const int kAnyLength = -1;

int sizeOf(const QByteArray* reply)
{
    return reply ? reply->size() : 0;
}

} // namespace

int DealDataOfLocalArea(QByteArray* reply, int received) TAVMIR_KX_TCP_NOTHROW
{
    const int expected = PLC_driver.protocolList.first().replyLength;
    if (received == 0) {
        return GetDriverReturnValue(expected != kNoReplyExpected ? kNoAnswer : kGoodReply);
    }
    if (expected == kNoReplyExpected) {
        return GetDriverReturnValue(kGoodReply);
    }
    if (received != expected && expected != kAnyLength) {
        return GetDriverReturnValue(kLengthMismatch);
    }

    const int check = CheckGetData(reply, sizeOf(reply));
    if (check == kStoreValues) {
        QMutexLocker lock(&PLC_driver.cacheMutex);
        SaveToLocalDataErea(reply);
        return GetDriverReturnValue(kGoodReply);
    }
    return GetDriverReturnValue(check == kNothingToStore ? kGoodReply : kReplyRefused);
}

int DealDataOfRemoteArea(QByteArray* reply, int received) TAVMIR_KX_TCP_NOTHROW
{
    const Protocol& request = PLC_driver.protocolList.first();
    const int expected = request.replyLength;
    if (received == 0 && expected != kNoReplyExpected) {
        return GetDriverReturnValue(kRemoteNoAnswer);
    }
    if (received != 0 && expected == kNoReplyExpected) {
        return GetDriverReturnValue(kGoodReply);
    }
    if (received != expected && expected != kAnyLength) {
        return GetDriverReturnValue(kRemoteLengthMismatch);
    }

    const int check = CheckGetData(reply, sizeOf(reply));
    if (check != kStoreValues && check != kNothingToStore) {
        return GetDriverReturnValue(kRemoteReplyRefused);
    }
    if (request.var.hostData12 != -1) {
        return GetDriverReturnValue(kRemoteAccepted);
    }
    // Unlike the local check without taking `cacheMutex`, which is the caller's to hold.
    SaveToLocalDataErea(reply);
    const bool firstReply = PLC_driver.comInfo->replyCount == 1;
    return GetDriverReturnValue(firstReply ? kRemoteAccepted : kGoodReply);
}
