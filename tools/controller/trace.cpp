#include "trace.h"

#include "frame_layout.h"

#include <QtCore/QStringList>

namespace tavmir::controller
{

namespace
{

QString functionInWords(std::uint8_t code)
{
    const FunctionCode* function = findFunctionCode(code);
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
    if (reply.size() < kHeaderBytes)
        return QStringLiteral("%1 bytes").arg(reply.size());
    const std::uint8_t code = byteAt(reply, kFunctionOffset);
    const std::uint8_t count = byteAt(reply, kCountOffset);
    const QString words =
        start(bigEndian16(reply, kTransactionOffset), byteAt(reply, kStationOffset));
    if ((code & kExceptionBit) != 0) {
        return words + functionInWords(static_cast<std::uint8_t>(code & ~kExceptionBit)) +
               QStringLiteral(": exception ") + exceptionInWords(count);
    }
    const FunctionCode* function = findFunctionCode(code);
    if (!function)
        return words + QStringLiteral("function %1, %2 bytes").arg(code).arg(reply.size());
    if (function->write)
        return words + QStringLiteral("%1: %2 done").arg(function->words).arg(count);
    QStringList elements;
    int offset = kHeaderBytes;
    for (; offset + function->entryBytes() <= reply.size(); offset += function->entryBytes()) {
        std::uint32_t value = 0;
        for (int i = 0; i < function->valueBytes; ++i)
            value = value << 8 | byteAt(reply, offset + kAddressBytes + i);
        elements.append(pair(names, bigEndian32(reply, offset), function->valueBits, value));
    }
    if (offset < reply.size())
        elements.append(QStringLiteral("and %1 bytes").arg(reply.size() - offset));
    return words + QLatin1String(function->words) + QStringLiteral(": ") +
           elements.join(QStringLiteral(", "));
}

} // namespace tavmir::controller
