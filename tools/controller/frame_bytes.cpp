#include "frame_bytes.h"

namespace tavmir::controller
{

std::uint8_t byteAt(const QByteArray& bytes, int offset)
{
    return static_cast<std::uint8_t>(bytes.at(offset));
}

void appendByte(QByteArray& bytes, std::uint32_t value)
{
    bytes.append(static_cast<char>(static_cast<std::uint8_t>(value & 0xFF)));
}

void appendBigEndian(QByteArray& bytes, std::uint32_t value, std::size_t byteCount)
{
    for (std::size_t i = byteCount; i > 0; --i) {
        appendByte(bytes, value >> (8 * (i - 1)));
    }
}

void putBigEndian16(QByteArray& bytes, std::size_t offset, std::uint16_t value)
{
    const int at = static_cast<int>(offset);
    bytes[at] = static_cast<char>(static_cast<std::uint8_t>(value >> 8));
    bytes[at + 1] = static_cast<char>(static_cast<std::uint8_t>(value & 0xFF));
}

} // namespace tavmir::controller
