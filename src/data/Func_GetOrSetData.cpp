// The host's reads and writes: values between host arrays and the caches or the write list.
#include "address/Func_Check.h"
#include "core/data_types.h"
#include "core/diagnostic_log.h"
#include "core/effective_station.h"
#include "core/shared_words.h"
#include "core/wrapping.h"
#include "data/local_values.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <QtCore/QMutexLocker>

using tavmir::wrapAdd;
using tavmir::wrapMultiply;

namespace
{

const qint32 kSendToController = 2; // of `writeMode`

void fillWithZeros(QByteArray& data, qint32 size)
{
    data.fill('\0', qMax(0, size));
}

// 16-bit units to 32-bit elements.
qint32 doubleWords(qint32 count)
{
    return wrapAdd(count, 1) / 2;
}

template <typename Value> void putLittleEndian(char* at, Value value)
{
    for (unsigned i = 0; i < sizeof(Value); ++i) {
        at[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
    }
}

// Only texts and array elements have neighbours that a read may go on to.
qint32 readableElements(const ControlInformationM& info, qint32 count)
{
    if (info.dataType == tavmir::kTextType) {
        return count;
    }
    return info.isArrayElement ? qMin(count, info.elementLimit) : 1;
}

// Fills `data` with `count` elements from the cache; keys that it lacks stay zero.
template <typename Value>
void readElements(const QHash<int, Value>& cache, const ControlInformationM& info, qint32 step,
                  qint32 count, QByteArray& data)
{
    const int valueBytes = static_cast<int>(sizeof(Value));
    fillWithZeros(data, wrapMultiply(valueBytes, count));
    const qint32 elements = qMin(readableElements(info, count), data.size() / valueBytes);
    char* at = data.data();
    qint32 key = info.elementAddress;
    for (qint32 i = 0; i < elements; ++i, at += valueBytes, key = wrapAdd(key, step)) {
        const typename QHash<int, Value>::const_iterator entry = cache.constFind(key);
        if (entry != cache.constEnd()) {
            putLittleEndian(at, *entry);
        }
    }
}

void readPlain(const ControlInformationM& info, qint32 count, QByteArray& data)
{
    switch (info.dataType) {
    case tavmir::kBitType:
        return readElements(PLC_driver.byteCache, info, 1, count, data);
    case tavmir::kWordType:
        return readElements(PLC_driver.wordCache, info, info.elementWidth, count, data);
    case tavmir::kTextType:
        return readElements(PLC_driver.wordCache, info, tavmir::kTextStep, count, data);
    case tavmir::kDoubleWordType:
    case tavmir::kDoubleWordType7:
        return readElements(PLC_driver.dwordCache, info, info.elementWidth, doubleWords(count),
                            data);
    default:
        return fillWithZeros(data, wrapMultiply(2, count));
    }
}

// One byte a bit, from the addressed bit to the element's last; bits below 0 read as 0. An
// element never received is entered in the cache as zero.
template <typename Value>
void readBits(QHash<int, Value>& cache, const ControlInformationM& info, QByteArray& data)
{
    const qint32 bits = 8 * static_cast<qint32>(sizeof(Value));
    qint32 bit = info.bitIndex;
    if (data.isEmpty() || bit >= bits) {
        return;
    }
    const quint32 value = cache[info.elementAddress];
    char* at = data.data();
    for (int i = 0; i < data.size() && bit < bits; ++i, ++bit) {
        if (bit >= 0) {
            at[i] = static_cast<char>((value >> bit) & 1);
        }
    }
}

// Queues a write record or stores it, as the host's write mode says. While the link is marked
// failed, the host sees its own queued writes at once.
void deliver(RW_VAR& record)
{
    if (PLC_driver.comInfo->writeMode != kSendToController) {
        WriteDataToLocal(&record);
        return;
    }
    AddListWriteVar(&record);
    if (tavmir::loadShared(PLC_driver.commFailed)) {
        WriteDataToLocal(&record);
    }
}

// The element that a bit write starts from, entered as zero when it was never received. Without
// `cacheMutex`: the look-up does not wait for a reply being stored, and it is the host that keeps
// bit writes apart from the cycle.
template <typename Value> Value elementWithoutLock(QHash<int, Value>& cache, qint32 elementAddress)
{
    return cache[elementAddress];
}

// Without `listMutex`: values that are stored only can be handed in while the lists are locked.
int queuedWritesWithoutLock()
{
    return PLC_driver.writeVarList.size();
}

// Sends the whole element with the named bits changed, the others as the cache has them.
template <typename Value>
void writeBits(QHash<int, Value>& cache, const ControlInformationM& info, const QByteArray& data,
               tavmir::DiagnosticLineNumber line, RW_VAR& record)
{
    const qint32 bits = 8 * static_cast<qint32>(sizeof(Value));
    quint32 value = elementWithoutLock(cache, info.elementAddress);
    qint32 bit = info.bitIndex;
    for (int i = 0; i < data.size() && bit < bits; ++i, ++bit) {
        if (bit < 0) {
            continue;
        }
        const quint32 mask = 1u << bit;
        value = data.at(i) != 0 ? (value | mask) : (value & ~mask);
    }
    char bytes[sizeof(Value)];
    putLittleEndian(bytes, static_cast<Value>(value));
    record.value = QByteArray(bytes, static_cast<int>(sizeof bytes));
    record.count = static_cast<qint32>(sizeof bytes);
    tavmir::diagnosticLine("Func_GetOrSetData", "SetRegisterData", line, tavmir::kInfo)
        << record.auxText << record.elementAddress << record.count
        << tavmir::hexText(&record.value);
    deliver(record);
}

// The bytes of element `i`, zeros when they are not all there.
QByteArray elementBytes(const QByteArray& data, qint32 i, int valueBytes)
{
    const qint64 first = static_cast<qint64>(i) * valueBytes;
    if (first + valueBytes > data.size()) {
        return QByteArray(valueBytes, '\0');
    }
    return QByteArray(data.constData() + first, valueBytes);
}

// Delivers `count` elements, `step` apart. Writes are not cut at the end of an array.
void writeElements(const QByteArray& data, qint32 count, qint32 step, int valueBytes,
                   RW_VAR& record)
{
    for (qint32 i = 0; i < count; ++i) {
        record.value = elementBytes(data, i, valueBytes);
        if (record.dataType == tavmir::kBitType) {
            record.value[0] = record.value.at(0) != 0 ? 1 : 0;
        }
        deliver(record);
        record.elementAddress = wrapAdd(record.elementAddress, step);
    }
}

// False when the type cannot be written.
bool writePlain(const ControlInformationM& info, const QByteArray& data, qint32 count,
                RW_VAR& record)
{
    switch (info.dataType) {
    case tavmir::kBitType:
        writeElements(data, count, 1, 1, record);
        return true;
    case tavmir::kWordType:
        writeElements(data, count, info.elementWidth, 2, record);
        return true;
    case tavmir::kTextType:
        writeElements(data, count, tavmir::kTextStep, 2, record);
        return true;
    case tavmir::kDoubleWordType:
    case tavmir::kDoubleWordType7:
        writeElements(data, doubleWords(count), info.elementWidth, 4, record);
        return true;
    default:
        return false;
    }
}

} // namespace

int GetRegisterData(const QString& address, int unused2, int unused3, int unused4, QByteArray* data,
                    int count) TAVMIR_KX_TCP_NOTHROW
{
    Q_UNUSED(unused2);
    Q_UNUSED(unused3);
    Q_UNUSED(unused4);
    QByteArray nowhere;
    QByteArray& values = data ? *data : nowhere;
    count = qMax(0, count); // a negative one must not wrap into a large size
    ControlInformationM info;
    if (get_label_address_info(address, info) != kAddressResolved) {
        fillWithZeros(values, wrapMultiply(2, count));
        return 0;
    }

    QMutexLocker lock(&PLC_driver.cacheMutex);
    if (info.bitAccess != 1) {
        readPlain(info, count, values);
        return 1;
    }
    fillWithZeros(values, count);
    if (info.dataType == tavmir::kWordType) {
        readBits(PLC_driver.wordCache, info, values);
    } else if (info.dataType == tavmir::kDoubleWordType) {
        readBits(PLC_driver.dwordCache, info, values);
    }
    return 1;
}

int SetRegisterData(const QString& address, int unused2, const QString& text, int station,
                    QByteArray* data, int count, int hostKey, int varKey) TAVMIR_KX_TCP_NOTHROW
{
    Q_UNUSED(unused2);
    ControlInformationM info;
    if (get_label_address_info(address, info) != kAddressResolved) {
        return 0;
    }

    RW_VAR record;
    record.hostKey = hostKey;
    record.varKey = varKey;
    record.hostData2 = 1; // the acknowledgement carries no values
    record.hostData3 = PLC_driver.comInfo->hostWord14;
    record.hostData4 = PLC_driver.comInfo->hostWord15;
    record.addressText = address;
    record.auxText = text;
    record.dataType = info.dataType;
    record.elementAddress = info.elementAddress;
    record.station = tavmir::effectiveStation(station);
    record.count = 1;

    const QByteArray values = data ? *data : QByteArray();
    if (info.bitAccess == 1) {
        if (info.dataType == tavmir::kWordType) {
            writeBits(PLC_driver.wordCache, info, values, tavmir::kLineWordBitWrite, record);
        } else if (info.dataType == tavmir::kDoubleWordType) {
            writeBits(PLC_driver.dwordCache, info, values, tavmir::kLineDoubleWordBitWrite, record);
        }
    } else if (!writePlain(info, values, count, record)) {
        return 0;
    }
    return queuedWritesWithoutLock();
}
