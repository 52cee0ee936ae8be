// Big-endian fields of frames and replies. Private.
#ifndef TAVMIR_CORE_BIG_ENDIAN_H
#define TAVMIR_CORE_BIG_ENDIAN_H

#include <QtCore/QtGlobal>

namespace tavmir
{

inline void putBigEndian16(unsigned char* at, quint16 value)
{
    at[0] = static_cast<unsigned char>(value >> 8);
    at[1] = static_cast<unsigned char>(value & 0xFF);
}

inline void putBigEndian32(unsigned char* at, quint32 value)
{
    at[0] = static_cast<unsigned char>(value >> 24);
    at[1] = static_cast<unsigned char>((value >> 16) & 0xFF);
    at[2] = static_cast<unsigned char>((value >> 8) & 0xFF);
    at[3] = static_cast<unsigned char>(value & 0xFF);
}

// The value of sizeof(Value) bytes, 1, 2 or 4.
template <typename Value> inline Value getBigEndian(const unsigned char* at)
{
    quint32 value = 0;
    for (unsigned i = 0; i < sizeof(Value); ++i) {
        value = (value << 8) | at[i];
    }
    return static_cast<Value>(value);
}

} // namespace tavmir

#endif
