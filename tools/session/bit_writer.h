// Keeps the writing of one bit of a word apart from every other write: the bit is written by
// reading its word first and writing the word back, and a second bit of the same word must see the
// first. Another host's change of the word in between is lost.
#ifndef TAVMIR_SESSION_BIT_WRITER_H
#define TAVMIR_SESSION_BIT_WRITER_H

#include "operation_queue.h"

#include <mutex>

namespace tavmir::host
{

class BitWriter
{
public:
    explicit BitWriter(OperationQueue& queue) : queue_(queue) {}

    // Reads the word, writes it with the bit changed, and waits for the end. Any thread.
    Outcome write(const project::Element& bit, int station, const QByteArray& bytes,
                  const Deadline& deadline);

    // Held by every other write while it is queued. False: a bit was being written until the
    // deadline.
    std::unique_lock<std::timed_mutex> lockOrder(const Deadline& deadline);

private:
    OperationQueue& queue_;
    std::timed_mutex order_;
};

} // namespace tavmir::host

#endif
