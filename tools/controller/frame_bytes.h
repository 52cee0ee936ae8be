// Numbers in and out of the byte arrays that the controller keeps its frames in.
#ifndef TAVMIR_CONTROLLER_FRAME_BYTES_H
#define TAVMIR_CONTROLLER_FRAME_BYTES_H

#include <QtCore/QByteArray>

#include <cstddef>
#include <cstdint>

namespace tavmir::controller
{

inline const unsigned char* bytesOf(const QByteArray& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

inline std::size_t sizeOf(const QByteArray& bytes)
{
    return static_cast<std::size_t>(bytes.size());
}

// Expects the byte to be there.
std::uint8_t byteAt(const QByteArray& bytes, int offset);

void appendByte(QByteArray& bytes, std::uint32_t value);
void appendBigEndian(QByteArray& bytes, std::uint32_t value, std::size_t byteCount);
// Expects the bytes to be there.
void putBigEndian16(QByteArray& bytes, std::size_t offset, std::uint16_t value);

} // namespace tavmir::controller

#endif
