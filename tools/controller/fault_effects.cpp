#include "fault_effects.h"

#include "frame_bytes.h"

#include "wire/frame_layout.h"

namespace tavmir::controller
{

namespace
{

constexpr int kHeaderBytes = wire::kHeaderBytes;

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

} // namespace tavmir::controller
