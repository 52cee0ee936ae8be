// Counting.
#include "line_figures.h"

#include "wire/frame_layout.h"

namespace tavmir::host
{

void LineFigures::take(const FeedEntry& entry)
{
    if (entry.standing) {
        return;
    }
    lastError.take(entry);
    switch (entry.kind) {
    case FeedKind::exchange:
        takeExchange(entry.exchange);
        break;
    case FeedKind::gaveUp:
        ++giveUps;
        break;
    case FeedKind::connected:
        ++connects;
        break;
    case FeedKind::connectFailed:
        ++connectFailures;
        break;
    case FeedKind::connectionLost:
        ++lostConnections;
        brokenStreams += entry.brokenStream ? 1 : 0;
        break;
    case FeedKind::framesDropped:
        discarded += entry.frames;
        bytesReceived += entry.bytes;
        break;
    case FeedKind::operationEnded:
        ++outcomes[static_cast<int>(entry.operation.kind)][static_cast<int>(entry.operation.state)];
        break;
    case FeedKind::closed:
    case FeedKind::strayBytes: // counted with their exchange, or with the frames dropped
    case FeedKind::planChanged:
    case FeedKind::elementSetAside:
    case FeedKind::elementBack:
        break;
    }
}

void LineFigures::takeExchange(const Exchange& exchange)
{
    ++(exchange.attempt > 1 ? retries : requests);
    byElements.take(exchange);
    discarded += exchange.foreignFrames;
    bytesSent += exchange.sentBytes;
    bytesReceived += exchange.receivedBytes;
    if (exchange.answered()) {
        roundTrip.add(static_cast<quint64>((exchange.endedAt - exchange.sentAt).count()));
    }
    switch (exchange.end) {
    case ExchangeEnd::reply:
        ++(exchange.isGood() ? replies : refusedReplies);
        if (exchange.isGood() && exchange.kind == RequestKind::poll) {
            polledElements += exchange.request[wire::kCountOffset];
        }
        break;
    case ExchangeEnd::exception:
        ++exceptions;
        ++exceptionsByCode[exchange.exceptionCode];
        break;
    case ExchangeEnd::timeout:
    case ExchangeEnd::cut:
        ++timeouts;
        break;
    case ExchangeEnd::broken:
    case ExchangeEnd::lost:
        ++lost;
        break;
    case ExchangeEnd::notSent:
        ++notConnected;
        break;
    case ExchangeEnd::suppressed:
        ++suppressed;
        break;
    case ExchangeEnd::stopped:
        break;
    }
}

quint64 LineFigures::ended(OperationKind kind) const
{
    quint64 all = 0;
    for (const quint64 count : outcomes[static_cast<int>(kind)]) {
        all += count;
    }
    return all;
}

} // namespace tavmir::host
