#include "request_handler.h"

#include "frame_bytes.h"
#include "frame_limits.h"

namespace tavmir::controller
{

namespace
{

QByteArray header(const Request& request, std::uint8_t function, std::uint8_t count,
                  std::size_t dataBytes)
{
    QByteArray bytes;
    bytes.reserve(static_cast<int>(wire::kHeaderBytes + dataBytes));
    appendBigEndian(bytes, request.transactionId, 2);
    appendBigEndian(bytes, 0, 2);
    const std::size_t length = wire::kHeaderBytes - wire::kLengthEnd + dataBytes;
    appendBigEndian(bytes, static_cast<std::uint32_t>(length), 2);
    appendByte(bytes, request.station);
    appendByte(bytes, function);
    appendByte(bytes, count);
    return bytes;
}

} // namespace

Answer refuse(const Request& request, std::uint8_t exceptionCode)
{
    const auto function = static_cast<std::uint8_t>(request.function | wire::kExceptionBit);
    return {header(request, function, exceptionCode, 0), exceptionCode};
}

Answer carryOut(const Request& request, BitMemory& memory)
{
    if (request.exceptionCode != 0) {
        return refuse(request, request.exceptionCode);
    }
    const wire::FunctionCode& functionCode = *request.functionCode;
    if (functionCode.write) {
        if (!memory.write(request.station, functionCode.valueBits, request.elements)) {
            return refuse(request, kDeviceFailure);
        }
        return {header(request, request.function, request.count, 0), 0};
    }
    const std::size_t dataBytes = request.elements.size() * functionCode.entryBytes();
    QByteArray reply = header(request, request.function, request.count, dataBytes);
    for (const BitValue& element : request.elements) {
        appendBigEndian(reply, element.address, wire::kAddressBytes);
        const std::uint32_t value =
            memory.read(request.station, element.address, functionCode.valueBits);
        appendBigEndian(reply, value, functionCode.valueBytes);
    }
    return {reply, 0};
}

} // namespace tavmir::controller
