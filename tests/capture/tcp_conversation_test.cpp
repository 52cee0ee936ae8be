// A connection as IP and TCP packets.
#include "capture/tcp_conversation.h"

#include "read_capture.h"

#include <gtest/gtest.h>

using namespace tavmir::capture;
using namespace tavmir::test;

namespace
{

// Takes packets apart, which fails where a header or a checksum is wrong.
struct Taken : PacketSink {
    void take(const Packet& packet) override
    {
        ReadPacket read = packetOf(Bytes(packet.bytes, packet.bytes + packet.size));
        read.wallNs = packet.wallNs;
        read.isOutbound = packet.isOutbound;
        read.comment = packet.comment;
        packets.push_back(read);
    }

    std::vector<std::string> flags() const
    {
        std::vector<std::string> all;
        for (const ReadPacket& packet : packets) {
            all.push_back((packet.isOutbound ? ">" : "<") + packet.flags);
        }
        return all;
    }

    std::vector<ReadPacket> packets;
};

using Flags = std::vector<std::string>;

tavmir::wire::Endpoint endpoint(const std::string& host, int port)
{
    tavmir::wire::Endpoint end;
    end.host = host;
    end.port = port;
    return end;
}

class Conversation : public testing::Test
{
protected:
    void begin(const std::string& own = "10.0.0.1", const std::string& other = "10.0.0.2",
               std::int64_t wallNs = 1000000)
    {
        conversation = std::make_unique<TcpConversation>(endpoint(own, 40000), endpoint(other, 502),
                                                         wallNs, taken);
    }

    void send(Side from, const std::string& bytes, std::int64_t ns = 5)
    {
        conversation->data(from, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                           ns);
    }

    Taken taken;
    std::unique_ptr<TcpConversation> conversation;
};

} // namespace

TEST_F(Conversation, AConnectionIsMadeByThreePacketsWithTheTimesOfTheAttempt)
{
    begin();
    conversation->opened(Side::own, 100, 200);
    EXPECT_EQ((Flags{">S", "<SA", ">A"}), taken.flags());
    const std::vector<ReadPacket>& packets = taken.packets;
    EXPECT_EQ(100, packets[0].wallNs);
    EXPECT_EQ(200, packets[1].wallNs);
    EXPECT_EQ("10.0.0.1", packets[0].from);
    EXPECT_EQ("10.0.0.2", packets[0].to);
    EXPECT_EQ(40000, packets[0].fromPort);
    EXPECT_EQ(502, packets[0].toPort);
    EXPECT_EQ("10.0.0.2", packets[1].from);
    EXPECT_EQ(502, packets[1].fromPort);
    EXPECT_EQ(0u, packets[0].acknowledgement);
    EXPECT_EQ(packets[0].sequence + 1, packets[1].acknowledgement);
    EXPECT_EQ(packets[0].sequence + 1, packets[2].sequence);
    EXPECT_EQ(packets[1].sequence + 1, packets[2].acknowledgement);
}

TEST_F(Conversation, WhoCameToTheOwnSideIsTheClient)
{
    begin();
    conversation->opened(Side::other, 100, 200);
    EXPECT_EQ((Flags{"<S", ">SA", "<A"}), taken.flags());
}

TEST_F(Conversation, SequenceNumbersRunOnAndEachPacketAcknowledgesWhatCame)
{
    begin();
    conversation->opened(Side::own, 100, 200);
    const std::uint32_t own = taken.packets[2].sequence;
    const std::uint32_t other = taken.packets[2].acknowledgement;
    taken.packets.clear();
    send(Side::own, "request");
    send(Side::other, "a reply");
    send(Side::other, "late");
    send(Side::own, "next");
    EXPECT_EQ((Flags{">AP", "<AP", "<AP", ">AP"}), taken.flags());
    const std::vector<ReadPacket>& packets = taken.packets;
    EXPECT_EQ("request", packets[0].payload);
    EXPECT_EQ(own, packets[0].sequence);
    EXPECT_EQ(other, packets[0].acknowledgement);
    EXPECT_EQ(other, packets[1].sequence);
    EXPECT_EQ(own + 7, packets[1].acknowledgement);
    EXPECT_EQ(other + 7, packets[2].sequence);
    EXPECT_EQ(own + 7, packets[3].sequence);
    EXPECT_EQ(other + 11, packets[3].acknowledgement);
}

TEST_F(Conversation, TheOwnCloseIsAcknowledged)
{
    begin();
    conversation->closed(Side::own, 7, "why");
    EXPECT_EQ((Flags{">AF", "<A"}), taken.flags());
    EXPECT_EQ("why", taken.packets[0].comment);
    EXPECT_EQ(taken.packets[0].sequence + 1, taken.packets[1].acknowledgement);
}

