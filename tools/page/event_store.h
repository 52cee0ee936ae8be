// The latest events, each with a number of its own. One thread.
#ifndef TAVMIR_PAGE_EVENT_STORE_H
#define TAVMIR_PAGE_EVENT_STORE_H

#include <QtCore/QString>

#include <deque>
#include <string>
#include <vector>

namespace tavmir::host
{

struct PageEvent {
    quint64 id = 0;       // from 1 on
    quint64 sequence = 0; // of the look that clients get it with
    double at = 0;        // milliseconds since 1970
    const char* kind = "";
    QString text;
    QString variable; // its name; null: of none, or of many
    QString address;  // the same
    bool bad = false;
};

// "[event,event…]"
std::string eventsJson(const std::vector<PageEvent>& events);

class EventStore
{
public:
    static constexpr size_t kMost = 5000;

    // Gives it its number.
    void add(PageEvent event);
    // Clients get with this look what is added from now on.
    void setSequence(quint64 sequence) { sequence_ = sequence; }

    quint64 newest() const { return next_ - 1; }
    quint64 oldest() const { return events_.empty() ? next_ : events_.front().id; }

    // Appends "[event,event…]": the newest `limit` behind `since`, oldest first.
    void write(quint64 since, size_t limit, std::string& out) const;
    // The same of those that were added for a look behind this one.
    void writeNewer(quint64 sequence, size_t limit, std::string& out) const;
    // The newest `limit` between two moments that are of the variable, or of all; oldest first.
    std::vector<PageEvent> between(double from, double to, const QString& address,
                                   size_t limit) const;

private:
    std::deque<PageEvent> events_;
    quint64 next_ = 1;
    quint64 sequence_ = 1;
};

} // namespace tavmir::host

#endif
