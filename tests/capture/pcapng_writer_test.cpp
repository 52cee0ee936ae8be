// The bytes of a capture file.
#include "capture/pcapng_writer.h"

#include "read_capture.h"

#include <gtest/gtest.h>

using namespace tavmir::capture;
using namespace tavmir::test;

namespace
{

Origin someOrigin()
{
    Origin origin;
    origin.hardware = "arm";
    origin.system = "Linux 1";
    origin.application = "tool 2";
    origin.line = "the line";
    return origin;
}

Packet somePacket(const Bytes& bytes)
{
    Packet packet;
    packet.bytes = bytes.data();
    packet.size = bytes.size();
    return packet;
}

// Keeps blocks, and has lost some on demand.
struct Kept : BlockSink {
    void write(const Bytes& block) override { blocks.push_back(block); }
    std::uint64_t takeLost() override
    {
        const std::uint64_t had = lost;
        lost = 0;
        return had;
    }

    std::vector<Bytes> blocks;
    std::uint64_t lost = 0;
};

} // namespace

TEST(PcapngWriter, AFileBeginsWithOneSectionAndOneInterfaceOfRawPacketsInNanoseconds)
{
    Bytes bytes;
    appendHeader(someOrigin(), bytes);
    const std::vector<ReadBlock> blocks = blocksOf(bytes);
    ASSERT_EQ(2u, blocks.size());
    EXPECT_EQ(0x0A0D0D0Au, blocks[0].type);
    const Bytes section = {0x4D, 0x3C, 0x2B, 0x1A, 1,    0,    0,    0,
                           0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(section, Bytes(blocks[0].body.begin(), blocks[0].body.begin() + 16));
    const std::map<int, std::string> ofSection = {{2, "arm"}, {3, "Linux 1"}, {4, "tool 2"}};
    EXPECT_EQ(ofSection, optionsOf(blocks[0], 16));
    EXPECT_EQ(1u, blocks[1].type);
    EXPECT_EQ(101, blocks[1].body[0]);
    EXPECT_EQ(0, blocks[1].body[1]);
    const std::map<int, std::string> ofInterface = {{2, "the line"}, {9, "\x09"}};
    EXPECT_EQ(ofInterface, optionsOf(blocks[1], 8));
}

TEST(PcapngWriter, ThisMachineIsNamed)
{
    const Origin origin = originHere("tool 2", "the line");
    EXPECT_FALSE(origin.hardware.empty());
    EXPECT_EQ(0u, origin.system.find("Linux "));
    EXPECT_EQ("tool 2", origin.application);
    EXPECT_EQ("the line", origin.line);
}

TEST(PcapngWriter, APacketByteByByte)
{
    const Bytes bytes = {0xA1, 0xA2, 0xA3, 0xA4, 0xA5};
    Packet packet = somePacket(bytes);
    packet.wallNs = 0x0102030405060708;
    packet.isOutbound = true;
    packet.comment = "why";
    Bytes block;
    appendPacket(packet, block);
    const Bytes expected = {6,    0,    0,    0,    60,   0,   0,   0,  // type, size
                            0,    0,    0,    0,                        // interface
                            4,    3,    2,    1,    8,    7,   6,   5,  // upper half, lower half
                            5,    0,    0,    0,    5,    0,   0,   0,  // kept, sent
                            0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0,   0,   0,  // padded
                            1,    0,    3,    0,    'w',  'h', 'y', 0,  // comment
                            2,    0,    4,    0,    2,    0,   0,   0,  // flags: outbound
                            0,    0,    0,    0,    60,   0,   0,   0}; // end, size
    EXPECT_EQ(expected, block);
}

TEST(PcapngWriter, APacketWithoutACommentHasNone)
{
    const Bytes bytes = {1, 2, 3, 4};
    Bytes block;
    appendPacket(somePacket(bytes), block);
    const std::map<int, std::string> options = optionsOf(blocksOf(block)[0], 24);
    EXPECT_EQ((std::map<int, std::string>{{2, std::string("\x01\0\0\0", 4)}}), options)
        << "inbound, and nothing else";
}

TEST(PcapngWriter, ALongCommentIsCut)
{
    const Bytes bytes = {1, 2, 3, 4};
    Packet packet = somePacket(bytes);
    packet.comment.assign(100000, 'x');
    Bytes block;
    appendPacket(packet, block);
    EXPECT_EQ(4096u, optionsOf(blocksOf(block)[0], 24)[1].size());
}

TEST(PcapngWriter, EachPacketIsHandedOnAsOneBlock)
{
    Kept kept;
    PcapngWriter writer(kept);
    const Bytes bytes = {1, 2, 3, 4};
    writer.take(somePacket(bytes));
    writer.take(somePacket(bytes));
    ASSERT_EQ(2u, kept.blocks.size());
    for (const Bytes& block : kept.blocks) {
        EXPECT_EQ(1u, blocksOf(block).size());
    }
}

TEST(PcapngWriter, BehindLostPacketsTheNextOneSaysHowMany)
{
    Kept kept;
    PcapngWriter writer(kept);
    const Bytes bytes = {1, 2, 3, 4};
    Packet packet = somePacket(bytes);
    packet.comment = "late";
    kept.lost = 3;
    writer.take(packet);
    writer.take(packet);
    EXPECT_EQ("3 packets before this one could not be written; late",
              optionsOf(blocksOf(kept.blocks[0])[0], 24)[1]);
    EXPECT_EQ("late", optionsOf(blocksOf(kept.blocks[1])[0], 24)[1]);
}
