// How the controller protocol's frames are laid out, and which function codes it knows.
//
//   offset  0  1 | 2  3 | 4  5 | 6       | 7        | 8     | 9 …
//          trans- | 0  0 | bytes| station | function | count | entries
//          action |      | after|         | code     |       |
//
// Numbers in the header and entry addresses are most significant byte first. A read request's
// entry is a 4-byte address; a write request's and a read reply's entry is an address and a value.
#ifndef TAVMIR_CONTROLLER_FRAME_LAYOUT_H
#define TAVMIR_CONTROLLER_FRAME_LAYOUT_H

#include <QtCore/QByteArray>

#include <cstdint>

namespace tavmir::controller
{

constexpr int kTransactionOffset = 0;
constexpr int kProtocolOffset = 2;
constexpr int kLengthOffset = 4;
constexpr int kStationOffset = 6;
constexpr int kFunctionOffset = 7;
constexpr int kCountOffset = 8;
constexpr int kHeaderBytes = 9;
constexpr int kBytesBeforeLengthCounts = 6; // the length field counts what follows it
constexpr int kAddressBytes = 4;

// The longest frame of Modbus TCP; requests and replies both stay within it.
constexpr int kMostFrameBytes = 260;
constexpr int kLeastLength = 2; // station and function code
constexpr int kMostLength = kMostFrameBytes - kBytesBeforeLengthCounts;

constexpr std::uint8_t kExceptionBit = 0x80;
constexpr std::uint8_t kUnknownFunction = 1;
constexpr std::uint8_t kBadCount = 3;
constexpr std::uint8_t kDeviceFailure = 4;

// One function code: what it does and how wide its elements are.
struct FunctionCode {
    std::uint8_t code;
    bool write;
    int valueBits;
    int valueBytes;
    const char* words;

    int entryBytes() const { return kAddressBytes + valueBytes; }
    int requestEntryBytes() const { return write ? entryBytes() : kAddressBytes; }
    // The most elements of which both the request and the reply fit into one frame.
    int mostElements() const { return (kMostFrameBytes - kHeaderBytes) / entryBytes(); }
};

// The six codes, reads and writes of 1, 16 and 32 bits; null for any other.
const FunctionCode* findFunctionCode(std::uint8_t code);

// Each expects the bytes to be there.
std::uint8_t byteAt(const QByteArray& bytes, int offset);
std::uint16_t bigEndian16(const QByteArray& bytes, int offset);
std::uint32_t bigEndian32(const QByteArray& bytes, int offset);

void appendByte(QByteArray& bytes, std::uint32_t value);
void appendBigEndian(QByteArray& bytes, std::uint32_t value, int byteCount);
void putBigEndian16(QByteArray& bytes, int offset, std::uint16_t value);

} // namespace tavmir::controller

#endif
