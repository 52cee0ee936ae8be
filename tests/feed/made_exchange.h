// Exchanges and entries of the feed as a session publishes them, made by hand.
#ifndef TAVMIR_TESTS_FEED_MADE_EXCHANGE_H
#define TAVMIR_TESTS_FEED_MADE_EXCHANGE_H

#include "feed/feed_entry.h"

#include <vector>

namespace tavmir::host
{

constexpr quint8 kReadBits = 100;
constexpr quint8 kReadWords = 102;
constexpr quint8 kWriteWords = 103;
constexpr quint8 kReadDoubleWords = 108;

// One entry of a reply.
struct ReadElement {
    qint32 address = 0; // in bits
    quint32 number = 0;
};

// A moment of the steady clock, `ms` behind an early one.
Clock::time_point momentAt(int ms);

// A good exchange of one read request, its reply as long as is expected.
Exchange madeRead(quint8 function, int station, const std::vector<ReadElement>& elements,
                  Clock::time_point at);

// An exchange without frames: how it ended and how many bytes were sent.
Exchange madeEnd(ExchangeEnd end, quint32 sentBytes);

FeedEntry entryOf(const Exchange& exchange);

FeedEntry madePlan(quint32 generation, const std::vector<PolledElement>& polled);

// A variable as a project's polled entry makes it, named after its place.
PolledElement madeVariable(project::DataType type, qint32 address, int station = 1, int words = 0);
PolledElement madeBitOf(project::DataType type, qint32 address, int bitNumber, int station = 1);

} // namespace tavmir::host

#endif
