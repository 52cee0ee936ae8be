// Rebuilding the polled list out of the host's variables.
#include "address/Func_Check.h"
#include "core/data_types.h"
#include "core/diagnostic_log.h"
#include "core/effective_station.h"
#include "core/shared_words.h"
#include "core/wrapping.h"
#include "lists/class_elements.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <vector>

namespace
{

const char kFile[] = "Func_Init";
const char kFunction[] = "ReCreatReadVarList";

const int kClasses = tavmir::kDoubleWords + 1;

// What the elements of one of the host's variables share.
struct ExpandedVariable {
    const HOSTVAR* var;
    qint32 station;
    qint32 dataType;
};

// All variables, and their elements by class.
struct Expansion {
    std::vector<ExpandedVariable> variables;
    tavmir::ClassElements classes[kClasses];
};

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

// Expands one host variable; false when its data type cannot be polled. A refused address is
// logged and expands to nothing.
bool expand(const HOSTVAR& var, Expansion& expansion)
{
    ControlInformationM info;
    if (get_label_address_info(var.addressText, info) != kAddressResolved) {
        tavmir::diagnosticLine(kFile, kFunction, tavmir::kLineRebuildAddressRefused, tavmir::kError)
            << var.addressText;
        return true;
    }
    const tavmir::DataType* type = tavmir::findDataType(info.dataType);
    if (!type) {
        return false;
    }
    const ExpandedVariable expanded = {&var, tavmir::effectiveStation(var.station), info.dataType};
    const qint32 record = static_cast<qint32>(expansion.variables.size());
    expansion.variables.push_back(expanded);
    expansion.classes[type->elementClass].add(record, info.elementAddress, info.elementWidth,
                                              polledElements(var.count, info));
    return true;
}

// Appends the elements of one class; neighbours of one variable share what is set for the first.
void appendClass(const std::vector<ExpandedVariable>& variables,
                 const std::vector<tavmir::ClassElements::Element>& elements, RW_VAR& entry,
                 QList<RW_VAR>& list, std::vector<EntryNumbers>& numbers)
{
    qint32 record = -1;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (elements[i].record != record) {
            record = elements[i].record;
            const ExpandedVariable& variable = variables[static_cast<std::size_t>(record)];
            entry.addressText = variable.var->addressText;
            entry.auxText = variable.var->auxText;
            entry.station = variable.station;
            entry.dataType = variable.dataType;
        }
        entry.elementAddress = elements[i].address;
        list.append(entry);
        const EntryNumbers line = {entry.station, entry.dataType, entry.elementAddress,
                                   entry.count};
        numbers.push_back(line);
    }
}

std::vector<EntryNumbers> appendInOrder(Expansion& expansion, RW_VAR& entry, QList<RW_VAR>& list)
{
    std::size_t total = 0;
    for (int i = 0; i < kClasses; ++i) {
        total += expansion.classes[i].inOrder().size();
    }
    std::vector<EntryNumbers> numbers;
    numbers.reserve(total);
    list.reserve(static_cast<int>(total));
    for (int i = 0; i < kClasses; ++i) {
        appendClass(expansion.variables, expansion.classes[i].inOrder(), entry, list, numbers);
    }
    return numbers;
}

void logEntries(const std::vector<EntryNumbers>& entries)
{
    tavmir::RepeatedLine line(kFile, kFunction, tavmir::kLineRebuildEntry, tavmir::kInfo);
    char payload[64]; // four numbers of at most 11 characters and their blanks
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const EntryNumbers& entry = entries[i];
        // A blank item follows each number, and items are parted by a blank.
        qsnprintf(payload, sizeof payload, "%d   %d   %d   %d  ", entry.station, entry.dataType,
                  entry.elementAddress, entry.count);
        line.write(payload);
    }
}

} // namespace

int ReCreatReadVarList(QList<HOSTVAR>* vars) TAVMIR_KX_TCP_NOTHROW
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

    RW_VAR entry = elementTemplate();
    Expansion expansion;
    const QList<HOSTVAR>& hostVars = *vars;
    for (int i = 0; i < hostVars.size(); ++i) {
        // `listMutex` stays locked, on purpose: a host that passes such a type is stopped at its
        // next call into the lists.
        if (!expand(hostVars.at(i), expansion)) {
            return 0;
        }
    }
    const std::vector<EntryNumbers> entries =
        appendInOrder(expansion, entry, PLC_driver.pendingReadList);
    PLC_driver.listMutex.unlock();

    // From here on the cycle may take the list: the lines are written from the copy.
    logEntries(entries);
    return static_cast<int>(entries.size());
}
