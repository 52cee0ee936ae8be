// Result codes of a transfer, as `DataCom` reports them in `status`. Private.
#ifndef TAVMIR_CORE_RETURN_CODES_H
#define TAVMIR_CORE_RETURN_CODES_H

#include "tavmir_kx_tcp/host_interface.h"

// How a reply check ended; what `GetDriverReturnValue` takes.
enum OutcomeKind {
    kGoodReply = 0,
    kReplyRefused = 1,
    kNoAnswer = 2,
    kLengthMismatch = 3,
    kRemoteAccepted = 4,
    kRemoteReplyRefused = 5,
    kRemoteNoAnswer = 6,
    kRemoteLengthMismatch = 7
};

// The codes of a good reply.
const int kCodeGood = 1;
const int kCodeRemoteAccepted = 100;

inline bool isGoodCode(int code)
{
    return code == kCodeGood || code == kCodeRemoteAccepted;
}

// The code of an outcome: one of the good codes, for a failure a code in its band, 200 for any
// other number. Communication thread, no lock.
TAVMIR_KX_TCP_EXPORT int GetDriverReturnValue(int kind) TAVMIR_KX_TCP_NOTHROW;

// `base` + 1, plus the `hostKey` of the request in flight when that is 0..11.
// Communication thread, no lock.
TAVMIR_KX_TCP_EXPORT int SwitchErrorReturn(int base) TAVMIR_KX_TCP_NOTHROW;

#endif
