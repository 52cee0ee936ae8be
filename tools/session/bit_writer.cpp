// Read, modify, write.
#include "bit_writer.h"

namespace tavmir::host
{

std::unique_lock<std::timed_mutex> BitWriter::lockOrder(const Deadline& deadline)
{
    return std::unique_lock<std::timed_mutex>(order_, deadline.end());
}

Outcome BitWriter::write(const project::Element& bit, int station, const QByteArray& bytes,
                         const Deadline& deadline)
{
    const std::unique_lock<std::timed_mutex> order = lockOrder(deadline);
    // A queued write of the word is not in the driver's cache yet.
    if (!order.owns_lock() || !queue_.awaitNoWrites(deadline)) {
        return queue_.await(queue_.refuseWrite(bit, station, "earlier writes did not end in time"));
    }
    if (queue_.writesToController()) {
        const Outcome word = queue_.await(queue_.read(bit, station, deadline));
        if (!word.ok()) {
            return queue_.await(queue_.refuseWrite(
                bit, station, "its word could not be read: " + outcomeInWords(word)));
        }
    }
    return queue_.await(queue_.write(bit, station, bytes, deadline));
}

} // namespace tavmir::host
