#include "request_handler.h"

#include "frame_layout.h"

namespace tavmir::controller
{

namespace
{

QByteArray header(const Request& request, std::uint8_t function, std::uint8_t count, int dataBytes)
{
    QByteArray bytes;
    bytes.reserve(kHeaderBytes + dataBytes);
    appendBigEndian(bytes, request.transactionId, 2);
    appendBigEndian(bytes, 0, 2);
    const int length = kHeaderBytes - kBytesBeforeLengthCounts + dataBytes;
    appendBigEndian(bytes, static_cast<std::uint32_t>(length), 2);
    appendByte(bytes, request.station);
    appendByte(bytes, function);
    appendByte(bytes, count);
    return bytes;
}

Answer refuse(const Request& request, std::uint8_t exceptionCode)
{
    const auto function = static_cast<std::uint8_t>(request.function | kExceptionBit);
    return {header(request, function, exceptionCode, 0), exceptionCode};
}

} // namespace

Answer carryOut(const Request& request, BitMemory& memory)
{
    if (request.exceptionCode != 0)
        return refuse(request, request.exceptionCode);
    const FunctionCode& functionCode = *request.functionCode;
    if (functionCode.write) {
        if (!memory.write(request.station, functionCode.valueBits, request.elements))
            return refuse(request, kDeviceFailure);
        return {header(request, request.function, request.count, 0), 0};
    }
    const int dataBytes = static_cast<int>(request.elements.size()) * functionCode.entryBytes();
    QByteArray reply = header(request, request.function, request.count, dataBytes);
    for (const BitValue& element : request.elements) {
        appendBigEndian(reply, element.address, kAddressBytes);
        const std::uint32_t value =
            memory.read(request.station, element.address, functionCode.valueBits);
        appendBigEndian(reply, value, functionCode.valueBytes);
    }
    return {reply, 0};
}

} // namespace tavmir::controller
