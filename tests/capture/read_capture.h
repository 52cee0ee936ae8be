// A pcapng file taken apart again, byte by byte and by nothing of the writer's own.
#ifndef TAVMIR_TESTS_CAPTURE_READ_CAPTURE_H
#define TAVMIR_TESTS_CAPTURE_READ_CAPTURE_H

#include "capture/packet.h"

#include <map>
#include <string>
#include <vector>

namespace tavmir::test
{

using capture::Bytes;

struct ReadBlock {
    std::uint32_t type = 0;
    Bytes body; // between the two sizes
};

// Throws std::runtime_error when the bytes are no row of whole blocks.
std::vector<ReadBlock> blocksOf(const Bytes& file);

// Options by code, from an offset of a block's body on.
std::map<int, std::string> optionsOf(const ReadBlock& block, std::size_t offset);

// A packet with its IP and TCP headers taken apart. Throws where they are wrong, checksums
// included.
struct ReadPacket {
    std::int64_t wallNs = 0;
    bool isOutbound = false;
    std::string comment;
    int version = 0;
    std::string from; // address as "127.0.0.1" or "::1"
    std::string to;
    int fromPort = 0;
    int toPort = 0;
    std::uint32_t sequence = 0;
    std::uint32_t acknowledgement = 0;
    std::string flags; // of "SAFRP", as they are set
    std::string payload;
};

ReadPacket packetOf(const Bytes& ip);
// Of a whole file: those of its packet blocks.
std::vector<ReadPacket> packetsOf(const Bytes& file);

// Throws when it cannot be read.
Bytes fileBytes(const std::string& path);

} // namespace tavmir::test

#endif
