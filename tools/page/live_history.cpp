// The past of one value, out of memory and recording.
#include "explain_json.h"
#include "history_json.h"
#include "live_content.h"
#include "project/value_format.h"
#include "query_numbers.h"

#include <algorithm>
#include <limits>

namespace tavmir::host
{

namespace
{

constexpr qint64 kMostPoints = 2000;
constexpr qint64 kPoints = 600;
constexpr qint64 kEventsOfAHistory = 200;
constexpr qint64 kUsualHistoryMs = 60000;

} // namespace

HistoryPiece LiveContent::memory(size_t variable, qint64 from, qint64 to, size_t points) const
{
    const std::optional<size_t> track = state_.trackOf(variable);
    if (!track) {
        return HistoryPiece();
    }
    const PolledElement& shown = state_.polled()[variable];
    const auto numberOf = [&shown](quint32 bits) {
        QByteArray bytes(4, '\0');
        for (int i = 0; i < 4; ++i) {
            bytes[i] = static_cast<char>(bits >> (8 * i) & 0xFF);
        }
        return project::decodeNumber(shown.element, shown.format, bytes)
            .value_or(std::numeric_limits<double>::quiet_NaN());
    };
    return state_.history().piece(*track, from, to, points, numberOf);
}

page::Answer LiveContent::history(const page::Query& query) const
{
    const auto ms = static_cast<qint64>(now());
    AskedFor asked(query);
    HistoryFacts facts;
    facts.address = asked.text("address");
    facts.to = asked.whole("to", ms, 0, kLastMs);
    facts.from = asked.whole("from", std::max<qint64>(0, facts.to - kUsualHistoryMs), 0, kLastMs);
    const auto points = static_cast<size_t>(asked.whole("points", kPoints, 2, kMostPoints));
    if (!asked.problem().isEmpty() || facts.from > facts.to) {
        return problem(400,
                       asked.problem().isEmpty() ? "from: must not be behind to" : asked.problem());
    }
    const std::optional<size_t> place = placeOf(state_.polled(), facts.address);
    if (!place) {
        return problem(facts.address.isNull() ? 400 : 404,
                       facts.address.isNull() ? QString("address: is missing")
                                              : QString("%1: not polled").arg(facts.address));
    }
    facts.isBit = state_.polled()[*place].element.isBit();
    HistoryPiece piece = memory(*place, facts.from, facts.to, points);
    const qint64 border = state_.history().from();
    if (recording_ != nullptr && facts.from < border) {
        const qint64 until = std::min(facts.to, border);
        const HistoryPiece older = recording_->history(facts.address, facts.from, until, points);
        facts.source = facts.to < border ? "recording" : "both";
        piece = joined(older, piece, border);
    }
    facts.events.clear();
    state_.events().writeBetween(static_cast<double>(facts.from), static_cast<double>(facts.to),
                                 facts.address, kEventsOfAHistory, facts.events);
    return answerOf(historyJson(facts, piece));
}

} // namespace tavmir::host
