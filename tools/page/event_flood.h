// Keeps one kind of event from filling everything: what is too much within a second is counted, and
// one event says so. One thread.
#ifndef TAVMIR_PAGE_EVENT_FLOOD_H
#define TAVMIR_PAGE_EVENT_FLOOD_H

#include "event_store.h"

#include <map>
#include <string>

namespace tavmir::host
{

class EventFlood
{
public:
    // So many of one kind are told within a second.
    static constexpr int kMostOfAKind = 5;

    // False: it is counted instead.
    //   second  since 1970
    bool admits(const std::string& kind, qint64 second);
    // Tells of each other second how many more there were in it.
    void tellMore(qint64 second, EventStore& store);

private:
    struct OfAKind { // within a second
        qint64 second = 0;
        int told = 0;
        int more = 0;
    };

    std::map<std::string, OfAKind> kinds_;
};

} // namespace tavmir::host

#endif
