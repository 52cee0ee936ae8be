#include "frames/read_request.h"

#include "core/big_endian.h"
#include "core/data_types.h"
#include "frames/request_frame.h"

// Entry of a read request:
//
//   0               4
//   element address
void ReadAnalog() TAVMIR_KX_TCP_NOTHROW
{
    const int length = tavmir::batchFrameLength(tavmir::kAddressBytes);
    if (length == 0) {
        return;
    }
    tavmir::putHeader(length);
    const int dataType = PLC_driver.batchElements[0]->dataType;
    // A type without encoding keeps the function code of the frame before it; hosts must not
    // poll such types.
    if (const tavmir::DataType* type = tavmir::findDataType(dataType)) {
        PLC_driver.sendBuffer[tavmir::kFunctionOffset] = type->readFunction;
    }

    unsigned char* entry = PLC_driver.sendBuffer + tavmir::kHeaderBytes;
    for (int i = 0; i < PLC_driver.batchCount; ++i, entry += tavmir::kAddressBytes) {
        tavmir::putBigEndian32(entry,
                               static_cast<quint32>(PLC_driver.batchElements[i]->elementAddress));
    }

    const int elementBytes = PLC_driver.get_data_type_size(dataType);
    tavmir::queueRequest(length, PLC_driver.batchCount * elementBytes + tavmir::kHeaderBytes,
                         tavmir::kHeaderBytes);
}

void ReadRegister() TAVMIR_KX_TCP_NOTHROW
{
    ReadAnalog();
}

void Remote_ReadVar(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW
{
    Q_UNUSED(var);
}
