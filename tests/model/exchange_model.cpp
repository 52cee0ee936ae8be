// The host's reads and writes.
#include "model/driver_model.h"

#include <algorithm>

namespace tavmir::model
{

namespace
{

std::int32_t half(std::int32_t count)
{
    return wrapped(std::int64_t{count} + 1) / 2;
}

Bytes zeros(std::int64_t count)
{
    return Bytes(count < 0 ? 0 : static_cast<std::size_t>(count), 0);
}

// Copies cached values, least significant byte first; what the cache lacks stays zero.
template <typename Value>
void copyOut(const std::map<std::int32_t, Value>& cache, std::int32_t key, std::int32_t step,
             std::int32_t elements, Bytes& data)
{
    for (std::int32_t i = 0; i < elements; ++i) {
        const auto found = cache.find(key);
        if (found != cache.end()) {
            for (std::size_t byte = 0; byte < sizeof(Value); ++byte) {
                data[static_cast<std::size_t>(i) * sizeof(Value) + byte] =
                    static_cast<unsigned char>(found->second >> (8 * byte));
            }
        }
        key = wrapped(std::int64_t{key} + step);
    }
}

template <typename Value>
void copyBits(std::map<std::int32_t, Value>& cache, std::int32_t key, std::int64_t bit,
              std::int32_t count, Bytes& data)
{
    const auto bits = static_cast<std::int64_t>(8 * sizeof(Value));
    if (count < 1 || bit >= bits) {
        return;
    }
    const Value word = cache[key];
    for (std::size_t j = 0; j < data.size() && bit < bits; ++j, ++bit) {
        data[j] = static_cast<unsigned char>(bit < 0 ? 0 : (word >> bit) & 1);
    }
}

template <typename Value>
Bytes bitsInto(std::map<std::int32_t, Value>& cache, std::int32_t key, std::int64_t bit,
               const Bytes& data)
{
    const auto bits = static_cast<std::int64_t>(8 * sizeof(Value));
    std::uint32_t word = cache[key];
    for (std::size_t j = 0; j < data.size() && bit < bits; ++j, ++bit) {
        if (bit < 0) {
            continue;
        }
        const std::uint32_t mask = std::uint32_t{1} << bit;
        word = data[j] != 0 ? word | mask : word & ~mask;
    }
    Bytes value;
    for (std::size_t byte = 0; byte < sizeof(Value); ++byte) {
        value.push_back(static_cast<unsigned char>(word >> (8 * byte)));
    }
    return value;
}

} // namespace

int DriverModel::getRegisterData(const Text& address, Bytes& data, int count)
{
    Resolved at;
    if (resolve(address, at) != 0) {
        data = zeros(2 * std::int64_t{count});
        return 0;
    }
    const bool isArray = at.isArrayElement != 0;
    const auto limited = [&](std::int32_t wanted) {
        return std::min(wanted, isArray ? at.elementLimit : 1);
    };
    if (at.bitAccess == 1) {
        data = zeros(count);
        if (at.dataType == 4) {
            copyBits(wordCache, at.elementAddress, at.bitIndex, count, data);
        }
        if (at.dataType == 6) {
            copyBits(dwordCache, at.elementAddress, at.bitIndex, count, data);
        }
        return 1;
    }
    switch (at.dataType) {
    case 1:
        data = zeros(count);
        copyOut(byteCache, at.elementAddress, 1, limited(count), data);
        break;
    case 4:
        data = zeros(2 * std::int64_t{count});
        copyOut(wordCache, at.elementAddress, at.elementWidth, limited(count), data);
        break;
    case 10:
        data = zeros(2 * std::int64_t{count});
        copyOut(wordCache, at.elementAddress, 16, count, data);
        break;
    case 6:
    case 7:
        data = zeros(4 * std::int64_t{half(count)});
        copyOut(dwordCache, at.elementAddress, at.elementWidth, limited(half(count)), data);
        break;
    default:
        data = zeros(2 * std::int64_t{count});
    }
    return 1;
}

int DriverModel::setRegisterData(const Text& address, const Text& text, int station,
                                 const Bytes& data, int count, int hostKey, int varKey)
{
    Resolved at;
    if (resolve(address, at) != 0) {
        return 0;
    }
    Var var;
    var.hostKey = hostKey;
    var.varKey = varKey;
    var.hostData2 = 1;
    var.hostData3 = com[HostWord14];
    var.hostData4 = com[HostWord15];
    var.addressText = address;
    var.auxText = text;
    var.dataType = at.dataType;
    var.elementAddress = at.elementAddress;
    var.station = effectiveStation(station);
    var.count = 1;
    if (at.bitAccess == 1) {
        writeBits(var, at, data);
        return static_cast<int>(writeVarList.size());
    }

    std::int32_t elements = count;
    std::int32_t step = at.elementWidth;
    std::size_t bytes = 2;
    switch (at.dataType) {
    case 1:
        bytes = 1;
        step = 1;
        break;
    case 4:
        break;
    case 10:
        step = 16;
        break;
    case 6:
    case 7:
        elements = half(count);
        bytes = 4;
        break;
    default:
        return 0;
    }
    for (std::int32_t i = 0; i < elements; ++i) {
        const std::size_t first = static_cast<std::size_t>(i) * bytes;
        var.value.assign(bytes, 0);
        if (first + bytes <= data.size()) {
            std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(first), bytes,
                        var.value.begin());
        }
        if (bytes == 1) {
            var.value[0] = var.value[0] != 0 ? 1 : 0;
        }
        deliver(var);
        var.elementAddress = wrapped(std::int64_t{var.elementAddress} + step);
    }
    return static_cast<int>(writeVarList.size());
}

