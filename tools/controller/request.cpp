#include "request.h"

#include "frame_bytes.h"
#include "frame_limits.h"

namespace tavmir::controller
{

namespace
{

std::uint32_t valueToWrite(const unsigned char* value, const wire::FunctionCode& functionCode)
{
    if (functionCode.valueBits == 1) {
        return value[0] != 0 ? 1 : 0;
    }
    return wire::littleEndianNumber(value, functionCode.valueBytes);
}

bool countFits(std::size_t frameBytes, std::size_t count, const wire::FunctionCode& functionCode)
{
    return count >= 1 && count <= mostElements(functionCode.entryBytes()) &&
           frameBytes == wire::kHeaderBytes + count * functionCode.requestEntryBytes();
}

} // namespace

Request parseRequest(const QByteArray& frame)
{
    const unsigned char* bytes = bytesOf(frame);
    Request request;
    request.transactionId = wire::bigEndian16(bytes + wire::kTransactionOffset);
    request.station = bytes[wire::kStationOffset];
    request.function = bytes[wire::kFunctionOffset];
    request.count =
        sizeOf(frame) > wire::kCountOffset ? bytes[wire::kCountOffset] : std::uint8_t{0};
    request.functionCode = wire::findFunctionCode(request.function);
    if (!request.functionCode) {
        request.exceptionCode = kUnknownFunction;
        return request;
    }
    const wire::FunctionCode& functionCode = *request.functionCode;
    if (!countFits(sizeOf(frame), request.count, functionCode)) {
        request.exceptionCode = kBadCount;
        return request;
    }
    request.elements.reserve(request.count);
    for (std::size_t i = 0; i < request.count; ++i) {
        const unsigned char* entry =
            bytes + wire::kHeaderBytes + i * functionCode.requestEntryBytes();
        BitValue element;
        element.address = wire::bigEndian32(entry);
        if (functionCode.write) {
            element.value = valueToWrite(entry + wire::kAddressBytes, functionCode);
        }
        request.elements.push_back(element);
    }
    return request;
}

} // namespace tavmir::controller
