// A kind for a kind, and the words.
#include "recorded_events.h"

#include "recorder/state_words.h"

#include <cstring>

namespace tavmir::host
{

namespace
{

using recorder::EventRow;
namespace event_kind = recorder::event_kind;

struct Kind {
    const char* recorded;
    const char* shown;
    const char* words; // in front of what the event says itself
    bool isBad;
    bool isOfVariable; // its subject is one
};

constexpr Kind kKinds[] = {
    {event_kind::kBegan, "recording", "recording began", false, false},
    {event_kind::kEnded, "recording", "recording ended", false, false},
    {event_kind::kGap, "gap", "not recorded", true, false},
    {event_kind::kMissed, "gap", "missed", true, false},
    {event_kind::kStorage, "storage", "the recording could not be written", true, false},
    {event_kind::kClock, "recording", "clock set", false, false},
    {event_kind::kConnected, "connected", "connected to", false, false},
    {event_kind::kConnectFailed, "connectFailed", "cannot connect to", true, false},
    {event_kind::kLost, "connectionLost", "connection lost to", true, false},
    {event_kind::kClosed, "closed", "connection closed to", false, false},
    {event_kind::kSilent, "gaveUp", "no reply from", true, false},
    {event_kind::kAnswers, "back", "answers again:", false, false},
    {event_kind::kWrite, "write", "write", false, true},
    {event_kind::kRead, "read", "read", false, true},
    {event_kind::kSetAside, "setAside", "refused", true, true},
    {event_kind::kBack, "back", "answers again", false, true},
    {event_kind::kPlan, "planChanged", "variables polled", false, false},
};

const Kind* kindOf(const EventRow& row)
{
    for (const Kind& kind : kKinds) {
        if (row.kind == kind.recorded) {
            return &kind;
        }
    }
    return nullptr;
}

// Its outcome is another one than done.
bool isOperationNotDone(const EventRow& row)
{
    return (row.kind == event_kind::kWrite || row.kind == event_kind::kRead) &&
           !row.text.startsWith("done");
}

} // namespace

PageEvent pageEvent(const EventRow& row)
{
    PageEvent event;
    event.id = static_cast<quint64>(row.at);
    event.at = static_cast<double>(row.at) / 1000;
    const Kind* kind = kindOf(row);
    event.kind = kind != nullptr ? kind->shown : "recording";
    event.text = kind != nullptr ? QString(kind->words) : row.kind;
    if (!row.subject.isEmpty()) {
        event.text += " " + row.subject;
    }
    if (row.until > 0) {
        event.text += " until " + recorder::momentText(row.until);
    }
    if (!row.text.isEmpty()) {
        event.text += ": " + row.text;
    }
    event.bad = (kind != nullptr && kind->isBad) || isOperationNotDone(row);
    if (kind != nullptr && kind->isOfVariable && !row.subject.isEmpty()) {
        event.variable = row.subject;
        event.address = row.address.isEmpty() ? QString() : row.address;
    }
    return event;
}

} // namespace tavmir::host
