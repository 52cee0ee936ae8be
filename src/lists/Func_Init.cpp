// Rebuilding the polled list out of the host's variables.
#include "address/Func_Check.h"
#include "core/data_types.h"
#include "core/diagnostic_log.h"
#include "core/effective_station.h"
#include "core/shared_words.h"
#include "core/wrapping.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <QtCore/QMap>

#include <vector>

namespace {

const char kFile[] = "Func_Init";
const char kFunction[] = "ReCreatReadVarList";

// The elements of one class by address: ascending, one entry an address, the last one wins.
typedef QMap<qint32, RW_VAR> ElementsByAddress;

// What the closing log says of an entry.
struct EntryNumbers {
    qint32 station;
    qint32 dataType;
    qint32 elementAddress;
    qint32 count;
};

// What is the same for every element of a rebuild.
RW_VAR elementTemplate()
{
    RW_VAR element;
    element.varKey = -1;
    element.hostData3 = PLC_driver.comInfo->hostWord14;
    element.hostData4 = PLC_driver.comInfo->hostWord15;
    element.count = 1;
    return element;
}

// How many elements a polled variable of `count` makes. Only texts are cut to their array.
qint32 polledElements(qint32 count, const ControlInformationM& info)
{
    switch (info.dataType) {
    case tavmir::kTextType:
        return info.isArrayElement ? qMin(count, info.elementLimit) : 1;
    case tavmir::kDoubleWordType:
    case tavmir::kDoubleWordType7:
        return tavmir::wrapAdd(count, 1) / 2;
    default:
        return count;
    }
}

void addElements(ElementsByAddress& elements, RW_VAR& element, qint32 count, qint32 step)
{
    for (qint32 i = 0; i < count; ++i) {
        elements.insert(element.elementAddress, element);
        element.elementAddress = tavmir::wrapAdd(element.elementAddress, step);
    }
}

// Expands one host variable; false when its data type cannot be polled. A refused address is
// logged and expands to nothing.
bool expand(const HOSTVAR& var, RW_VAR& element, ElementsByAddress* classes)
{
    ControlInformationM info;
    if (get_label_address_info(var.addressText, info) != kAddressResolved) {
        tavmir::diagnosticLine(kFile, kFunction, tavmir::kLineRebuildAddressRefused, tavmir::kError)
            << var.addressText;
        return true;
    }
    const tavmir::DataType* type = tavmir::findDataType(info.dataType);
    if (!type)
        return false;
    element.addressText = var.addressText;
    element.auxText = var.auxText;
    element.station = tavmir::effectiveStation(var.station);
    element.dataType = info.dataType;
    element.elementAddress = info.elementAddress;
    addElements(classes[type->elementClass], element, polledElements(var.count, info),
                info.elementWidth);
    return true;
}

std::vector<EntryNumbers> appendInOrder(const ElementsByAddress* classes, QList<RW_VAR>& list)
{
    std::vector<EntryNumbers> numbers;
    for (int i = tavmir::kBits; i <= tavmir::kDoubleWords; ++i) {
        for (ElementsByAddress::const_iterator it = classes[i].begin(); it != classes[i].end(); ++it) {
            const EntryNumbers entry = {it->station, it->dataType, it->elementAddress, it->count};
            numbers.push_back(entry);
            list.append(*it);
        }
    }
    return numbers;
}

void logEntries(const std::vector<EntryNumbers>& entries)
{
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const EntryNumbers& entry = entries[i];
        tavmir::diagnosticLine(kFile, kFunction, tavmir::kLineRebuildEntry, tavmir::kInfo)
            << entry.station << " " << entry.dataType << " " << entry.elementAddress << " "
            << entry.count << " ";
    }
}

} // namespace

int ReCreatReadVarList(QList<HOSTVAR>* vars)
{
    tavmir::diagnosticLine(kFile, kFunction, tavmir::kLineRebuildStarted, tavmir::kTrace) << "";
    PLC_driver.listMutex.lock();
    PLC_driver.pendingReadList.clear();
    if (!vars || vars->isEmpty()) {
        PLC_driver.listMutex.unlock();
        tavmir::diagnosticLine(kFile, kFunction, tavmir::kLineRebuildOfNothing, tavmir::kError)
            << "null";
        return 0;
    }
    tavmir::storeShared(PLC_driver.scanCount, 0);
    tavmir::storeShared(PLC_driver.comInfo->scanDone, 0);

    RW_VAR element = elementTemplate();
    ElementsByAddress classes[tavmir::kDoubleWords + 1];
    const QList<HOSTVAR>& hostVars = *vars;
    for (QList<HOSTVAR>::const_iterator var = hostVars.begin(); var != hostVars.end(); ++var) {
        // `listMutex` stays locked: a host that passes such a type is stopped at its next call
        // into the lists, and hosts are written to expect that.
        if (!expand(*var, element, classes))
            return 0;
    }
    const std::vector<EntryNumbers> entries = appendInOrder(classes, PLC_driver.pendingReadList);
    PLC_driver.listMutex.unlock();

    // From here on the cycle may take the list: the lines are written from the copy.
    logEntries(entries);
    return static_cast<int>(entries.size());
}
