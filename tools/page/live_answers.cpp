// Questions to a running host.
#include "events_answer.h"
#include "explain_json.h"
#include "frames_json.h"
#include "json_writer.h"
#include "live_content.h"
#include "plan_json.h"
#include "polled_place.h"
#include "query_numbers.h"

namespace tavmir::host
{

namespace
{

constexpr qint64 kMostFrames = 5000;
constexpr qint64 kFrames = 200;
constexpr qint64 kCaptureSeconds = 60;

} // namespace

page::Answer LiveContent::get(const std::string& what, const page::Query& query)
{
    lookIfOld();
    if (what == "status") {
        return answerOf(status());
    }
    if (what == "variables") {
        std::string out;
        JsonWriter(out)
            .beginObject()
            .key("generation")
            .whole(static_cast<qint64>(state_.generation()))
            .key("variables")
            .raw(variables())
            .endObject();
        return answerOf(out);
    }
    if (what == "values") {
        return values(query);
    }
    if (what == "plan") {
        return answerOf(
            planJson(state_.generation(), state_.asked(), state_.frames(), state_.names()));
    }
    if (what == "explain") {
        return explain(query);
    }
    if (what == "events") {
        return eventsAnswer(state_.events(), query);
    }
    if (what == "frames") {
        return frames(query);
    }
    if (what == "history") {
        return history(query);
    }
    if (what == "capture.pcapng") {
        return capture(query);
    }
    return problem(404, "there is nothing of this name");
}

page::Answer LiveContent::values(const page::Query& query) const
{
    std::string rows = "[";
    const auto add = [&](size_t place) {
        rows += rows.size() > 1 ? "," : "";
        state_.rows().write(place, rows);
    };
    bool isAsked = false;
    for (const auto& [name, value] : query.items) {
        if (name != "address") {
            continue;
        }
        isAsked = true;
        const QString address = QString::fromStdString(value);
        const std::optional<size_t> place = placeOf(state_.polled(), address);
        if (!place) {
            return problem(404, QString("%1: not polled").arg(address));
        }
        add(*place);
    }
    for (size_t i = 0; i < state_.rows().size() && !isAsked; ++i) {
        add(i);
    }
    std::string out;
    JsonWriter(out)
        .beginObject()
        .key("now")
        .number(now())
        .key("values")
        .raw(rows + "]")
        .endObject();
    return answerOf(out);
}

page::Answer LiveContent::frames(const page::Query& query) const
{
    AskedFor asked(query);
    const auto since = static_cast<quint64>(asked.whole("since", 0, 0, kLastMs));
    const auto limit = static_cast<size_t>(asked.whole("limit", kFrames, 1, kMostFrames));
    if (!asked.problem().isEmpty()) {
        return problem(400, asked.problem());
    }
    return answerOf(framesJson(state_.kept(), state_.names(), since, limit));
}

page::Answer LiveContent::explain(const page::Query& query) const
{
    const QString address = AskedFor(query).text("address");
    if (address.isNull()) {
        return problem(400, "address: is missing");
    }
    const ExplainFacts facts = {project_,          state_.names(),          state_.values(),
                                state_.kept(),     state_.asked(),          state_.frames(),
                                state_.setAside(), options_.clocks.steady()};
    return answerOf(explainJson(address, facts));
}

page::Answer LiveContent::capture(const page::Query& query) const
{
    AskedFor asked(query);
    const qint64 seconds = asked.whole("seconds", kCaptureSeconds, 1, 24 * 3600);
    if (!asked.problem().isEmpty()) {
        return problem(400, asked.problem());
    }
    if (!capture_) {
        return problem(503, "no capture can be made here");
    }
    const Clock::time_point now = options_.clocks.steady();
    const Clock::time_point wanted = now - std::chrono::seconds(seconds);
    const quint64 from = state_.kept().firstAt(wanted);
    page::Answer answer;
    const std::optional<Clock::time_point> since = state_.kept().wholeSince();
    if (since && *since > wanted) {
        answer.coveredMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(now - *since).count();
    }
    answer.type = "application/octet-stream";
    answer.body = capture_(state_.kept(), from);
    answer.fileName = "tavmir.pcapng";
    return answer;
}

} // namespace tavmir::host
