// What events are about: the variables behind requests and elements. One thread.
#ifndef TAVMIR_PAGE_EVENT_SUBJECTS_H
#define TAVMIR_PAGE_EVENT_SUBJECTS_H

#include "feed/feed_entry.h"
#include "project/element_names.h"

#include <map>
#include <vector>

namespace tavmir::host
{

// One variable; of many nothing.
struct EventSubject {
    QString variable;
    QString address;
};

class EventSubjects
{
public:
    // names  outlive it
    explicit EventSubjects(const project::ElementNames& names) : names_(names) {}

    bool isEmpty() const { return polled_.empty(); }
    // What is polled from now on. False: that is what was.
    bool setPolled(const std::vector<PolledElement>& polled);

    // "38 words of station 1 from Main.W on"
    QString inWords(const Exchange& exchange) const;
    // The variable of an exchange's only element.
    EventSubject onlyOne(const Exchange& exchange) const;
    EventSubject at(const WireElement& element, int bits) const;
    EventSubject named(const QString& name) const;

private:
    const project::ElementNames& names_;
    std::vector<PolledElement> polled_;
    std::map<WireElement, EventSubject> polledAt_;
};

} // namespace tavmir::host

#endif
