// What came of asking for a variable: its last exchange, and the bytes of the last good one.
#ifndef TAVMIR_PAGE_EXPLAIN_EXCHANGE_H
#define TAVMIR_PAGE_EXPLAIN_EXCHANGE_H

#include "exchange_search.h"
#include "explain_facts.h"

namespace tavmir::host
{

// place  of the variable in the polled list
ExplainStep exchangeStep(const ExplainFacts& facts, const FoundExchanges& found, size_t place);
ExplainStep bytesStep(const ExplainFacts& facts, const FoundExchanges& found, size_t place);

// "no request for it is among the last 20000 exchanges"; null: one is, or there never was any.
QString outOfSight(const FoundExchanges& found);

// "3.2 s ago"
QString agoInWords(const ExplainFacts& facts, Clock::time_point moment);

} // namespace tavmir::host

#endif
