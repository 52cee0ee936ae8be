// What lies in front of an IP packet in a capture: Ethernet, Linux cooked (both kinds), loopback or
// nothing; VLAN tags.
#ifndef TAVMIR_DIAGNOSE_LINK_HEADER_H
#define TAVMIR_DIAGNOSE_LINK_HEADER_H

#include <cstddef>

namespace tavmir::diagnose
{

struct CapturedPacket;

struct IpBytes {
    const unsigned char* bytes = nullptr;
    std::size_t size = 0; // 0: no IP packet
};

// As libpcap numbers them.
bool knowsLinkType(int linkType);

IpBytes ipBytesOf(const CapturedPacket& packet);

} // namespace tavmir::diagnose

#endif
