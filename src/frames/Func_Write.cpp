#include "frames/Func_Write.h"

#include "core/big_endian.h"
#include "core/data_types.h"
#include "core/diagnostic_log.h"
#include "core/shared_words.h"
#include "data/local_values.h"
#include "frames/request_frame.h"

namespace
{

const char kFile[] = "Func_Write";
const char kFunction[] = "WriteAnalog";

const int kReplyDataOffset = 0; // the reply is a header without elements

// Entry of a write request:
//
//   0               4
//   element address 1, 2 or 4 value bytes, as the host ordered them
void putEntry(unsigned char* entry, const RW_VAR& var, int valueBytes)
{
    tavmir::putBigEndian32(entry, static_cast<quint32>(var.elementAddress));
    for (int i = 0; i < valueBytes; ++i) {
        const char byte = i < var.value.size() ? var.value.at(i) : '\0';
        entry[tavmir::kAddressBytes + i] = static_cast<unsigned char>(byte);
    }
}

// False when the batch makes no request.
bool queueWriteRequest()
{
    if (PLC_driver.batchCount < 1) {
        return false;
    }
    const int dataType = PLC_driver.batchElements[0]->dataType;
    const tavmir::DataType* type = tavmir::findDataType(dataType);
    if (!type) {
        tavmir::diagnosticLine(kFile, kFunction, tavmir::kLineWriteTypeRefused, tavmir::kError)
            << dataType;
        return false;
    }
    const int entryBytes = tavmir::kAddressBytes + type->valueBytes;
    const int length = tavmir::batchFrameLength(entryBytes);
    if (length == 0) {
        return false;
    }
    tavmir::putHeader(length);
    PLC_driver.sendBuffer[tavmir::kFunctionOffset] = type->writeFunction;
    unsigned char* entry = PLC_driver.sendBuffer + tavmir::kHeaderBytes;
    for (int i = 0; i < PLC_driver.batchCount; ++i, entry += entryBytes) {
        putEntry(entry, *PLC_driver.batchElements[i], type->valueBytes);
    }

    const QByteArray frame(reinterpret_cast<const char*>(PLC_driver.sendBuffer), length);
    tavmir::diagnosticLine(kFile, kFunction, tavmir::kLineWriteFrame, tavmir::kTrace)
        << tavmir::hexText(&frame);
    tavmir::queueRequest(length, tavmir::kHeaderBytes, kReplyDataOffset);
    return true;
}

} // namespace

bool tavmir::requestWrites()
{
    if (!queueWriteRequest()) {
        return false;
    }
    // While the link is marked failed the caches are left alone: a write handed in meanwhile has
    // stored its values already.
    if (loadShared(PLC_driver.commFailed)) {
        return true;
    }
    for (int i = 0; i < PLC_driver.batchCount; ++i) {
        WriteDataToLocal(PLC_driver.batchElements[i]);
    }
    return true;
}

void WriteAnalog() TAVMIR_KX_TCP_NOTHROW
{
    queueWriteRequest();
}

void WriteRegister() TAVMIR_KX_TCP_NOTHROW
{
    tavmir::requestWrites();
}

void Remote_WriteVar(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW
{
    Q_UNUSED(var);
}
