// GET /events, of a running host as of a recording.
#ifndef TAVMIR_PAGE_EVENTS_ANSWER_H
#define TAVMIR_PAGE_EVENTS_ANSWER_H

#include "event_store.h"
#include "page_content.h"

namespace tavmir::host
{

// So many of them when nobody says how many.
constexpr size_t kEventsAtFirst = 200;

// Those behind `since`, at most `limit` and of them the newest; 400 when one of the two is no
// number that fits. On the thread of the store.
page::Answer eventsAnswer(const EventStore& events, const page::Query& query);

} // namespace tavmir::host

#endif
