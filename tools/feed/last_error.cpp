// A bad exchange, or the end of a connection.
#include "last_error.h"

namespace tavmir::host
{

void LastError::take(const FeedEntry& entry)
{
    switch (entry.kind) {
    case FeedKind::exchange:
        if (entry.exchange.isGood() || entry.exchange.end == ExchangeEnd::stopped) {
            return;
        }
        copyExchange(entry.exchange, nullptr, nullptr, failed_);
        ofLink_ = false;
        break;
    case FeedKind::connectFailed:
    case FeedKind::connectionLost:
        linkProblem_ = entry.text;
        ofLink_ = true;
        break;
    default:
        return;
    }
    happened_ = true;
    time_ = entry.wall;
}

QString LastError::words() const
{
    if (!happened_) {
        return QString();
    }
    return ofLink_ ? linkProblem_ : endInWords(failed_, linkProblem_);
}

} // namespace tavmir::host
