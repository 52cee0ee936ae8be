// Headers and checksums.
#include "tcp_conversation.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>

namespace tavmir
{
namespace capture
{

namespace
{

constexpr unsigned kFin = 0x01;
constexpr unsigned kSyn = 0x02;
constexpr unsigned kReset = 0x04;
constexpr unsigned kPush = 0x08;
constexpr unsigned kAck = 0x10;

constexpr std::size_t kFourthHeader = 20;
constexpr std::size_t kTcpHeader = 20;
constexpr std::size_t kSegmentSizeOption = 4;
constexpr std::size_t kTcpChecksumOffset = 16;
constexpr unsigned char kTcp = 6;
constexpr unsigned char kHops = 64;
constexpr std::uint16_t kWindow = 65535;
// What both IP versions can carry in one packet.
constexpr std::size_t kMostInASegment = 65535 - kFourthHeader - kTcpHeader;
// Without an answer from the other side; its acknowledgement comes alone then.
constexpr std::uint32_t kMostUnacknowledged = kWindow / 2;
// Sequence numbers begin by the clock, one every four microseconds.
constexpr std::int64_t kNsPerNumber = 4000;
constexpr std::uint32_t kOthersStart = 0x40000000;

void put16(std::uint32_t number, Bytes& bytes)
{
    bytes.push_back(static_cast<unsigned char>(number >> 8));
    bytes.push_back(static_cast<unsigned char>(number));
}

void put32(std::uint32_t number, Bytes& bytes)
{
    put16(number >> 16, bytes);
    put16(number, bytes);
}

std::uint32_t sumOf(const unsigned char* bytes, std::size_t size, std::uint32_t sum)
{
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        sum += static_cast<std::uint32_t>(bytes[i] << 8 | bytes[i + 1]);
    }
    return size % 2 == 0 ? sum : sum + static_cast<std::uint32_t>(bytes[size - 1] << 8);
}

std::uint16_t checksumOf(std::uint32_t sum)
{
    while (sum > 0xFFFF) {
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return static_cast<std::uint16_t>(~sum);
}

void setChecksum(std::uint16_t checksum, std::size_t offset, Bytes& bytes)
{
    bytes[offset] = static_cast<unsigned char>(checksum >> 8);
    bytes[offset + 1] = static_cast<unsigned char>(checksum);
}

} // namespace

TcpConversation::TcpConversation(const wire::Endpoint& own, const wire::Endpoint& other,
                                 std::int64_t wallNs, PacketSink& sink)
    : own_(own), other_(other), streams_(), sink_(sink)
{
    const auto start = static_cast<std::uint32_t>(wallNs / kNsPerNumber);
    for (const Side side : {Side::own, Side::other}) {
        const wire::Endpoint& end = side == Side::own ? own : other;
        Stream& stream = streamOf(side);
        stream.address = addressOf(end.host);
        stream.port = static_cast<std::uint16_t>(end.port);
        stream.next = side == Side::own ? start : start + kOthersStart;
        stream.acknowledged = stream.next;
    }
    // A packet has addresses of one kind; only one that is not known can differ.
    const bool isSixth = streams_[0].address.isSixth || streams_[1].address.isSixth;
    streams_[0].address.isSixth = streams_[1].address.isSixth = isSixth;
}

TcpConversation::Address TcpConversation::addressOf(const std::string& text)
{
    Address address = Address();
    const std::string plain = text.substr(0, text.find('%')); // without its interface
    if (::inet_pton(AF_INET, plain.c_str(), address.bytes) == 1) {
        return address;
    }
    address.isSixth = ::inet_pton(AF_INET6, plain.c_str(), address.bytes) == 1;
    static const unsigned char kMapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    if (address.isSixth && std::memcmp(address.bytes, kMapped, sizeof kMapped) == 0) {
        // What a socket of the sixth version calls an address of the fourth: so it is on the line.
        std::copy(address.bytes + 12, address.bytes + 16, address.bytes);
        address.isSixth = false;
    }
    return address;
}

void TcpConversation::opened(Side client, std::int64_t beganNs, std::int64_t endedNs,
                             const std::string& comment)
{
    const Side server = client == Side::own ? Side::other : Side::own;
    packet(client, kSyn, nullptr, 0, beganNs, comment);
    packet(server, kSyn | kAck, nullptr, 0, endedNs, std::string());
    packet(client, kAck, nullptr, 0, endedNs, std::string());
}

void TcpConversation::failed(bool refused, std::int64_t beganNs, std::int64_t endedNs,
                             const std::string& comment)
{
    packet(Side::own, kSyn, nullptr, 0, beganNs, comment);
    if (refused) {
        packet(Side::other, kReset | kAck, nullptr, 0, endedNs, std::string());
    }
}

void TcpConversation::data(Side from, const unsigned char* bytes, std::size_t size,
                           std::int64_t wallNs, const std::string& comment)
{
    for (std::size_t done = 0; done < size; done += kMostInASegment) {
        segment(from, bytes + done, std::min(kMostInASegment, size - done), wallNs,
                done == 0 ? comment : std::string());
    }
}

void TcpConversation::segment(Side from, const unsigned char* bytes, std::size_t size,
                              std::int64_t wallNs, const std::string& comment)
{
    const Stream& stream = streamOf(from);
    if (stream.next - stream.acknowledged + size > kMostUnacknowledged) {
        packet(from == Side::own ? Side::other : Side::own, kAck, nullptr, 0, wallNs,
               std::string());
    }
    packet(from, kPush | kAck, bytes, size, wallNs, comment);
}

void TcpConversation::closed(Side by, std::int64_t wallNs, const std::string& comment)
{
    packet(by, kFin | kAck, nullptr, 0, wallNs, comment);
    if (by == Side::other) {
        packet(Side::own, kFin | kAck, nullptr, 0, wallNs, std::string());
    }
    packet(Side::other, kAck, nullptr, 0, wallNs, std::string());
}

void TcpConversation::reset(Side by, std::int64_t wallNs, const std::string& comment)
{
    packet(by, kReset | kAck, nullptr, 0, wallNs, comment);
}

void TcpConversation::packet(Side from, unsigned flags, const unsigned char* bytes,
                             std::size_t size, std::int64_t wallNs, const std::string& comment)
{
    Stream& sender = streamOf(from);
    Stream& receiver = streamOf(from == Side::own ? Side::other : Side::own);
    const std::size_t options = (flags & kSyn) != 0 ? kSegmentSizeOption : 0;
    packet_.clear();
    putIpHeader(sender, receiver, kTcpHeader + options + size);
    const std::size_t tcpStart = packet_.size();
    putTcpHeader(sender, receiver, flags);
    if (size > 0) {
        packet_.insert(packet_.end(), bytes, bytes + size);
    }
    putTcpChecksum(sender, receiver, tcpStart);
    if ((flags & kAck) != 0) {
        receiver.acknowledged = receiver.next;
    }
    sender.next += static_cast<std::uint32_t>(size) + ((flags & (kSyn | kFin)) != 0 ? 1 : 0);
    ++sender.packets;

    Packet made;
    made.wallNs = wallNs;
    made.bytes = packet_.data();
    made.size = packet_.size();
    made.isOutbound = from == Side::own;
    made.comment = comment;
    sink_.take(made);
}

void TcpConversation::putIpHeader(const Stream& from, const Stream& to, std::size_t tcpBytes)
{
    if (from.address.isSixth) {
        putSixthHeader(from, to, tcpBytes);
    } else {
        putFourthHeader(from, to, tcpBytes);
    }
}

void TcpConversation::putFourthHeader(const Stream& from, const Stream& to, std::size_t tcpBytes)
{
    packet_.push_back(0x45); // version 4, a header of five words
    packet_.push_back(0);
    put16(static_cast<std::uint32_t>(kFourthHeader + tcpBytes), packet_);
    put16(from.packets, packet_);
    put16(0x4000, packet_); // not to be cut into pieces
    packet_.push_back(kHops);
    packet_.push_back(kTcp);
    put16(0, packet_);
    packet_.insert(packet_.end(), from.address.bytes, from.address.bytes + 4);
    packet_.insert(packet_.end(), to.address.bytes, to.address.bytes + 4);
    setChecksum(checksumOf(sumOf(packet_.data(), kFourthHeader, 0)), 10, packet_);
}

void TcpConversation::putSixthHeader(const Stream& from, const Stream& to, std::size_t tcpBytes)
{
    put32(0x60000000, packet_); // version 6
    put16(static_cast<std::uint32_t>(tcpBytes), packet_);
    packet_.push_back(kTcp);
    packet_.push_back(kHops);
    packet_.insert(packet_.end(), from.address.bytes, from.address.bytes + 16);
    packet_.insert(packet_.end(), to.address.bytes, to.address.bytes + 16);
}

void TcpConversation::putTcpHeader(const Stream& from, const Stream& to, unsigned flags)
{
    const bool opens = (flags & kSyn) != 0;
    const std::size_t words = (kTcpHeader + (opens ? kSegmentSizeOption : 0)) / 4;
    put16(from.port, packet_);
    put16(to.port, packet_);
    put32(from.next, packet_);
    put32((flags & kAck) != 0 ? to.next : 0, packet_);
    put16(static_cast<std::uint32_t>(words << 12) | flags, packet_);
    put16(kWindow, packet_);
    put16(0, packet_); // checksum
    put16(0, packet_); // nothing is urgent
    if (opens) {
        put16(0x0204, packet_); // longest segment, four bytes
        put16(static_cast<std::uint32_t>(kMostInASegment), packet_);
    }
}

// Over addresses, protocol and size too.
void TcpConversation::putTcpChecksum(const Stream& from, const Stream& to, std::size_t tcpStart)
{
    const std::size_t addressBytes = from.address.isSixth ? 16 : 4;
    const std::size_t size = packet_.size() - tcpStart;
    std::uint32_t sum = kTcp + static_cast<std::uint32_t>(size);
    sum = sumOf(from.address.bytes, addressBytes, sum);
    sum = sumOf(to.address.bytes, addressBytes, sum);
    sum = sumOf(packet_.data() + tcpStart, size, sum);
    setChecksum(checksumOf(sum), tcpStart + kTcpChecksumOffset, packet_);
}

} // namespace capture
} // namespace tavmir
