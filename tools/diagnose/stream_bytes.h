// The bytes of one direction of a TCP connection in their order, whatever the order of the packets
// was; and how many of them the capture lacks.
#ifndef TAVMIR_DIAGNOSE_STREAM_BYTES_H
#define TAVMIR_DIAGNOSE_STREAM_BYTES_H

#include <cstdint>
#include <memory>
#include <vector>

namespace Tins
{
namespace TCPIP
{
class DataTracker;
}
} // namespace Tins

namespace tavmir::diagnose
{

class StreamBytes
{
public:
    StreamBytes();
    ~StreamBytes();
    StreamBytes(const StreamBytes&) = delete;
    StreamBytes& operator=(const StreamBytes&) = delete;

    // Before anything else: the number of the first byte.
    void beginAt(std::uint32_t sequence);
    bool hasBegun() const { return tracker_ != nullptr; }

    // True when the number cannot belong to this connection any more.
    bool isFar(std::uint32_t sequence) const;

    // True for the number of the byte that is to come next.
    bool isNext(std::uint32_t sequence) const { return distance(sequence) == 0; }

    // Bytes of a packet; what has been there already is left out, what comes too early waits.
    void take(std::uint32_t sequence, std::vector<std::uint8_t> bytes);

    // What follows what was fetched before; empty: nothing.
    std::vector<std::uint8_t> fetch();

    // The other side has everything in front of `sequence`. Returns how many bytes in front of what
    // can be fetched next the capture lacks, and goes on behind them. Fetch before.
    std::uint32_t skipTo(std::uint32_t sequence);
    // The same for the bytes that wait; 0: none do.
    std::uint32_t skipToWaiting();
    // More wait than a connection can have under way.
    bool waitsForTooMuch() const;

private:
    std::uint32_t distance(std::uint32_t sequence) const;
    void goOnAt(std::uint32_t sequence);

    std::unique_ptr<Tins::TCPIP::DataTracker> tracker_; // null: not begun
};

} // namespace tavmir::diagnose

#endif
