// Events that were asked for.
#include "events_answer.h"

#include "json_writer.h"
#include "query_numbers.h"

namespace tavmir::host
{

page::Answer eventsAnswer(const EventStore& events, const page::Query& query)
{
    AskedFor asked(query);
    const auto since = static_cast<quint64>(asked.whole("since", 0, 0, kLastMs));
    const auto limit = static_cast<size_t>(
        asked.whole("limit", kEventsAtFirst, 1, static_cast<qint64>(EventStore::kMost)));
    if (!asked.problem().isEmpty()) {
        return problem(400, asked.problem());
    }
    std::string happened;
    events.write(since, limit, happened);
    std::string out;
    JsonWriter json(out);
    json.beginObject().key("events").raw(happened);
    json.key("oldest").whole(static_cast<qint64>(events.oldest())).endObject();
    return answerOf(out);
}

} // namespace tavmir::host
