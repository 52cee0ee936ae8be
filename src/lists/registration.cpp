// Registering single variables: polled, written, read once.
#include "address/Func_Check.h"
#include "core/data_types.h"
#include "core/effective_station.h"
#include "core/wrapping.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <QtCore/QMutexLocker>

#include <algorithm>
#include <vector>

namespace
{

const int kOnceReadLimit = 1024;

// All but the address.
bool sameVariable(const RW_VAR& a, const RW_VAR& b)
{
    return a.hostKey == b.hostKey && a.varKey == b.varKey && a.station == b.station &&
           a.count == b.count && a.hostData4 == b.hostData4 && a.dataType == b.dataType &&
           a.hostData13 == b.hostData13;
}

// Addresses at which the variable is queued, of those that lie at most `span` behind its own.
std::vector<qint32> queuedAddresses(const RW_VAR& var, quint64 span)
{
    std::vector<qint32> addresses;
    const QList<RW_VAR>& list = PLC_driver.onceReadList;
    for (QList<RW_VAR>::const_iterator entry = list.begin(); entry != list.end(); ++entry) {
        const qint32 behind = tavmir::wrapSubtract(entry->elementAddress, var.elementAddress);
        if (static_cast<quint32>(behind) <= span && sameVariable(*entry, var)) {
            addresses.push_back(entry->elementAddress);
        }
    }
    return addresses;
}

qint32 withinArray(qint32 count, const ControlInformationM& info)
{
    return info.isArrayElement ? qMin(count, info.elementLimit) : 1;
}

// How many elements a one-shot read of `count` makes. Texts are limited by their width, whether
// or not they are array elements.
qint32 onceReadElements(qint32 count, const ControlInformationM& info)
{
    switch (info.dataType) {
    case tavmir::kTextType:
        return static_cast<qint32>(
            qMin(static_cast<quint32>(count), static_cast<quint32>(info.elementWidth)));
    case tavmir::kDoubleWordType:
    case tavmir::kDoubleWordType7:
        return withinArray(tavmir::wrapAdd(count, 1) / 2, info);
    default:
        return withinArray(count, info);
    }
}

// Queues `var` and its `elements` - 1 successors, `step` apart; what is queued already, or does
// not fit, is left out. The caller holds `listMutex`.
void queueElements(RW_VAR& var, qint32 elements, qint32 step)
{
    if (elements < 1) {
        return;
    }
    QList<RW_VAR>& list = PLC_driver.onceReadList;
    // The list is searched once a call: once an element makes a call for 1,024 elements cost
    // 14 times what appending them costs, instead of as much.
    const std::vector<qint32> queued =
        queuedAddresses(var, static_cast<quint64>(elements - 1) * static_cast<quint32>(step));
    for (qint32 i = 0; i < elements; ++i) {
        if (list.size() >= kOnceReadLimit) {
            // A full list takes no more: only the address has to arrive where it would.
            const qint32 rest = tavmir::wrapSubtract(elements, i);
            var.elementAddress =
                tavmir::wrapAdd(var.elementAddress, tavmir::wrapMultiply(rest, step));
            return;
        }
        if (std::find(queued.begin(), queued.end(), var.elementAddress) == queued.end()) {
            list.append(var);
        }
        var.elementAddress = tavmir::wrapAdd(var.elementAddress, step);
    }
}

} // namespace

int AddListReadVar(const RW_VAR* var) TAVMIR_KX_TCP_NOTHROW
{
    PLC_driver.readVarList.append(*var);
    return PLC_driver.readVarList.size();
}

int AddListWriteVar(const RW_VAR* var) TAVMIR_KX_TCP_NOTHROW
{
    {
        QMutexLocker lock(&PLC_driver.listMutex);
        PLC_driver.writeVarList.append(*var);
    }
    // The size as it is after the append was let go: the cycle may have taken the entry.
    QMutexLocker lock(&PLC_driver.listMutex);
    return PLC_driver.writeVarList.size();
}

int AddListOnceReadVar(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW
{
    ControlInformationM info;
    if (get_label_address_info(var->addressText, info) != kAddressResolved) {
        return 0;
    }
    var->station = tavmir::effectiveStation(var->station);
    var->dataType = info.dataType;
    if (!tavmir::findDataType(info.dataType)) {
        return 0;
    }
    const qint32 elements = onceReadElements(var->count, info);
    const qint32 step = info.dataType == tavmir::kTextType ? tavmir::kTextStep : info.elementWidth;

    QMutexLocker lock(&PLC_driver.listMutex);
    var->elementAddress = info.elementAddress;
    var->count = 1;
    queueElements(*var, elements, step);
    return PLC_driver.onceReadList.size();
}
