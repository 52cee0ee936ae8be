// Answers and live messages.
#include "live_content.h"

#include "explain_json.h"
#include "frames_json.h"
#include "json_writer.h"
#include "plan_json.h"
#include "query_numbers.h"
#include "status_json.h"
#include "variable_words.h"

#include <random>

namespace tavmir::host
{

namespace
{

constexpr size_t kEventsAtFirst = 200;
constexpr qint64 kMostFrames = 5000;
constexpr qint64 kFrames = 200;
constexpr qint64 kCaptureSeconds = 60;
constexpr auto kOld = std::chrono::milliseconds(100);

std::string madeEpoch()
{
    std::random_device random;
    const quint64 number = static_cast<quint64>(random()) << 32 | random();
    return QString("%1").arg(number, 16, 16, QChar('0')).toStdString();
}

} // namespace

LiveContent::LiveContent(Feed& feed, const project::Project& project, const LiveOptions& options)
    : project_(project), options_(options), index_(project), epoch_(madeEpoch()),
      state_(feed, project, options.rules, options.clocks, options.limits)
{
}

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
        return events(query);
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

void LiveContent::look()
{
    std::vector<Told> told;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        told.swap(told_);
    }
    for (const Told& one : told) {
        state_.feedEvents().told(one.element, one.event);
    }
    state_.look(); // the feed's word of these writes comes in now
    lookedAt_ = options_.clocks.steady();
}

// Looks are rare while nobody listens.
void LiveContent::lookIfOld()
{
    if (options_.clocks.steady() - lookedAt_ >= kOld) {
        look();
    }
}

std::string LiveContent::status() const
{
    const Clock::time_point at = options_.clocks.steady();
    StatusFacts facts;
    facts.now = now();
    facts.version = options_.version;
    facts.project = options_.projectFile;
    facts.epoch = epoch_;
    facts.startedAt = msOf(state_.startedAt());
    facts.controller = options_.rules.controller;
    facts.linkState = state_.linkState();
    facts.linkText = state_.values().line().words(at);
    facts.linkSince = msOf(state_.linkSince());
    facts.recent = state_.recent().at(at);
    facts.passElements = state_.askedOnWire();
    facts.passRequests = requestsPerPass(state_.frames());
    facts.total = &state_.figures();
    if (desk_ != nullptr) {
        facts.writesAllowed = desk_->isOpen();
        facts.writesOnly = desk_->only();
        facts.writesText = desk_->words();
    } else {
        facts.writesText = "off";
    }
    facts.recording = status_ ? status_() : "null";
    facts.missed = state_.missed();
    facts.historyFrom = state_.history().from();
    facts.historyBytes = state_.history().bytes();
    facts.historyMostBytes = state_.history().mostBytes();
    return statusJson(facts);
}

std::string LiveContent::variables() const
{
    return variablesJson(state_.polled(), [this](const project::Element& element) {
        return desk_ != nullptr && desk_->permits(element);
    });
}

void LiveContent::writeHead(JsonWriter& json, const char* kind) const
{
    json.key("kind").text(kind).key("epoch").text(epoch_);
    json.key("sequence").whole(static_cast<qint64>(state_.sequence()));
    json.key("now").number(now());
    json.key("generation").whole(static_cast<qint64>(state_.generation()));
    json.key("status").raw(status());
}

std::string LiveContent::snapshot()
{
    const Spending spending(state_.budget(), options_.clocks);
    std::string rows = "[";
    for (size_t i = 0; i < state_.rows().size(); ++i) {
        rows += i > 0 ? "," : "";
        state_.rows().write(i, rows);
    }
    rows += "]";
    std::string happened;
    state_.events().write(0, kEventsAtFirst, happened);
    std::string out;
    JsonWriter json(out);
    json.beginObject();
    writeHead(json, "snapshot");
    json.key("variables").raw(variables()).key("values").raw(rows);
    json.key("events").raw(happened).endObject();
    return out;
}

std::string LiveContent::changes(std::uint64_t since, std::uint64_t eventsSince)
{
    if (std::min(since, eventsSince) >= state_.sequence()) {
        return std::string();
    }
    if (since < state_.listedAt()) {
        return snapshot(); // of other variables
    }
    const Spending spending(state_.budget(), options_.clocks);
    std::string out;
    out.reserve(longest_);
    JsonWriter json(out);
    json.beginObject();
    writeHead(json, "changes");
    json.key("values").raw("");
    state_.rows().writeSince(since, out);
    std::string happened;
    state_.events().writeNewer(eventsSince, kEventsAtFirst, happened);
    json.key("events").raw(happened).endObject();
    longest_ = std::max(longest_, out.size());
    return out;
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

page::Answer LiveContent::events(const page::Query& query) const
{
    AskedFor asked(query);
    const auto since = static_cast<quint64>(asked.whole("since", 0, 0, kLastMs));
    const auto limit = static_cast<size_t>(
        asked.whole("limit", kEventsAtFirst, 1, static_cast<qint64>(EventStore::kMost)));
    if (!asked.problem().isEmpty()) {
        return problem(400, asked.problem());
    }
    std::string happened;
    state_.events().write(since, limit, happened);
    std::string out;
    JsonWriter(out)
        .beginObject()
        .key("events")
        .raw(happened)
        .key("oldest")
        .whole(static_cast<qint64>(state_.events().oldest()))
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
    const quint64 from =
        state_.kept().firstAt(options_.clocks.steady() - std::chrono::seconds(seconds));
    page::Answer answer;
    answer.type = "application/octet-stream";
    answer.body = capture_(state_.kept(), from);
    answer.fileName = "tavmir.pcapng";
    return answer;
}

} // namespace tavmir::host
