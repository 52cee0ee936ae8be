// Counts by kind.
#include "event_flood.h"

namespace tavmir::host
{

bool EventFlood::admits(const std::string& kind, qint64 second)
{
    OfAKind& ofKind = kinds_[kind];
    if (second != ofKind.second) {
        ofKind = {second, 0, 0};
    }
    if (++ofKind.told > kMostOfAKind) {
        ++ofKind.more;
        return false;
    }
    return true;
}

void EventFlood::tellMore(qint64 second, EventStore& store)
{
    for (auto& [kind, ofKind] : kinds_) {
        if (ofKind.more == 0 || ofKind.second == second) {
            continue;
        }
        PageEvent event;
        event.at = static_cast<double>(ofKind.second * 1000 + 999);
        event.kind = kind.c_str();
        event.text = QString("%1 more of this kind within a second").arg(ofKind.more);
        event.bad = true;
        store.add(event);
        ofKind.more = 0;
    }
}

} // namespace tavmir::host
