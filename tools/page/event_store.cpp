// Events kept and written.
#include "event_store.h"

#include "json_writer.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

void writeOne(JsonWriter& json, const PageEvent& event)
{
    json.beginObject();
    json.key("id").whole(static_cast<qint64>(event.id));
    json.key("at").number(event.at);
    json.key("kind").text(event.kind);
    json.key("text").text(event.text);
    json.key("variable").textOrNull(event.variable);
    json.key("address").textOrNull(event.address);
    json.key("bad").boolean(event.bad);
    json.endObject();
}

} // namespace

std::string eventsJson(const std::vector<PageEvent>& events)
{
    std::string out;
    JsonWriter json(out);
    json.beginArray();
    for (const PageEvent& event : events) {
        writeOne(json, event);
    }
    json.endArray();
    return out;
}

void EventStore::add(PageEvent event)
{
    event.id = next_++;
    event.sequence = sequence_;
    events_.push_back(std::move(event));
    if (events_.size() > kMost) {
        events_.pop_front();
    }
}

void EventStore::write(quint64 since, size_t limit, std::string& out) const
{
    const quint64 newer = newest() > since ? newest() - since : 0;
    const size_t count = std::min<size_t>({static_cast<size_t>(newer), limit, events_.size()});
    JsonWriter json(out);
    json.beginArray();
    for (size_t i = events_.size() - count; i < events_.size(); ++i) {
        writeOne(json, events_[i]);
    }
    json.endArray();
}

void EventStore::writeNewer(quint64 sequence, size_t limit, std::string& out) const
{
    const auto newer = std::upper_bound(
        events_.begin(), events_.end(), sequence,
        [](quint64 seen, const PageEvent& event) { return seen < event.sequence; });
    write(newer == events_.end() ? newest() : newer->id - 1, limit, out);
}

std::vector<PageEvent> EventStore::between(double from, double to, const QString& address,
                                           size_t limit) const
{
    std::vector<PageEvent> found;
    for (auto event = events_.rbegin(); event != events_.rend() && found.size() < limit; ++event) {
        const bool concerns = event->address.isNull() || event->address == address;
        if (concerns && event->at >= from && event->at <= to) {
            found.push_back(*event);
        }
    }
    std::reverse(found.begin(), found.end());
    return found;
}

} // namespace tavmir::host
