#include "data/local_values.h"

#include "core/data_types.h"
#include "core/wrapping.h"

#include <QtCore/QMutexLocker>

namespace
{

// The value of element `i`, least significant byte first; what lies past the end is zero.
template <typename Value> Value valueAt(const QByteArray& bytes, qint32 i)
{
    const qint64 first = static_cast<qint64>(i) * static_cast<qint64>(sizeof(Value));
    quint32 value = 0;
    for (unsigned b = 0; b < sizeof(Value); ++b) {
        const qint64 at = first + b;
        if (at < bytes.size()) {
            value |=
                static_cast<quint32>(static_cast<unsigned char>(bytes.at(static_cast<int>(at))))
                << (8 * b);
        }
    }
    return static_cast<Value>(value);
}

// Keys advance by 1 an element, not by the element's width.
template <typename Value> void store(const RW_VAR& var, QHash<int, Value>& cache)
{
    for (qint32 i = 0; i < var.count; ++i) {
        cache.insert(tavmir::wrapAdd(var.elementAddress, i), valueAt<Value>(var.value, i));
    }
}

} // namespace

void WriteDataToLocal(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW
{
    QMutexLocker lock(&PLC_driver.cacheMutex);
    const tavmir::DataType* type = tavmir::findDataType(var->dataType);
    if (!type) {
        return;
    }
    switch (type->elementClass) {
    case tavmir::kBits:
        return store(*var, PLC_driver.byteCache);
    case tavmir::kWords:
        return store(*var, PLC_driver.wordCache);
    case tavmir::kDoubleWords:
        return store(*var, PLC_driver.dwordCache);
    }
}
