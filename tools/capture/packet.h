// A packet of a capture, and who takes packets.
#ifndef TAVMIR_CAPTURE_PACKET_H
#define TAVMIR_CAPTURE_PACKET_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tavmir
{
namespace capture
{

typedef std::vector<unsigned char> Bytes;

struct Packet {
    std::int64_t wallNs = 0; // since 1970, UTC
    const unsigned char* bytes = nullptr;
    std::size_t size = 0;
    bool isOutbound = false; // sent by the program that captures
    std::string comment;     // empty: nothing was wrong
};

class PacketSink
{
public:
    virtual ~PacketSink() = default;
    // Keeps no reference.
    virtual void take(const Packet& packet) = 0;
};

} // namespace capture
} // namespace tavmir

#endif
