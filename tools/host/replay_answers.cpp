// What is asked of a moment, and the live messages.
#include "page/events_answer.h"
#include "page/json_writer.h"
#include "page/plan_json.h"
#include "page/query_numbers.h"
#include "page/status_json.h"
#include "replay_content.h"
#include "replay_words.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr char kNoFrames[] = "a recording has no frames: frames are in captures (--capture FILE)";

FailureCounts countsOf(const recorder::MinuteRow& row)
{
    FailureCounts counts;
    counts.timeouts = row.timeouts;
    counts.retries = row.retries;
    counts.giveUps = row.giveUps;
    counts.exceptions = row.exceptions;
    counts.lostConnections = row.lostConnections;
    counts.failedConnects = row.connectFailures;
    counts.late = row.lateFrames;
    return counts;
}

LineFigures figuresOf(const recorder::MinuteRow& row)
{
    LineFigures figures;
    figures.timeouts = row.timeouts;
    figures.retries = row.retries;
    figures.giveUps = row.giveUps;
    figures.exceptions = row.exceptions;
    figures.lostConnections = row.lostConnections;
    figures.connectFailures = row.connectFailures;
    figures.discarded = row.lateFrames;
    return figures;
}

std::optional<double> msOfMicros(const std::optional<double>& micros)
{
    return micros ? std::optional<double>(*micros / 1000) : std::nullopt;
}

} // namespace

page::Answer ReplayContent::get(const std::string& what, const page::Query& query)
{
    takeRead();
    if (what == "status") {
        return answerOf(status());
    }
    if (what == "variables") {
        std::string out;
        JsonWriter json(out);
        json.beginObject().key("generation").whole(static_cast<qint64>(generation_));
        json.key("variables").raw(recordedVariablesJson(moment_.values)).endObject();
        return answerOf(out);
    }
    if (what == "values") {
        return values(query);
    }
    if (what == "plan") {
        return plan();
    }
    if (what == "explain") {
        return explain(query);
    }
    if (what == "events") {
        return eventsAnswer(events_, query);
    }
    if (what == "frames") {
        return answerOf(R"({"frames":[],"missed":0})");
    }
    if (what == "capture.pcapng") {
        return problem(503, kNoFrames);
    }
    return problem(404, "there is nothing of this name");
}

std::string ReplayContent::status() const
{
    const LineThen line = lineThen(moment_);
    const LineFigures total = figuresOf(moment_.total);
    StatusFacts facts;
    facts.now = now();
    facts.version = options_.version;
    facts.project = moment_.project->name;
    facts.epoch = epoch_;
    facts.startedAt = startedAt_;
    facts.controller = moment_.controller;
    facts.linkState = line.state;
    facts.linkText = line.words;
    facts.linkSince = line.since;
    if (moment_.minute) {
        facts.recent.roundTripMs = msOfMicros(moment_.minute->roundTripMedian);
        facts.recent.slowRoundTripMs = msOfMicros(moment_.minute->roundTripP99);
        facts.recent.lastMinute = countsOf(*moment_.minute);
    }
    facts.planGeneration = generation_; // it is the project's, as the list is
    facts.passElements = wireOrder(polled_).size();
    facts.passRequests = requestsPerPass(frames_);
    facts.total = &total;
    facts.writesText = "off: a recording cannot be written";
    facts.missed = moment_.total.missed;
    facts.historyFrom = course_.from();
    facts.replay = course_.json(shownAt());
    return statusJson(facts);
}

void ReplayContent::writeHead(JsonWriter& json, const char* kind) const
{
    json.key("kind").text(kind).key("epoch").text(epoch_);
    json.key("sequence").whole(static_cast<qint64>(sequence_));
    json.key("now").number(now());
    json.key("generation").whole(static_cast<qint64>(generation_));
    json.key("status").raw(status());
}

std::string ReplayContent::snapshot()
{
    std::string rows;
    rows_.writeSince(0, rows);
    std::string happened;
    events_.write(0, kEventsAtFirst, happened);
    std::string out;
    JsonWriter json(out);
    json.beginObject();
    writeHead(json, "snapshot");
    json.key("variables").raw(recordedVariablesJson(moment_.values)).key("values").raw(rows);
    json.key("events").raw(happened).endObject();
    return out;
}

std::string ReplayContent::changes(std::uint64_t since, std::uint64_t eventsSince)
{
    if (std::min(since, eventsSince) >= sequence_) {
        return std::string();
    }
    if (since < jumpedAt_) {
        return snapshot();
    }
    std::string rows;
    rows_.writeSince(since, rows);
    std::string happened;
    events_.writeNewer(eventsSince, kEventsAtFirst, happened);
    std::string out;
    JsonWriter json(out);
    json.beginObject();
    writeHead(json, "changes");
    json.key("values").raw(rows).key("events").raw(happened).endObject();
    return out;
}

page::Answer ReplayContent::values(const page::Query& query) const
{
    std::string rows;
    const auto add = [&](size_t place) {
        rows += rows.empty() ? "" : ",";
        rows_.write(place, rows);
    };
    bool isAsked = false;
    for (const auto& [name, value] : query.items) {
        if (name != "address") {
            continue;
        }
        isAsked = true;
        const QString address = QString::fromStdString(value);
        const auto found =
            std::find_if(moment_.values.begin(), moment_.values.end(),
                         [&](const auto& one) { return one.variable.address == address; });
        if (found == moment_.values.end()) {
            return problem(404, QString("%1: not polled at this moment").arg(address));
        }
        add(static_cast<size_t>(found - moment_.values.begin()));
    }
    for (size_t i = 0; i < rows_.size() && !isAsked; ++i) {
        add(i);
    }
    std::string out;
    JsonWriter json(out);
    json.beginObject().key("now").number(now()).key("values").raw("[" + rows + "]").endObject();
    return answerOf(out);
}

page::Answer ReplayContent::plan() const
{
    if (!moment_.project->problem.isEmpty()) {
        return problem(503, "the recorded project cannot be read: " + moment_.project->problem);
    }
    return answerOf(
        planJson(generation_, polled_, frames_, project::ElementNames(moment_.project->project)));
}

page::Answer ReplayContent::explain(const page::Query& query) const
{
    const QString address = AskedFor(query).text("address");
    return address.isNull() ? problem(400, "address: is missing")
                            : answerOf(replayExplainJson(address, moment_));
}

} // namespace tavmir::host
