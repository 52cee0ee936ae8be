// Numbers and floats as bytes, least significant first. Private to this folder.
#ifndef TAVMIR_PROJECT_VALUE_BYTES_H
#define TAVMIR_PROJECT_VALUE_BYTES_H

#include "address_resolver.h"

#include <QtCore/QByteArray>

#include <cstring>

namespace tavmir::project
{

// Bytes that a value takes in the driver's calls.
inline int valueBytes(const Element& element)
{
    if (element.isBit()) {
        return 1;
    }
    return memoryBits(element) / 8;
}

// The number in the first `width` (at most four) bytes; missing bytes count as zero.
inline quint32 numberFrom(const QByteArray& bytes, int width)
{
    quint32 number = 0;
    for (int i = 0; i < width && i < bytes.size(); ++i) {
        number |= static_cast<quint32>(static_cast<unsigned char>(bytes.at(i))) << (8 * i);
    }
    return number;
}

inline QByteArray bytesOf(quint32 number, int width)
{
    QByteArray bytes(width, '\0');
    for (int i = 0; i < width; ++i) {
        bytes[i] = static_cast<char>((number >> (8 * i)) & 0xFF);
    }
    return bytes;
}

inline quint32 floatBits(float value)
{
    quint32 bits = 0;
    static_assert(sizeof bits == sizeof value, "a float has 32 bits");
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

inline float floatOf(quint32 bits)
{
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace tavmir::project

#endif
