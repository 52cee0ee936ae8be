// What happened, as events for who watches: connections, what went wrong with requests, writes and
// reads that hosts asked for, variables that are refused. One of many of a kind within a second
// stands for them, and says so. One thread.
#ifndef TAVMIR_PAGE_FEED_EVENTS_H
#define TAVMIR_PAGE_FEED_EVENTS_H

#include "event_flood.h"
#include "event_subjects.h"
#include "feed/feed_entry.h"

#include <set>
#include <vector>

namespace tavmir::host
{

class FeedEvents
{
public:
    // controller    "127.0.0.1:502"
    // names, store  outlive it
    FeedEvents(const QString& controller, const project::ElementNames& names, EventStore& store)
        : controller_(controller), subjects_(names), store_(store)
    {
    }

    void take(const FeedEntry& entry);
    void gap(quint64 missed, WallClock::time_point at);

    // Tells what waits: told() operations, and how many more there were in seconds that are over.
    void tellRest(WallClock::time_point now);

    // The end of an operation on this element is told by who asked for it; until told() or forget()
    // the feed's word of it is left out.
    void tellsItself(const WireElement& element) { toldElsewhere_.insert(element); }
    void forget(const WireElement& element);
    // It has ended: told when the feed has told what was before, with tellRest() at the latest.
    void told(const WireElement& element, const PageEvent& event);

private:
    struct Told {
        WireElement element;
        PageEvent event;
    };

    void tell(const FeedEntry& entry, const char* kind, const QString& text, bool bad,
              const EventSubject& about = EventSubject());
    void tellUntil(double at);
    void takeExchange(const FeedEntry& entry);
    void takeOperation(const FeedEntry& entry);
    void takePlan(const FeedEntry& entry);
    void takeStray(const FeedEntry& entry);
    QString withController(const QString& why) const;

    const QString controller_;
    EventSubjects subjects_;
    EventStore& store_;
    EventFlood flood_;
    QString failure_; // to connect, as it was told last
    Exchange last_;
    std::multiset<WireElement> toldElsewhere_;
    std::vector<Told> waiting_;
};

} // namespace tavmir::host

#endif
