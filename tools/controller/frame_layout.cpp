#include "frame_layout.h"

namespace tavmir::controller
{

namespace
{
constexpr FunctionCode kFunctionCodes[] = {
    {100, false, 1, 1, "read bits"},          {101, true, 1, 1, "write bits"},
    {102, false, 16, 2, "read words"},        {103, true, 16, 2, "write words"},
    {108, false, 32, 4, "read double words"}, {109, true, 32, 4, "write double words"},
};
} // namespace

const FunctionCode* findFunctionCode(std::uint8_t code)
{
    for (const FunctionCode& function : kFunctionCodes) {
        if (function.code == code)
            return &function;
    }
    return nullptr;
}

std::uint8_t byteAt(const QByteArray& bytes, int offset)
{
    return static_cast<std::uint8_t>(bytes.at(offset));
}

std::uint16_t bigEndian16(const QByteArray& bytes, int offset)
{
    return static_cast<std::uint16_t>(byteAt(bytes, offset) << 8 | byteAt(bytes, offset + 1));
}

std::uint32_t bigEndian32(const QByteArray& bytes, int offset)
{
    return static_cast<std::uint32_t>(bigEndian16(bytes, offset)) << 16 |
           bigEndian16(bytes, offset + 2);
}

void appendByte(QByteArray& bytes, std::uint32_t value)
{
    bytes.append(static_cast<char>(static_cast<std::uint8_t>(value & 0xFF)));
}

void appendBigEndian(QByteArray& bytes, std::uint32_t value, int byteCount)
{
    for (int i = byteCount - 1; i >= 0; --i)
        appendByte(bytes, value >> (8 * i));
}

void putBigEndian16(QByteArray& bytes, int offset, std::uint16_t value)
{
    bytes[offset] = static_cast<char>(static_cast<std::uint8_t>(value >> 8));
    bytes[offset + 1] = static_cast<char>(static_cast<std::uint8_t>(value & 0xFF));
}

} // namespace tavmir::controller
