// One block a packet.
#include "pcapng_writer.h"

namespace tavmir
{
namespace capture
{

void PcapngWriter::take(const Packet& packet)
{
    block_.clear();
    const std::uint64_t lost = sink_.takeLost();
    if (lost == 0) {
        appendPacket(packet, block_);
    } else {
        Packet noted = packet;
        noted.comment = std::to_string(lost) + " packets before this one could not be written" +
                        (packet.comment.empty() ? "" : "; ") + packet.comment;
        appendPacket(noted, block_);
    }
    sink_.write(block_);
}

} // namespace capture
} // namespace tavmir
