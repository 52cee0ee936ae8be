// Pieces joined and written.
#include "history_json.h"

#include "json_writer.h"

#include <algorithm>

namespace tavmir::host
{

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
        older.gaps.push_back(gap);
    }
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
    json.endArray().key("events").raw(facts.events).endObject();
    return out;
}

} // namespace tavmir::host