TEST_F(Conversation, WhenTheOtherSideClosesTheOwnOneDoesToo)
{
    begin();
    conversation->closed(Side::other, 7);
    EXPECT_EQ((Flags{"<AF", ">AF", "<A"}), taken.flags());
    EXPECT_EQ(taken.packets[0].sequence + 1, taken.packets[1].acknowledgement);
    EXPECT_EQ(taken.packets[1].sequence + 1, taken.packets[2].acknowledgement);
}

TEST_F(Conversation, AResetComesAlone)
{
    begin();
    conversation->reset(Side::other, 7, "Connection reset by peer");
    EXPECT_EQ(Flags{"<AR"}, taken.flags());
    EXPECT_EQ("Connection reset by peer", taken.packets[0].comment);
}

TEST_F(Conversation, ARefusalIsAResetAndSilenceIsNothing)
{
    begin();
    conversation->failed(true, 1, 2, "refused");
    EXPECT_EQ((Flags{">S", "<AR"}), taken.flags());
    EXPECT_EQ("refused", taken.packets[0].comment);
    EXPECT_EQ(taken.packets[0].sequence + 1, taken.packets[1].acknowledgement);
    taken.packets.clear();
    begin();
    conversation->failed(false, 1, 2, "timed out");
    EXPECT_EQ(Flags{">S"}, taken.flags());
}

TEST_F(Conversation, TheSixthVersionHasItsOwnHeader)
{
    begin("2001:db8::1", "fe80::2%eth0");
    conversation->opened(Side::own, 1, 2);
    send(Side::own, "odd");
    for (const ReadPacket& packet : taken.packets) {
        EXPECT_EQ(6, packet.version);
    }
    EXPECT_EQ("2001:db8::1", taken.packets[3].from);
    EXPECT_EQ("fe80::2", taken.packets[3].to);
    EXPECT_EQ("odd", taken.packets[3].payload);
}

TEST_F(Conversation, AnAddressOfTheFourthVersionInAnotherSpellingIsOne)
{
    begin("::ffff:192.0.2.1", "::ffff:192.0.2.2");
    send(Side::own, "x");
    EXPECT_EQ(4, taken.packets[0].version);
    EXPECT_EQ("192.0.2.1", taken.packets[0].from);
    EXPECT_EQ("192.0.2.2", taken.packets[0].to);
}

TEST_F(Conversation, AnAddressThatIsNotKnownIsUnspecified)
{
    begin("", "192.0.2.2");
    send(Side::own, "x");
    EXPECT_EQ("0.0.0.0", taken.packets[0].from);
    taken.packets.clear();
    begin("", "2001:db8::2");
    send(Side::own, "x");
    EXPECT_EQ("::", taken.packets[0].from);
}

TEST_F(Conversation, WhatIsLongerThanAPacketIsCutIntoSome)
{
    for (const char* own : {"10.0.0.1", "2001:db8::1"}) {
        taken.packets.clear();
        begin(own, own);
        const std::string long_(200001, 'x');
        send(Side::own, long_);
        std::string all;
        std::uint32_t next = 0;
        for (const ReadPacket& packet : taken.packets) {
            if (!packet.isOutbound) {
                continue;
            }
            EXPECT_TRUE(all.empty() || packet.sequence == next);
            next = packet.sequence + static_cast<std::uint32_t>(packet.payload.size());
            all += packet.payload;
        }
        EXPECT_EQ(long_, all);
    }
}

TEST_F(Conversation, WhatIsNotAnsweredForLongIsAcknowledged)
{
    begin();
    const std::string kilobyte(1024, 'x');
    std::uint32_t acknowledged = 0;
    for (int i = 0; i < 100; ++i) {
        send(Side::other, kilobyte);
        const ReadPacket& last = taken.packets.back();
        for (const ReadPacket& packet : taken.packets) {
            acknowledged = packet.isOutbound ? packet.acknowledgement : acknowledged;
        }
        if (i == 0) {
            acknowledged = last.sequence;
        }
        EXPECT_LE(last.sequence + 1024 - acknowledged, 65535u);
    }
    EXPECT_LT(taken.packets.size(), 110u) << "not one for each";
    EXPECT_GT(taken.packets.size(), 100u);
}

TEST_F(Conversation, OneThatBeginsLaterBetweenTheSamePortsHasOtherNumbers)
{
    begin();
    send(Side::own, "x");
    begin("10.0.0.1", "10.0.0.2", 1000000 + 4000);
    send(Side::own, "x");
    EXPECT_NE(taken.packets[0].sequence, taken.packets[1].sequence);
}
