#include "core/return_codes.h"

#include "core/wrapping.h"

namespace
{

// The first number below each failure band.
const int kBandReplyRefused = 10;
const int kBandNoAnswer = 40;
const int kBandLengthMismatch = 70;
const int kBandRemote = 100; // added for the remote variant

const int kCodeUnknown = 200;

const int kLastRefiningKey = 11;

} // namespace

int SwitchErrorReturn(int base) TAVMIR_KX_TCP_NOTHROW
{
    const int code = tavmir::wrapAdd(base, 1);
    const QList<Protocol>& requests = PLC_driver.protocolList;
    if (requests.isEmpty()) {
        return code;
    }
    const int key = requests.first().var.hostKey;
    return key >= 0 && key <= kLastRefiningKey ? tavmir::wrapAdd(code, key) : code;
}

int GetDriverReturnValue(int kind) TAVMIR_KX_TCP_NOTHROW
{
    switch (kind) {
    case kGoodReply:
        return kCodeGood;
    case kReplyRefused:
        return SwitchErrorReturn(kBandReplyRefused);
    case kNoAnswer:
        return SwitchErrorReturn(kBandNoAnswer);
    case kLengthMismatch:
        return SwitchErrorReturn(kBandLengthMismatch);
    case kRemoteAccepted:
        return kCodeRemoteAccepted;
    case kRemoteReplyRefused:
        return SwitchErrorReturn(kBandRemote + kBandReplyRefused);
    case kRemoteNoAnswer:
        return SwitchErrorReturn(kBandRemote + kBandNoAnswer);
    case kRemoteLengthMismatch:
        return SwitchErrorReturn(kBandRemote + kBandLengthMismatch);
    default:
        return kCodeUnknown;
    }
}