void DriverModel::writeBits(Var& var, const Resolved& resolved, const Bytes& data)
{
    int number = 362;
    if (resolved.dataType == 4) {
        var.value = bitsInto(wordCache, resolved.elementAddress, resolved.bitIndex, data);
    } else if (resolved.dataType == 6) {
        var.value = bitsInto(dwordCache, resolved.elementAddress, resolved.bitIndex, data);
        number = 412;
    } else {
        return;
    }
    var.count = static_cast<std::int32_t>(var.value.size());
    emit(line("Func_GetOrSetData", "SetRegisterData", number, "INFO ")
             .quoted(var.auxText)
             .number(var.elementAddress)
             .number(var.count)
             .quotedHex(var.value));
    deliver(var);
}

void DriverModel::deliver(const Var& var)
{
    if (com[WriteMode] == 2) {
        addListWriteVar(var);
        if (!commFailed) {
            return;
        }
    }
    writeDataToLocal(var);
}

void DriverModel::writeDataToLocal(const Var& var)
{
    const auto byteAt = [&](std::int64_t i) -> std::uint32_t {
        return i < static_cast<std::int64_t>(var.value.size())
                   ? var.value[static_cast<std::size_t>(i)]
                   : 0;
    };
    for (std::int32_t i = 0; i < var.count; ++i) {
        const std::int64_t at = i;
        const std::int32_t key = wrapped(std::int64_t{var.elementAddress} + i);
        switch (var.dataType) {
        case 1:
            byteCache[key] = static_cast<std::uint8_t>(byteAt(at));
            break;
        case 4:
        case 10:
            wordCache[key] = static_cast<std::uint16_t>(byteAt(2 * at) + 256 * byteAt(2 * at + 1));
            break;
        case 6:
        case 7:
            dwordCache[key] = byteAt(4 * at) + 256 * byteAt(4 * at + 1) +
                              65536 * byteAt(4 * at + 2) + 16777216 * byteAt(4 * at + 3);
            break;
        default:
            break;
        }
    }
}

} // namespace tavmir::model
