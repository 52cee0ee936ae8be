// Events of a recording as events of the page.
#ifndef TAVMIR_HOST_RECORDED_EVENTS_H
#define TAVMIR_HOST_RECORDED_EVENTS_H

#include "page/event_store.h"
#include "recorder/recorded_rows.h"

namespace tavmir::host
{

// One of no other kind than the page knows. Its number is its time in microseconds.
PageEvent pageEvent(const recorder::EventRow& row);

} // namespace tavmir::host

#endif
