// A TCP segment out of an IP packet of either version. Any bytes are safe.
#ifndef TAVMIR_DIAGNOSE_SEGMENT_H
#define TAVMIR_DIAGNOSE_SEGMENT_H

#include "link_header.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tavmir::diagnose
{

struct TcpEnd {
    std::string address;
    std::uint16_t port = 0;

    bool operator==(const TcpEnd& other) const
    {
        return port == other.port && address == other.address;
    }
    bool operator<(const TcpEnd& other) const
    {
        return port != other.port ? port < other.port : address < other.address;
    }
};

struct Segment {
    TcpEnd from;
    TcpEnd to;
    std::uint32_t sequence = 0;
    std::uint32_t acknowledged = 0;
    bool syn = false;
    bool ack = false;
    bool fin = false;
    bool rst = false;
    std::vector<std::uint8_t> bytes; // as many as the capture kept of them
    std::size_t notKept = 0;
};

// False: it holds no whole TCP header, or is a part of a packet.
bool readSegment(const IpBytes& packet, Segment& segment);

} // namespace tavmir::diagnose

#endif
