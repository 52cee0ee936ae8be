// libtins reads the packets. It is given TCP alone, so that its readers of other protocols see no
// bytes of anybody.
#include "segment.h"

#include "wire/frame_layout.h"

#include <tins/exceptions.h>
#include <tins/ip.h>
#include <tins/ipv6.h>
#include <tins/rawpdu.h>
#include <tins/tcp.h>

#include <algorithm>
#include <exception>

namespace tavmir::diagnose
{

namespace
{

constexpr unsigned kTcp = 6;
constexpr std::size_t kIp4Bytes = 20;
constexpr std::size_t kIp6Bytes = 40;
constexpr unsigned kFragmentBits = 0x3FFF; // more follow, or not the first

//   wholeSize  of the IP packet as its header says; 0: it does not
bool takeTcp(const Tins::TCP* tcp, const IpBytes& packet, std::size_t wholeSize, Segment& segment)
{
    if (tcp == nullptr) {
        return false;
    }
    segment.from.port = tcp->sport();
    segment.to.port = tcp->dport();
    segment.sequence = tcp->seq();
    segment.acknowledged = tcp->ack_seq();
    segment.syn = tcp->get_flag(Tins::TCP::SYN) != 0;
    segment.ack = tcp->get_flag(Tins::TCP::ACK) != 0;
    segment.fin = tcp->get_flag(Tins::TCP::FIN) != 0;
    segment.rst = tcp->get_flag(Tins::TCP::RST) != 0;
    const auto* raw = dynamic_cast<const Tins::RawPDU*>(tcp->inner_pdu());
    segment.bytes = raw != nullptr ? raw->payload() : std::vector<std::uint8_t>();
    segment.notKept = std::max(wholeSize, packet.size) - packet.size;
    return true;
}

bool readFourth(const IpBytes& packet, Segment& segment)
{
    if (packet.size < kIp4Bytes || packet.bytes[9] != kTcp ||
        (wire::bigEndian16(packet.bytes + 6) & kFragmentBits) != 0) {
        return false;
    }
    const Tins::IP ip(packet.bytes, static_cast<std::uint32_t>(packet.size));
    segment.from.address = ip.src_addr().to_string();
    segment.to.address = ip.dst_addr().to_string();
    return takeTcp(ip.find_pdu<Tins::TCP>(), packet, ip.tot_len(), segment);
}

bool readSixth(const IpBytes& packet, Segment& segment)
{
    if (packet.size < kIp6Bytes || packet.bytes[6] != kTcp) {
        return false; // headers in between are not for those who talk to a controller
    }
    const Tins::IPv6 ip(packet.bytes, static_cast<std::uint32_t>(packet.size));
    segment.from.address = ip.src_addr().to_string();
    segment.to.address = ip.dst_addr().to_string();
    const std::size_t said = ip.payload_length();
    return takeTcp(ip.find_pdu<Tins::TCP>(), packet, said == 0 ? 0 : kIp6Bytes + said, segment);
}

} // namespace

bool readSegment(const IpBytes& packet, Segment& segment)
{
    if (packet.size == 0) {
        return false;
    }
    try {
        switch (packet.bytes[0] >> 4) {
        case 4:
            return readFourth(packet, segment);
        case 6:
            return readSixth(packet, segment);
        default:
            return false;
        }
    } catch (const std::exception&) { // what libtins says of a packet that makes no sense
        return false;
    }
}

} // namespace tavmir::diagnose
