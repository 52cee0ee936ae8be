// Registrations and the rebuild of the polled list.
#include "model/driver_model.h"

#include <algorithm>

namespace tavmir::model
{

namespace
{

constexpr std::size_t kOnceReadLimit = 1024;

bool isSameOnceRead(const Var& a, const Var& b)
{
    return a.hostKey == b.hostKey && a.varKey == b.varKey && a.station == b.station &&
           a.elementAddress == b.elementAddress && a.count == b.count &&
           a.hostData4 == b.hostData4 && a.dataType == b.dataType && a.hostData13 == b.hostData13;
}

std::int32_t half(std::int32_t count)
{
    return wrapped(std::int64_t{count} + 1) / 2;
}

} // namespace

int DriverModel::addListReadVar(const Var& var)
{
    readVarList.push_back(var);
    return static_cast<int>(readVarList.size());
}

int DriverModel::addListWriteVar(const Var& var)
{
    writeVarList.push_back(var);
    return static_cast<int>(writeVarList.size());
}

int DriverModel::addListOnceReadVar(Var& var)
{
    Resolved resolved;
    if (resolve(var.addressText, resolved) != 0) {
        return 0;
    }
    var.station = effectiveStation(var.station);
    var.dataType = resolved.dataType;
    std::int32_t elements = var.count;
    std::int32_t step = resolved.elementWidth;
    switch (resolved.dataType) {
    case 6:
    case 7:
        elements = half(elements);
        [[fallthrough]];
    case 1:
    case 4:
        elements = resolved.isArrayElement == 0 ? 1 : std::min(elements, resolved.elementLimit);
        break;
    case 10:
        elements = wrapped(std::min<std::uint32_t>(static_cast<std::uint32_t>(elements),
                                                   static_cast<std::uint32_t>(step)));
        step = 16;
        break;
    default:
        return 0;
    }
    var.elementAddress = resolved.elementAddress;
    var.count = 1;
    for (std::int32_t i = 0; i < elements; ++i) {
        const bool queued = std::any_of(onceReadList.begin(), onceReadList.end(),
                                        [&](const Var& one) { return isSameOnceRead(one, var); });
        if (!queued && onceReadList.size() < kOnceReadLimit) {
            onceReadList.push_back(var);
        }
        var.elementAddress = wrapped(std::int64_t{var.elementAddress} + step);
    }
    return static_cast<int>(onceReadList.size());
}

int DriverModel::recreateReadVarList(const std::vector<PolledVariable>& variables)
{
    const char* const function = "ReCreatReadVarList";
    emit(line("Func_Init", function, 197, "TRACE ").plain(""));
    pendingReadList.clear();
    if (variables.empty()) {
        emit(line("Func_Init", function, 204, "ERROR ").plain("null"));
        return 0;
    }
    scanCount = 0;
    com[ScanDone] = 0;

    // bits, words, double words
    std::array<std::map<std::int32_t, Var>, 3> classes;
    for (const PolledVariable& variable : variables) {
        Resolved resolved;
        if (resolve(variable.addressText, resolved) != 0) {
            emit(line("Func_Init", function, 234, "ERROR ").quoted(variable.addressText));
            continue;
        }
        Var element;
        element.varKey = -1;
        element.hostData3 = com[HostWord14];
        element.hostData4 = com[HostWord15];
        element.count = 1;
        element.addressText = variable.addressText;
        element.auxText = variable.auxText;
        element.station = effectiveStation(variable.station);
        element.dataType = resolved.dataType;
        std::size_t place = 0;
        std::int32_t elements = variable.count;
        std::int32_t step = resolved.elementWidth;
        switch (resolved.dataType) {
        case 1:
            step = 1;
            break;
        case 4:
            place = 1;
            break;
        case 10:
            place = 1;
            elements = resolved.isArrayElement == 0 ? 1 : std::min(elements, resolved.elementLimit);
            break;
        case 6:
        case 7:
            place = 2;
            elements = half(elements);
            break;
        default:
            listMutexLeftLocked = true;
            return 0;
        }
        element.elementAddress = resolved.elementAddress;
        for (std::int32_t i = 0; i < elements; ++i) {
            classes[place][element.elementAddress] = element;
            element.elementAddress = wrapped(std::int64_t{element.elementAddress} + step);
        }
    }
    for (const auto& entries : classes) {
        for (const auto& entry : entries) {
            pendingReadList.push_back(entry.second);
        }
    }
    for (const Var& var : pendingReadList) {
        emit(line("Func_Init", function, 357, "INFO ")
                 .number(var.station)
                 .plain(" ")
                 .number(var.dataType)
                 .plain(" ")
                 .number(var.elementAddress)
                 .plain(" ")
                 .number(var.count)
                 .plain(" "));
    }
    return static_cast<int>(pendingReadList.size());
}

} // namespace tavmir::model
