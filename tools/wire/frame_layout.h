// How the controller protocol's frames are laid out, and which function codes it knows.
//
//   offset  0  1 | 2  3 | 4  5 | 6       | 7        | 8     | 9 …
//          trans- | 0  0 | bytes| station | function | count | entries
//          action |      | after|         | code     |       |
//
// Numbers of the header and entry addresses are most significant byte first. An entry is
//
//   of a read request    address (4)
//   of a read reply      address (4), value most significant byte first
//   of a write request   address (4), value least significant byte first
//
// A write's reply ends with the count. In an exception reply the function code has its top bit
// set, and the exception code stands in the place of the count.
#ifndef TAVMIR_WIRE_FRAME_LAYOUT_H
#define TAVMIR_WIRE_FRAME_LAYOUT_H

#include <cstddef>
#include <cstdint>

namespace tavmir
{
namespace wire
{

constexpr std::size_t kTransactionOffset = 0;
constexpr std::size_t kProtocolOffset = 2;
constexpr std::size_t kLengthOffset = 4;
constexpr std::size_t kStationOffset = 6;
constexpr std::size_t kFunctionOffset = 7;
constexpr std::size_t kCountOffset = 8;
constexpr std::size_t kHeaderBytes = 9;
constexpr std::size_t kLengthEnd = 6; // the length field counts the bytes from here on
constexpr std::size_t kAddressBytes = 4;

constexpr std::uint8_t kExceptionBit = 0x80;

// The three classes of elements, in the order in which the driver polls them.
enum class ElementClass { bits, words, doubleWords };

// One function code: what it does and how wide its elements are.
struct FunctionCode {
    std::uint8_t code;
    bool write;
    ElementClass elements;
    int valueBits;
    std::size_t valueBytes;
    const char* words;

    std::size_t entryBytes() const { return kAddressBytes + valueBytes; }
    std::size_t requestEntryBytes() const { return write ? entryBytes() : kAddressBytes; }
};

// The six codes, reads and writes of 1, 16 and 32 bits; null for any other.
const FunctionCode* findFunctionCode(std::uint8_t code);

// "word", "words"; what one element and what several of a class are called.
const char* elementName(ElementClass elements);
const char* elementsName(ElementClass elements);

// What an exception code means: "illegal data address"; null for one that is not known.
const char* exceptionWords(std::uint8_t code);

// Each expects the bytes to be there.
inline std::uint16_t bigEndian16(const unsigned char* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

inline std::uint32_t bigEndian32(const unsigned char* bytes)
{
    return static_cast<std::uint32_t>(bigEndian16(bytes)) << 16 | bigEndian16(bytes + 2);
}

// 1, 2 or 4 bytes.
inline std::uint32_t bigEndianNumber(const unsigned char* bytes, std::size_t count)
{
    return count == 1 ? bytes[0] : count == 2 ? bigEndian16(bytes) : bigEndian32(bytes);
}

// 1 to 4 bytes.
inline std::uint32_t littleEndianNumber(const unsigned char* bytes, std::size_t count)
{
    std::uint32_t number = 0;
    for (std::size_t i = count; i > 0; --i) {
        number = number << 8 | bytes[i - 1];
    }
    return number;
}

} // namespace wire
} // namespace tavmir

#endif
