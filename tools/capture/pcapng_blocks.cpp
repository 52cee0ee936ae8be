// Blocks, option by option.
#include "pcapng_blocks.h"

#include <sys/utsname.h>

#include <algorithm>

namespace tavmir
{
namespace capture
{

namespace
{

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr std::uint32_t kInterface = 1;
constexpr std::uint32_t kPacket = 6;
constexpr std::uint16_t kRawIp = 101;
constexpr std::uint32_t kLongestPacket = 262144;

constexpr std::uint16_t kEnd = 0;
constexpr std::uint16_t kComment = 1;
constexpr std::uint16_t kHardware = 2; // of a section
constexpr std::uint16_t kSystem = 3;
constexpr std::uint16_t kApplication = 4;
constexpr std::uint16_t kName = 2; // of an interface
constexpr std::uint16_t kTimeResolution = 9;
constexpr unsigned char kNanoseconds = 9;
constexpr std::uint16_t kFlags = 2; // of a packet
constexpr std::uint32_t kInbound = 1;
constexpr std::uint32_t kOutbound = 2;

constexpr std::size_t kMostInAnOption = 4096;

void put(std::uint64_t number, std::size_t count, Bytes& bytes)
{
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<unsigned char>(number >> (8 * i)));
    }
}

void put16(std::uint16_t number, Bytes& bytes)
{
    put(number, 2, bytes);
}

void put32(std::uint32_t number, Bytes& bytes)
{
    put(number, 4, bytes);
}

void putPadded(const unsigned char* value, std::size_t size, Bytes& bytes)
{
    bytes.insert(bytes.end(), value, value + size);
    bytes.insert(bytes.end(), (4 - size % 4) % 4, 0);
}

void putOption(std::uint16_t code, const unsigned char* value, std::size_t size, Bytes& bytes)
{
    put16(code, bytes);
    put16(static_cast<std::uint16_t>(size), bytes);
    putPadded(value, size, bytes);
}

void putText(std::uint16_t code, const std::string& text, Bytes& bytes)
{
    if (!text.empty()) {
        putOption(code, reinterpret_cast<const unsigned char*>(text.data()),
                  std::min(text.size(), kMostInAnOption), bytes);
    }
}

std::size_t begin(std::uint32_t type, Bytes& bytes)
{
    const std::size_t start = bytes.size();
    put32(type, bytes);
    put32(0, bytes);
    return start;
}

// Puts the size where it belongs: behind the type and at the end.
void end(std::size_t start, Bytes& bytes)
{
    put32(0, bytes);
    const std::size_t size = bytes.size() - start;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto byte = static_cast<unsigned char>(size >> (8 * i));
        bytes[start + 4 + i] = byte;
        bytes[bytes.size() - 4 + i] = byte;
    }
}

} // namespace

Origin originHere(const std::string& application, const std::string& line)
{
    Origin origin;
    utsname names;
    if (::uname(&names) == 0) {
        origin.hardware = names.machine;
        origin.system = std::string(names.sysname) + " " + names.release;
    }
    origin.application = application;
    origin.line = line;
    return origin;
}

void appendHeader(const Origin& origin, Bytes& bytes)
{
    const std::size_t section = begin(kSectionHeader, bytes);
    put32(kByteOrderMagic, bytes);
    put16(1, bytes);
    put16(0, bytes);
    put(~std::uint64_t(0), 8, bytes); // its length is not told: it grows
    putText(kHardware, origin.hardware, bytes);
    putText(kSystem, origin.system, bytes);
    putText(kApplication, origin.application, bytes);
    put32(kEnd, bytes);
    end(section, bytes);

    const std::size_t interface = begin(kInterface, bytes);
    put16(kRawIp, bytes);
    put16(0, bytes);
    put32(kLongestPacket, bytes);
    putText(kName, origin.line, bytes);
    putOption(kTimeResolution, &kNanoseconds, 1, bytes);
    put32(kEnd, bytes);
    end(interface, bytes);
}

void appendPacket(const Packet& packet, Bytes& bytes)
{
    const auto time = static_cast<std::uint64_t>(packet.wallNs);
    const std::size_t start = begin(kPacket, bytes);
    put32(0, bytes);
    put32(static_cast<std::uint32_t>(time >> 32), bytes);
    put32(static_cast<std::uint32_t>(time), bytes);
    put32(static_cast<std::uint32_t>(packet.size), bytes);
    put32(static_cast<std::uint32_t>(packet.size), bytes);
    putPadded(packet.bytes, packet.size, bytes);
    putText(kComment, packet.comment, bytes);
    put16(kFlags, bytes);
    put16(4, bytes);
    put32(packet.isOutbound ? kOutbound : kInbound, bytes);
    put32(kEnd, bytes);
    end(start, bytes);
}

} // namespace capture
} // namespace tavmir
