// One TCP connection as packets: what a program sent and received, as IP and TCP with the
// connection's addresses and ports, sequence numbers that run on, and right checksums. The packets
// are made here, not taken from the line: one for each piece that was handed over, none lost,
// repeated or out of order, and an acknowledgement alone only where much was sent without an
// answer.
//
//   opened ─▶ data … ─▶ closed or reset        a connection that is under way begins with data
//   failed                                     nobody answered, or said no
//
// One thread.
#ifndef TAVMIR_CAPTURE_TCP_CONVERSATION_H
#define TAVMIR_CAPTURE_TCP_CONVERSATION_H

#include "packet.h"

#include "wire/endpoint.h"

namespace tavmir
{
namespace capture
{

enum class Side { own, other };

class TcpConversation
{
public:
    // own, other  numeric addresses; what is none counts as the unspecified address
    // wallNs      when it begins: tells it from an earlier one between the same ports
    // sink        outlives it
    TcpConversation(const wire::Endpoint& own, const wire::Endpoint& other, std::int64_t wallNs,
                    PacketSink& sink);

    const wire::Endpoint& own() const { return own_; }
    const wire::Endpoint& other() const { return other_; }

    // client  who asked for the connection
    void opened(Side client, std::int64_t beganNs, std::int64_t endedNs,
                const std::string& comment = std::string());
    // refused  the other side said no; else nothing came
    void failed(bool refused, std::int64_t beganNs, std::int64_t endedNs,
                const std::string& comment);
    void data(Side from, const unsigned char* bytes, std::size_t size, std::int64_t wallNs,
              const std::string& comment = std::string());
    // When the other side closes, the own one does at once.
    void closed(Side by, std::int64_t wallNs, const std::string& comment = std::string());
    void reset(Side by, std::int64_t wallNs, const std::string& comment = std::string());

private:
    struct Address {
        unsigned char bytes[16];
        bool isSixth;
    };
    // One direction: what the side has sent.
    struct Stream {
        Address address;
        std::uint16_t port;
        std::uint32_t next;         // sequence number of its next byte
        std::uint32_t acknowledged; // the latest that the other side has told
        std::uint16_t packets;
    };

    static Address addressOf(const std::string& text);
    void segment(Side from, const unsigned char* bytes, std::size_t size, std::int64_t wallNs,
                 const std::string& comment);
    void packet(Side from, unsigned flags, const unsigned char* bytes, std::size_t size,
                std::int64_t wallNs, const std::string& comment);
    void putIpHeader(const Stream& from, const Stream& to, std::size_t tcpBytes);
    void putFourthHeader(const Stream& from, const Stream& to, std::size_t tcpBytes);
    void putSixthHeader(const Stream& from, const Stream& to, std::size_t tcpBytes);
    void putTcpHeader(const Stream& from, const Stream& to, unsigned flags);
    void putTcpChecksum(const Stream& from, const Stream& to, std::size_t tcpStart);
    Stream& streamOf(Side side) { return streams_[side == Side::own ? 0 : 1]; }

    wire::Endpoint own_;
    wire::Endpoint other_;
    Stream streams_[2];
    PacketSink& sink_;
    Bytes packet_;
};

} // namespace capture
} // namespace tavmir

#endif
