// By the drawings of the file format and of RFC 791, 8200 and 9293.
#include "read_capture.h"

#include <arpa/inet.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tavmir::test
{

namespace
{

std::uint32_t little(const Bytes& bytes, std::size_t at, int count)
{
    std::uint32_t number = 0;
    for (int i = count - 1; i >= 0; --i) {
        number = number << 8 | bytes.at(at + static_cast<std::size_t>(i));
    }
    return number;
}

std::uint32_t big(const Bytes& bytes, std::size_t at, int count)
{
    std::uint32_t number = 0;
    for (int i = 0; i < count; ++i) {
        number = number << 8 | bytes.at(at + static_cast<std::size_t>(i));
    }
    return number;
}

std::string textOf(const Bytes& bytes, std::size_t at, std::size_t count)
{
    if (at + count > bytes.size()) {
        throw std::runtime_error("a text reaches beyond its block");
    }
    return std::string(reinterpret_cast<const char*>(bytes.data()) + at, count);
}

// The ones' complement sum over 16-bit numbers: 0xFFFF where the checksum in it is right.
std::uint32_t foldedSum(const Bytes& bytes)
{
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        sum += static_cast<std::uint64_t>(bytes[i]) << (i % 2 == 0 ? 8 : 0);
    }
    while (sum >> 16) {
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return static_cast<std::uint32_t>(sum);
}

void check(bool isRight, const char* what)
{
    if (!isRight) {
        throw std::runtime_error(what);
    }
}

std::string addressText(int family, const Bytes& ip, std::size_t at)
{
    char text[INET6_ADDRSTRLEN] = "";
    check(inet_ntop(family, ip.data() + at, text, sizeof text) != nullptr, "no address");
    return text;
}

void checkTcpChecksum(const Bytes& ip, std::size_t addresses, std::size_t addressBytes,
                      std::size_t tcp)
{
    Bytes summed(ip.begin() + static_cast<std::ptrdiff_t>(addresses),
                 ip.begin() + static_cast<std::ptrdiff_t>(addresses + 2 * addressBytes));
    const std::size_t size = ip.size() - tcp;
    for (const std::size_t number : {size >> 16, size & 0xFFFF, std::size_t(6)}) {
        summed.push_back(static_cast<unsigned char>(number >> 8));
        summed.push_back(static_cast<unsigned char>(number));
    }
    summed.insert(summed.end(), ip.begin() + static_cast<std::ptrdiff_t>(tcp), ip.end());
    check(foldedSum(summed) == 0xFFFF, "wrong TCP checksum");
}

} // namespace

std::vector<ReadBlock> blocksOf(const Bytes& file)
{
    std::vector<ReadBlock> blocks;
    for (std::size_t at = 0; at < file.size();) {
        check(at + 12 <= file.size(), "half a block");
        const std::uint32_t size = little(file, at + 4, 4);
        check(size >= 12 && size % 4 == 0 && at + size <= file.size(), "wrong size of a block");
        check(little(file, at + size - 4, 4) == size, "the two sizes differ");
        ReadBlock block;
        block.type = little(file, at, 4);
        block.body.assign(file.begin() + static_cast<std::ptrdiff_t>(at + 8),
                          file.begin() + static_cast<std::ptrdiff_t>(at + size - 4));
        blocks.push_back(block);
        at += size;
    }
    return blocks;
}

std::map<int, std::string> optionsOf(const ReadBlock& block, std::size_t offset)
{
    std::map<int, std::string> options;
    for (std::size_t at = offset;;) {
        const auto code = static_cast<int>(little(block.body, at, 2));
        const std::size_t size = little(block.body, at + 2, 2);
        if (code == 0) {
            check(size == 0 && at + 4 == block.body.size(), "options go on behind their end");
            return options;
        }
        options[code] = textOf(block.body, at + 4, size);
        at += 4 + (size + 3) / 4 * 4;
    }
}

ReadPacket packetOf(const Bytes& ip)
{
    ReadPacket packet;
    packet.version = ip.at(0) >> 4;
    std::size_t tcp = 0;
    if (packet.version == 4) {
        tcp = 20;
        check(ip.at(0) == 0x45 && big(ip, 2, 2) == ip.size() && ip.at(9) == 6, "wrong IP header");
        check(foldedSum(Bytes(ip.begin(), ip.begin() + 20)) == 0xFFFF, "wrong IP checksum");
        packet.from = addressText(AF_INET, ip, 12);
        packet.to = addressText(AF_INET, ip, 16);
        checkTcpChecksum(ip, 12, 4, tcp);
    } else {
        tcp = 40;
        check(packet.version == 6 && big(ip, 4, 2) + 40 == ip.size() && ip.at(6) == 6,
              "wrong IPv6 header");
        packet.from = addressText(AF_INET6, ip, 8);
        packet.to = addressText(AF_INET6, ip, 24);
        checkTcpChecksum(ip, 8, 16, tcp);
    }
    packet.fromPort = static_cast<int>(big(ip, tcp, 2));
    packet.toPort = static_cast<int>(big(ip, tcp + 2, 2));
    packet.sequence = big(ip, tcp + 4, 4);
    packet.acknowledgement = big(ip, tcp + 8, 4);
    const std::size_t header = 4 * (ip.at(tcp + 12) >> 4);
    const unsigned flags = ip.at(tcp + 13);
    const std::pair<unsigned, char> names[] = {
        {0x02, 'S'}, {0x10, 'A'}, {0x01, 'F'}, {0x04, 'R'}, {0x08, 'P'}};
    for (const auto& [bit, name] : names) {
        packet.flags += flags & bit ? std::string(1, name) : std::string();
    }
    packet.payload = textOf(ip, tcp + header, ip.size() - tcp - header);
    return packet;
}

std::vector<ReadPacket> packetsOf(const Bytes& file)
{
    std::vector<ReadPacket> packets;
    for (const ReadBlock& block : blocksOf(file)) {
        if (block.type != 6) {
            continue;
        }
        const std::size_t size = little(block.body, 12, 4);
        check(little(block.body, 16, 4) == size, "a packet is cut");
        const std::string bytes = textOf(block.body, 20, size);
        ReadPacket packet = packetOf(Bytes(bytes.begin(), bytes.end()));
        packet.wallNs = static_cast<std::int64_t>(
            static_cast<std::uint64_t>(little(block.body, 4, 4)) << 32 | little(block.body, 8, 4));
        std::map<int, std::string> options = optionsOf(block, 20 + (size + 3) / 4 * 4);
        packet.comment = options[1];
        check(options[2].size() == 4, "no flags");
        packet.isOutbound = options[2][0] == 2;
        packets.push_back(packet);
    }
    return packets;
}

Bytes fileBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    check(file.good(), "the file cannot be read");
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

} // namespace tavmir::test
