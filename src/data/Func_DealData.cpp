#include "data/Func_DealData.h"

#include "core/big_endian.h"
#include "core/cycle_state.h"
#include "core/data_types.h"
#include "core/diagnostic_log.h"

namespace
{

// Reply to a read request; entry i answers batch element i, by position alone:
//
//   0       9               13                  9 + s
//   header  address bytes   value, 1, 2 or 4    next entry …
//           of entry 0      bytes
//
// Header and address bytes are not looked at.
template <typename Value>
void storeEntries(const unsigned char* entry, int available, QHash<int, Value>& cache)
{
    const int entryBytes = tavmir::kAddressBytes + static_cast<int>(sizeof(Value));
    const int count =
        qMin(qMin(PLC_driver.batchCount, tavmir::kBatchSlots), available / entryBytes);
    for (int i = 0; i < count; ++i, entry += entryBytes) {
        cache.insert(PLC_driver.batchElements[i]->elementAddress,
                     tavmir::getBigEndian<Value>(entry + tavmir::kAddressBytes));
    }
}

} // namespace

int CheckGetData(const QByteArray* reply, int size) TAVMIR_KX_TCP_NOTHROW
{
    Q_UNUSED(reply);
    Q_UNUSED(size);
    const QList<Protocol>& requests = PLC_driver.protocolList;
    if (requests.isEmpty() || requests.first().var.hostData2 != 0) {
        return kNothingToStore;
    }
    return kStoreValues;
}

void SaveToLocalDataErea(QByteArray* reply) TAVMIR_KX_TCP_NOTHROW
{
    if (!reply || !PLC_driver.batchElements[0] || PLC_driver.protocolList.isEmpty()) {
        return;
    }
    const int offset = PLC_driver.protocolList.first().replyDataOffset;
    const int available = offset < 0 ? 0 : qMax(0, reply->size() - offset);
    const unsigned char* entries =
        reinterpret_cast<const unsigned char*>(reply->data()) + (available > 0 ? offset : 0);

    const int dataType = PLC_driver.batchElements[0]->dataType;
    const tavmir::DataType* type = tavmir::findDataType(dataType);
    if (!type) {
        tavmir::diagnosticLine("Func_DealData", "SaveToLocalDataErea",
                               tavmir::kLineReplyTypeUnknown, tavmir::kError)
            << dataType;
        return;
    }
    switch (type->elementClass) {
    case tavmir::kBits:
        return storeEntries(entries, available, PLC_driver.byteCache);
    case tavmir::kWords:
        return storeEntries(entries, available, PLC_driver.wordCache);
    case tavmir::kDoubleWords:
        return storeEntries(entries, available, PLC_driver.dwordCache);
    }
}
