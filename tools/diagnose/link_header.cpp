// Link headers. Done here rather than by libtins, which does not know the second Linux cooked kind:
// that is what a capture on all interfaces has.
#include "link_header.h"

#include "capture_reader.h"

#include "wire/frame_layout.h"

#include <pcap/dlt.h>

namespace tavmir::diagnose
{

namespace
{

struct LinkType {
    int number;
    std::size_t headerBytes;
    int protocolAt; // of the two bytes that say what follows; -1: the packet itself says it
};

const LinkType kLinkTypes[] = {
    {DLT_EN10MB, 14, 12}, {DLT_LINUX_SLL, 16, 14}, {DLT_LINUX_SLL2, 20, 0}, {DLT_NULL, 4, -1},
    {DLT_LOOP, 4, -1},    {DLT_RAW, 0, -1},        {DLT_IPV4, 0, -1},       {DLT_IPV6, 0, -1},
};

constexpr unsigned kIp4 = 0x0800;
constexpr unsigned kIp6 = 0x86DD;
constexpr std::size_t kTagBytes = 4; // two of the tag, two that say what follows it

const LinkType* find(int number)
{
    for (const LinkType& type : kLinkTypes) {
        if (type.number == number) {
            return &type;
        }
    }
    return nullptr;
}

bool isTag(unsigned protocol)
{
    return protocol == 0x8100 || protocol == 0x88A8 || protocol == 0x9100;
}

} // namespace

bool knowsLinkType(int linkType)
{
    return find(linkType) != nullptr;
}

IpBytes ipBytesOf(const CapturedPacket& packet)
{
    const LinkType* type = find(packet.linkType);
    if (type == nullptr || packet.size <= type->headerBytes) {
        return IpBytes();
    }
    std::size_t offset = type->headerBytes;
    if (type->protocolAt >= 0) {
        unsigned protocol = wire::bigEndian16(packet.bytes + type->protocolAt);
        while (isTag(protocol) && packet.size > offset + kTagBytes) {
            protocol = wire::bigEndian16(packet.bytes + offset + 2);
            offset += kTagBytes;
        }
        if (protocol != kIp4 && protocol != kIp6) {
            return IpBytes();
        }
    }
    return {packet.bytes + offset, packet.size - offset};
}

} // namespace tavmir::diagnose
