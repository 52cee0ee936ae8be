#include "request.h"

namespace tavmir::controller
{

namespace
{

std::uint32_t valueToWrite(const QByteArray& frame, int offset, const FunctionCode& functionCode)
{
    if (functionCode.valueBits == 1)
        return byteAt(frame, offset) != 0 ? 1 : 0;
    std::uint32_t value = 0;
    for (int i = 0; i < functionCode.valueBytes; ++i)
        value |= static_cast<std::uint32_t>(byteAt(frame, offset + i)) << (8 * i);
    return value;
}

bool countFits(const QByteArray& frame, int count, const FunctionCode& functionCode)
{
    return count >= 1 && count <= functionCode.mostElements() &&
           frame.size() == kHeaderBytes + count * functionCode.requestEntryBytes();
}

} // namespace

Request parseRequest(const QByteArray& frame)
{
    Request request;
    request.transactionId = bigEndian16(frame, kTransactionOffset);
    request.station = byteAt(frame, kStationOffset);
    request.function = byteAt(frame, kFunctionOffset);
    request.count = frame.size() > kCountOffset ? byteAt(frame, kCountOffset) : std::uint8_t{0};
    request.functionCode = findFunctionCode(request.function);
    if (!request.functionCode) {
        request.exceptionCode = kUnknownFunction;
        return request;
    }
    const FunctionCode& functionCode = *request.functionCode;
    if (!countFits(frame, request.count, functionCode)) {
        request.exceptionCode = kBadCount;
        return request;
    }
    request.elements.reserve(request.count);
    for (int i = 0; i < request.count; ++i) {
        const int offset = kHeaderBytes + i * functionCode.requestEntryBytes();
        BitValue element;
        element.address = bigEndian32(frame, offset);
        if (functionCode.write)
            element.value = valueToWrite(frame, offset + kAddressBytes, functionCode);
        request.elements.push_back(element);
    }
    return request;
}

} // namespace tavmir::controller
