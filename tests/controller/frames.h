// Request frames as the driver sends them, written down byte by byte for the tests.
#ifndef TAVMIR_TESTS_CONTROLLER_FRAMES_H
#define TAVMIR_TESTS_CONTROLLER_FRAMES_H

#include <QtCore/QByteArray>

#include <cstdint>
#include <utility>
#include <vector>

namespace tavmir::test
{

// Bytes from hexadecimal digits; blanks are for the reader.
inline QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

inline QByteArray bigEndian(std::uint32_t value, int byteCount)
{
    QByteArray bytes;
    for (int i = byteCount - 1; i >= 0; --i) {
        bytes.append(static_cast<char>(value >> (8 * i) & 0xFF));
    }
    return bytes;
}

// Any frame: the header with a true length, then `data`.
inline QByteArray frame(int transactionId, int station, int function, int count,
                        const QByteArray& data = QByteArray())
{
    QByteArray bytes = bigEndian(static_cast<std::uint32_t>(transactionId), 2);
    bytes += bigEndian(0, 2);
    bytes += bigEndian(static_cast<std::uint32_t>(3 + data.size()), 2);
    bytes += bigEndian(static_cast<std::uint32_t>(station), 1);
    bytes += bigEndian(static_cast<std::uint32_t>(function), 1);
    bytes += bigEndian(static_cast<std::uint32_t>(count), 1);
    return bytes + data;
}

inline QByteArray readFrame(int transactionId, int station, int function,
                            const std::vector<std::uint32_t>& addresses)
{
    QByteArray data;
    for (const std::uint32_t address : addresses) {
        data += bigEndian(address, 4);
    }
    return frame(transactionId, station, function, static_cast<int>(addresses.size()), data);
}

// Each element: its address and its value bytes in the order in which they are sent.
inline QByteArray writeFrame(int transactionId, int station, int function,
                             const std::vector<std::pair<std::uint32_t, QByteArray>>& elements)
{
    QByteArray data;
    for (const auto& [address, value] : elements) {
        data += bigEndian(address, 4) + value;
    }
    return frame(transactionId, station, function, static_cast<int>(elements.size()), data);
}

} // namespace tavmir::test

#endif
