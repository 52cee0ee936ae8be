// Pieces joined and written.
#include "history_json.h"

#include "json_writer.h"
#include "query_numbers.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr qint64 kMostPoints = 2000;
constexpr qint64 kPoints = 600;
constexpr qint64 kUsualMs = 60000;
constexpr double kLeastShare = 2;

} // namespace

HistoryQuestion historyQuestion(const page::Query& query, qint64 now)
{
    AskedFor asked(query);
    HistoryQuestion question;
    question.address = asked.text("address");
    question.to = asked.whole("to", now, 0, kLastMs);
    question.from = asked.whole("from", std::max<qint64>(0, question.to - kUsualMs), 0, kLastMs);
    question.points = static_cast<size_t>(asked.whole("points", kPoints, 2, kMostPoints));
    question.problem = asked.problem();
    if (question.problem.isEmpty() && question.from > question.to) {
        question.problem = "from: must not be behind to";
    }
    if (question.problem.isEmpty() && question.address.isNull()) {
        question.problem = "address: is missing";
    }
    return question;
}

size_t HistoryQuestion::share(qint64 ms) const
{
    const double whole = std::max<double>(1, static_cast<double>(to - from));
    const double part = static_cast<double>(points) * static_cast<double>(ms) / whole;
    return static_cast<size_t>(std::max(kLeastShare, part));
}

HistoryPiece joined(HistoryPiece older, const HistoryPiece& newer, qint64 border)
{
    const auto edge = static_cast<double>(border);
    while (!older.t.empty() && older.t.back() >= edge && !newer.t.empty()) {
        older.t.pop_back();
        older.min.pop_back();
        older.max.pop_back();
        older.last.pop_back();
    }
    for (size_t i = 0; i < newer.t.size(); ++i) {
        if (older.t.empty() || newer.t[i] > older.t.back()) {
            older.add(newer.t[i], newer.min[i], newer.max[i], newer.last[i]);
        }
    }
    while (!older.gaps.empty() && older.gaps.back().from >= border) {
        older.gaps.pop_back();
    }
    for (const HistoryGap& gap : newer.gaps) {
        if (!older.gaps.empty() && older.gaps.back().to > gap.from) {
            older.gaps.back().to = std::max(older.gaps.back().from, gap.from);
        }
        if (!older.gaps.empty() && older.gaps.back().to == gap.from &&
            older.gaps.back().reason == gap.reason) {
            older.gaps.back().to = gap.to; // it went on
            continue;
        }
        older.gaps.push_back(gap);
    }
    older.events.insert(older.events.end(), newer.events.begin(), newer.events.end());
    if (!older.oldest) {
        older.oldest = newer.oldest;
    }
    return older;
}

namespace
{

void writeNumbers(JsonWriter& json, const char* name, const std::vector<double>& numbers)
{
    json.key(name).beginArray();
    for (const double number : numbers) {
        json.number(number);
    }
    json.endArray();
}

} // namespace

std::string historyJson(const HistoryFacts& facts, const HistoryPiece& piece)
{
    std::string out;
    JsonWriter json(out);
    json.beginObject().key("address").text(facts.address);
    json.key("from").whole(facts.from).key("to").whole(facts.to).key("oldest");
    if (piece.oldest) {
        json.whole(*piece.oldest);
    } else {
        json.null();
    }
    json.key("source").text(facts.source).key("isBit").boolean(facts.isBit);
    writeNumbers(json, "t", piece.t);
    writeNumbers(json, "min", piece.min);
    writeNumbers(json, "max", piece.max);
    writeNumbers(json, "last", piece.last);
    json.key("gaps").beginArray();
    for (const HistoryGap& gap : piece.gaps) {
        json.beginArray().whole(gap.from).whole(gap.to).text(gap.reason).endArray();
    }
    json.endArray().key("events").raw(eventsJson(piece.events)).endObject();
    return out;
}

} // namespace tavmir::host
