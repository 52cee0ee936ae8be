// What live clients are sent.
#include "live_content.h"

#include "events_answer.h"
#include "json_writer.h"
#include "status_json.h"
#include "variable_words.h"

#include <random>

namespace tavmir::host
{

namespace
{

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
    facts.planGeneration = state_.planGeneration();
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

} // namespace tavmir::host
