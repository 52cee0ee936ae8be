// Frames written down byte by byte for the tests of the wire.
#ifndef TAVMIR_TESTS_WIRE_FRAMES_H
#define TAVMIR_TESTS_WIRE_FRAMES_H

#include "wire/frame_decoder.h"

#include <cstddef>
#include <string>

namespace tavmir::test
{

inline const unsigned char* bytesOf(const std::string& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

// Bytes from hexadecimal digits; blanks are for the reader.
inline std::string fromHex(const std::string& digits)
{
    std::string bytes;
    std::string pair;
    for (const char digit : digits) {
        if (digit == ' ') {
            continue;
        }
        pair += digit;
        if (pair.size() == 2) {
            bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
            pair.clear();
        }
    }
    return bytes;
}

// Any frame: the header with a true length, then `data`.
inline std::string frameOf(int transactionId, int station, int function, int count,
                           const std::string& data = std::string())
{
    const auto length = static_cast<int>(data.size()) + 3;
    std::string bytes;
    for (const int byte :
         {transactionId >> 8, transactionId, 0, 0, length >> 8, length, station, function, count}) {
        bytes += static_cast<char>(byte & 0xFF);
    }
    return bytes + data;
}

inline wire::FrameView view(const std::string& bytes)
{
    return wire::viewFrame(bytesOf(bytes), bytes.size());
}

inline std::string copyOf(const wire::FrameView& frame)
{
    return std::string(reinterpret_cast<const char*>(frame.bytes), frame.size);
}

} // namespace tavmir::test

#endif
