#include "trace.h"

#include "frame_bytes.h"
#include "frame_limits.h"

#include <QtCore/QStringList>

namespace tavmir::controller
{

namespace
{

QString functionInWords(std::uint8_t code)
{
    const wire::FunctionCode* function = wire::findFunctionCode(code);
    return function ? QLatin1String(function->words) : QStringLiteral("function %1").arg(code);
}

QString exceptionInWords(std::uint8_t code)
{
    switch (code) {
    case kUnknownFunction:
        return QStringLiteral("1 (unknown function)");
    case kBadCount:
        return QStringLiteral("3 (bad count)");
    case kDeviceFailure:
        return QStringLiteral("4 (memory full)");
    default:
        return QString::number(code);
    }
}

QString start(std::uint16_t transactionId, std::uint8_t station)
{
    return QStringLiteral("#%1 station %2 ").arg(transactionId).arg(station);
}

QString pair(const ElementNames& names, std::uint32_t address, int bits, std::uint32_t value)
{
    return QStringLiteral("%1=%2").arg(names.nameOf(address, bits)).arg(value);
}

} // namespace

QString requestInWords(const Request& request, const ElementNames& names)
{
    const QString words =
        start(request.transactionId, request.station) + functionInWords(request.function);
    if (request.exceptionCode != 0)
        return words + QStringLiteral(": exception ") + exceptionInWords(request.exceptionCode);
    QStringList elements;
    const int bits = request.functionCode->valueBits;
    for (const BitValue& element : request.elements) {
        elements.append(request.functionCode->write
                            ? pair(names, element.address, bits, element.value)
                            : names.nameOf(element.address, bits));
    }
    return words + QStringLiteral(": ") + elements.join(QStringLiteral(", "));
}

QString replyInWords(const QByteArray& reply, const ElementNames& names)
{
    const std::size_t size = sizeOf(reply);
    if (size < wire::kHeaderBytes) {
        return QString("%1 bytes").arg(size);
    }
    const unsigned char* bytes = bytesOf(reply);
    const std::uint8_t code = bytes[wire::kFunctionOffset];
    const std::uint8_t count = bytes[wire::kCountOffset];
    const QString words =
        start(wire::bigEndian16(bytes + wire::kTransactionOffset), bytes[wire::kStationOffset]);
    if ((code & wire::kExceptionBit) != 0) {
        return words + functionInWords(static_cast<std::uint8_t>(code & ~wire::kExceptionBit)) +
               ": exception " + exceptionInWords(count);
    }
    const wire::FunctionCode* function = wire::findFunctionCode(code);
    if (!function) {
        return words + QString("function %1, %2 bytes").arg(code).arg(size);
    }
    if (function->write) {
        return words + QString("%1: %2 done").arg(function->words).arg(count);
    }
    QStringList elements;
    std::size_t offset = wire::kHeaderBytes;
    for (; offset + function->entryBytes() <= size; offset += function->entryBytes()) {
        const std::uint32_t value =
            wire::bigEndianNumber(bytes + offset + wire::kAddressBytes, function->valueBytes);
        elements.append(pair(names, wire::bigEndian32(bytes + offset), function->valueBits, value));
    }
    if (offset < size) {
        elements.append(QString("and %1 bytes").arg(size - offset));
    }
    return words + function->words + ": " + elements.join(", ");
}

} // namespace tavmir::controller
