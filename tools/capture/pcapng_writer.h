// Packets as blocks of a pcapng file, handed on one by one to who keeps them.
#ifndef TAVMIR_CAPTURE_PCAPNG_WRITER_H
#define TAVMIR_CAPTURE_PCAPNG_WRITER_H

#include "pcapng_blocks.h"

namespace tavmir
{
namespace capture
{

class BlockSink
{
public:
    virtual ~BlockSink() = default;
    // A whole block.
    virtual void write(const Bytes& block) = 0;
    // Blocks that could not be kept, since the last call.
    virtual std::uint64_t takeLost() { return 0; }
};

class PcapngWriter : public PacketSink
{
public:
    // sink  has the header already, and outlives the writer
    explicit PcapngWriter(BlockSink& sink) : sink_(sink) {}

    // Behind packets that could not be kept the next one says how many.
    void take(const Packet& packet) override;

private:
    BlockSink& sink_;
    Bytes block_;
};

// A whole capture in memory.
class MemoryCapture : public BlockSink
{
public:
    explicit MemoryCapture(const Origin& origin) { appendHeader(origin, bytes_); }

    void write(const Bytes& block) override
    {
        bytes_.insert(bytes_.end(), block.begin(), block.end());
    }
    const Bytes& bytes() const { return bytes_; }

private:
    Bytes bytes_;
};

} // namespace capture
} // namespace tavmir

#endif
