// The latest exchanges that asked for a variable.
#ifndef TAVMIR_PAGE_EXCHANGE_SEARCH_H
#define TAVMIR_PAGE_EXCHANGE_SEARCH_H

#include "kept_entries.h"

namespace tavmir::host
{

struct FoundExchanges {
    quint64 lookedThrough = 0; // exchanges
    bool isAll = true;         // there were no others before: what is not found was never asked for
    std::optional<FeedEntry> last;
    std::optional<FeedEntry> lastGood;
    std::optional<WireElement> element; // the one that the good reply brought first
};

// Looks through the latest exchanges, the newest first; so many that it takes milliseconds.
FoundExchanges exchangesOf(const KeptEntries& kept, const std::vector<WireElement>& elements);

// Where the element stands in the exchange's reply, from its first byte on; none: it does not.
std::optional<size_t> offsetInReply(const Exchange& exchange, const WireElement& element);

} // namespace tavmir::host

#endif
