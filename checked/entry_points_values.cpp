// The entry points by which a host reads and writes values.
#include "checked/calls.h"
#include "checked/locks.h"
#include "checked/plain.h"
#include "checked/quiet_address.h"
#include "checked/read_words.h"
#include "checked/records.h"
#include "checked/report.h"
#include "checked/text.h"
#include "core/shared_words.h"

using namespace tavmir::checked;

namespace
{

const int kSendToController = 2; // of `writeMode`

bool sendsWrites()
{
    return PLC_driver.comInfo && PLC_driver.comInfo->writeMode == kSendToController;
}

void expectWordRead(const QString& address, const ControlInformationM& info, const Call& call)
{
    if (sendsWrites() && !wasRead(info)) {
        report(kBitWriteUnread, call, "writes a bit of a word that was never read.",
               "address " + quoted(address) + text(", element address %d", info.elementAddress));
    }
}

void expectToDeliver(const Call& call)
{
    if (sendsWrites() && !call.isNested()) {
        expectListsOpen(call);
    }
    const bool stores = !sendsWrites() || tavmir::loadShared(PLC_driver.commFailed);
    if (stores && !call.isOutOfMessageHandler()) {
        expectCachesOpen(call);
    }
}

} // namespace

int GetRegisterData(const QString& address, int unused2, int unused3, int unused4, QByteArray* data,
                    int count) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kGetRegisterData, __builtin_return_address(0));
    if (!call.isOutOfMessageHandler()) {
        expectCachesOpen(call);
        // Only an address with a bracket can name a bit.
        ControlInformationM info;
        if (address.endsWith(']') && tavmir_quiet_address_info(address, info) == kAddressResolved) {
            noteBitRead(info);
        }
    }
    return tavmir_plain_GetRegisterData(address, unused2, unused3, unused4, data, count);
}

int SetRegisterData(const QString& address, int unused2, const QString& text, int station,
                    QByteArray* data, int count, int hostKey, int varKey) TAVMIR_KX_TCP_NOTHROW
{
    const Call call(kSetRegisterData, __builtin_return_address(0));
    ControlInformationM info;
    if (tavmir_quiet_address_info(address, info) != kAddressResolved) {
        return tavmir_plain_SetRegisterData(address, unused2, text, station, data, count, hostKey,
                                            varKey);
    }
    checkSetValues(address, info, data, count, call);
    if (info.bitAccess != 1) {
        expectToDeliver(call);
        const int queued = tavmir_plain_SetRegisterData(address, unused2, text, station, data,
                                                        count, hostKey, varKey);
        noteStored(info.dataType, info.elementAddress);
        return queued;
    }
    const BitWrite bitWrite(call);
    if (!call.isOutOfMessageHandler()) {
        expectWordRead(address, info, call);
    }
    expectToDeliver(call);
    return tavmir_plain_SetRegisterData(address, unused2, text, station, data, count, hostKey,
                                        varKey);
}
