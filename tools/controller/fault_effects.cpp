#include "fault_effects.h"

#include "frame_bytes.h"

#include "wire/frame_layout.h"

namespace tavmir::controller
{

namespace
{

constexpr int kHeaderBytes = wire::kHeaderBytes;

constexpr int kFunctionAt = wire::kFunctionOffset;

// Which bits of a value change: at least one.
std::uint32_t changeOf(const wire::FunctionCode& function, SeededRandom& random)
{
    const std::uint32_t change = std::uint32_t{1} << random.between(0, function.valueBits - 1);
    const std::uint64_t mask = (std::uint64_t{1} << function.valueBits) - 1;
    return change | (static_cast<std::uint32_t>(random.between(0, 0x7FFFFFFF)) &
                     static_cast<std::uint32_t>(mask));
}

QByteArray withTrueLength(QByteArray frame)
{
    const std::size_t length = sizeOf(frame) - wire::kLengthEnd;
    putBigEndian16(frame, wire::kLengthOffset, static_cast<std::uint16_t>(length));
    return frame;
}

} // namespace

QByteArray truncated(const QByteArray& reply, SeededRandom& random)
{
    return withTrueLength(reply.left(random.between(kHeaderBytes - 1, reply.size() - 1)));
}

QByteArray oversized(const QByteArray& reply, SeededRandom& random)
{
    QByteArray longer = reply;
    for (int added = random.between(1, kMostBytesAdded); added > 0; --added) {
        appendByte(longer, static_cast<std::uint32_t>(random.between(0, 255)));
    }
    return withTrueLength(longer);
}

QByteArray cutShort(const QByteArray& reply, SeededRandom& random)
{
    return reply.left(random.between(1, reply.size() - 1));
}

QByteArray corrupted(const QByteArray& reply, SeededRandom& random)
{
    QByteArray changed = reply;
    const int offset = random.between(0, kHeaderBytes - 1);
    changed[offset] = static_cast<char>(byteAt(reply, offset) ^ 0x80);
    return changed;
}

QByteArray garbled(const QByteArray& reply, SeededRandom& random)
{
    const wire::FunctionCode* function = wire::findFunctionCode(byteAt(reply, kFunctionAt));
    if (!function || function->write || reply.size() <= kHeaderBytes) {
        return reply;
    }
    const int entryBytes = static_cast<int>(function->entryBytes());
    const int entry = random.between(0, (reply.size() - kHeaderBytes) / entryBytes - 1);
    const std::uint32_t change = changeOf(*function, random);
    QByteArray changed = reply;
    const int end = kHeaderBytes + (entry + 1) * entryBytes;
    for (int i = 0; i < static_cast<int>(function->valueBytes); ++i) {
        const int at = end - 1 - i;
        changed[at] = static_cast<char>(byteAt(reply, at) ^ (change >> (8 * i) & 0xFF));
    }
    return changed;
}

void garble(Request& request, SeededRandom& random)
{
    if (request.elements.empty() || !request.functionCode->write) {
        return;
    }
    const int last = static_cast<int>(request.elements.size()) - 1;
    BitValue& element = request.elements[static_cast<std::size_t>(random.between(0, last))];
    element.value ^= changeOf(*request.functionCode, random);
}

} // namespace tavmir::controller
