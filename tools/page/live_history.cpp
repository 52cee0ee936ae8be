// The past of one value, out of memory and recording.
#include "live_content.h"
#include "polled_place.h"
#include "query_numbers.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr size_t kEventsOfAHistory = 200;

} // namespace

HistoryPiece LiveContent::memory(size_t variable, qint64 from, qint64 to, size_t points) const
{
    const std::optional<size_t> track = state_.trackOf(variable);
    if (!track) {
        return HistoryPiece();
    }
    return state_.history().piece(*track, from, to, points);
}

// What the memory has of it.
LiveContent::Past LiveContent::past(const page::Query& query) const
{
    Past past;
    const HistoryQuestion question = historyQuestion(query, static_cast<qint64>(now()));
    if (!question.problem.isEmpty()) {
        past.refusal = problem(400, question.problem);
        return past;
    }
    const std::optional<size_t> place = placeOf(state_.polled(), question.address);
    if (!place) {
        past.refusal = problem(404, QString("%1: not polled").arg(question.address));
        return past;
    }
    past.facts = {question.address, question.from, question.to, "memory",
                  state_.polled()[*place].element.isBit()};
    past.border = state_.history().from();
    const bool reachesBack = recording_ != nullptr && question.from < past.border;
    past.recorded =
        !reachesBack ? 0 : question.share(std::min(question.to, past.border) - question.from);
    const size_t rest =
        past.recorded == 0 ? question.points : question.share(question.to - past.border);
    past.memory = memory(*place, question.from, question.to, rest);
    past.memory.events = state_.events().between(
        static_cast<double>(reachesBack ? std::max(question.from, past.border) : question.from),
        static_cast<double>(question.to), question.address, kEventsOfAHistory);
    return past;
}

// With what the recording has.
page::Answer LiveContent::answerTo(const Past& past, HistorySource* recording)
{
    if (past.refusal) {
        return *past.refusal;
    }
    if (past.recorded == 0) {
        return answerOf(historyJson(past.facts, past.memory));
    }
    HistoryFacts facts = past.facts;
    const qint64 until = std::min(facts.to, past.border);
    facts.source = facts.to < past.border ? "recording" : "both";
    const HistoryPiece older = recording->history(facts.address, facts.from, until, past.recorded);
    if (!older.oldest) {
        facts.source = "memory";
    }
    return answerOf(historyJson(facts, joined(older, past.memory, past.border)));
}

page::Answer LiveContent::history(const page::Query& query) const
{
    return answerTo(past(query), recording_);
}

void LiveContent::ask(const std::string& what, const page::Query& query, Done done)
{
    if (what != "history" || !elsewhere_) {
        done(get(what, query));
        return;
    }
    lookIfOld();
    Past past = this->past(query);
    if (past.recorded == 0) {
        done(answerTo(past, nullptr));
        return;
    }
    elsewhere_([past = std::move(past), recording = recording_, done] {
        done(answerTo(past, recording));
    });
}

void LiveContent::tellStorage(const QString& text, bool bad)
{
    Told told;
    told.event.at = now();
    told.event.kind = "storage";
    told.event.text = text;
    told.event.bad = bad;
    const std::lock_guard<std::mutex> lock(mutex_);
    told_.push_back(told);
}

} // namespace tavmir::host
