// Numbers in as few bytes as they need, small ones in one.
#ifndef TAVMIR_PAGE_PACKED_NUMBERS_H
#define TAVMIR_PAGE_PACKED_NUMBERS_H

#include <QtCore/QtGlobal>

#include <string>

namespace tavmir::host
{

// Seven bits a byte, the lowest first; the top bit says that more follow.
inline void appendPacked(std::string& bytes, quint64 number)
{
    for (; number >= 0x80; number >>= 7) {
        bytes += static_cast<char>((number & 0x7F) | 0x80);
    }
    bytes += static_cast<char>(number);
}

// Takes one that was appended, and leaves `byte` behind it.
inline quint64 takePacked(const char*& byte)
{
    quint64 number = 0;
    for (int shift = 0;; shift += 7) {
        const auto part = static_cast<unsigned char>(*byte++);
        number |= static_cast<quint64>(part & 0x7F) << shift;
        if (part < 0x80) {
            return number;
        }
    }
}

// Small differences as small numbers, whatever their sign.
inline quint32 folded(quint32 difference)
{
    return difference << 1 ^ (difference >> 31 != 0 ? 0xFFFFFFFF : 0);
}

inline quint32 unfolded(quint32 number)
{
    return number >> 1 ^ ((number & 1) != 0 ? 0xFFFFFFFF : 0);
}

} // namespace tavmir::host

#endif
