// Facts as one object.
#include "status_json.h"

#include "json_writer.h"

namespace tavmir::host
{

namespace
{

void writeCounts(JsonWriter& json, const FailureCounts& counts)
{
    const auto count = [&json](const char* name, quint64 number) {
        json.key(name).whole(static_cast<qint64>(number));
    };
    json.beginObject();
    count("timeouts", counts.timeouts);
    count("retries", counts.retries);
    count("giveUps", counts.giveUps);
    count("late", counts.late);
    count("exceptions", counts.exceptions);
    count("lostConnections", counts.lostConnections);
    count("failedConnects", counts.failedConnects);
    json.endObject();
}

FailureCounts totalOf(const LineFigures& figures)
{
    FailureCounts counts;
    counts.timeouts = figures.timeouts;
    counts.retries = figures.retries;
    counts.giveUps = figures.giveUps;
    counts.late = figures.discarded;
    counts.exceptions = figures.exceptions;
    counts.lostConnections = figures.lostConnections;
    counts.failedConnects = figures.connectFailures;
    return counts;
}

void writeWrites(JsonWriter& json, const StatusFacts& facts)
{
    json.beginObject().key("allowed").boolean(facts.writesAllowed).key("only");
    if (facts.writesOnly.isEmpty()) {
        json.null();
    } else {
        json.beginArray();
        for (const QString& address : facts.writesOnly) {
            json.text(address);
        }
        json.endArray();
    }
    json.key("text").text(facts.writesText).endObject();
}

} // namespace

std::string statusJson(const StatusFacts& facts)
{
    std::string out;
    JsonWriter json(out);
    json.beginObject();
    json.key("now").number(facts.now);
    json.key("program").text("tavmir-host").key("version").text(facts.version);
    json.key("project").text(facts.project).key("epoch").text(facts.epoch);
    json.key("startedAt").number(facts.startedAt).key("controller").text(facts.controller);
    json.key("link").beginObject().key("state").text(facts.linkState);
    json.key("text").text(facts.linkText).key("since").number(facts.linkSince).endObject();
    json.key("pass").beginObject().key("ms").number(facts.recent.passMs);
    json.key("elements").whole(static_cast<qint64>(facts.passElements));
    json.key("requests").number(facts.passRequests).endObject();
    json.key("planGeneration").whole(static_cast<qint64>(facts.planGeneration));
    json.key("roundTrip").beginObject().key("medianMs").number(facts.recent.roundTripMs);
    json.key("p99Ms").number(facts.recent.slowRoundTripMs).endObject();
    json.key("lastMinute");
    writeCounts(json, facts.recent.lastMinute);
    json.key("total");
    writeCounts(json, totalOf(*facts.total));
    json.key("writes");
    writeWrites(json, facts);
    json.key("recording").raw(facts.recording);
    json.key("missed").whole(static_cast<qint64>(facts.missed));
    json.key("history").beginObject().key("from").whole(facts.historyFrom);
    json.key("bytes").whole(static_cast<qint64>(facts.historyBytes));
    json.key("limitBytes").whole(static_cast<qint64>(facts.historyMostBytes)).endObject();
    json.key("replay").raw(facts.replay);
    json.endObject();
    return out;
}

} // namespace tavmir::host
