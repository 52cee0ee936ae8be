// Moments, one after the other.
#include "replay_content.h"

#include "page/history_json.h"
#include "page/json_writer.h"
#include "page/query_numbers.h"
#include "plan/expected_frames.h"
#include "project/printable.h"
#include "project/raw_address.h"
#include "recorded_events.h"
#include "replay_words.h"

#include <algorithm>
#include <random>
#include <set>

namespace tavmir::host
{

namespace
{

constexpr auto kCountEach = std::chrono::milliseconds(900);
constexpr auto kReadEach = std::chrono::milliseconds(1000); // the recording may go on

std::string madeEpoch()
{
    std::random_device random;
    const quint64 number = static_cast<quint64>(random()) << 32 | random();
    return QString("%1").arg(number, 16, 16, QChar('0')).toStdString();
}

} // namespace

std::unique_ptr<ReplayContent> ReplayContent::open(const ReplayOptions& options, QString& problem)
{
    std::unique_ptr<ReplayReader> reader = ReplayReader::open(options.folder, problem);
    return reader ? std::unique_ptr<ReplayContent>(new ReplayContent(options, std::move(reader)))
                  : nullptr;
}

ReplayContent::ReplayContent(const ReplayOptions& options, std::unique_ptr<ReplayReader> reader)
    : options_(options), epoch_(madeEpoch()), startedAt_(msOf(options.clocks.wall())),
      reader_(std::move(reader)), past_(options.folder),
      course_(reader_->coverage().from / recorder::kMillisecond,
              reader_->coverage().until / recorder::kMillisecond),
      wentOnAt_(options.clocks.steady()), readAt_(wentOnAt_)
{
    show(reader_->at(course_.at() * recorder::kMillisecond), true);
}

// The moment where the course is now. Files are read by the worker, in order.
void ReplayContent::read(bool isJump, const std::function<void()>& then)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++underWay_;
    }
    readAt_ = options_.clocks.steady();
    worker_.add([this, at = course_.at() * recorder::kMillisecond, isJump, then] {
        reader_->coverage();
        Read one = {reader_->at(at), isJump};
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            read_.push_back(std::move(one));
            --underWay_;
        }
        then();
    });
}

void ReplayContent::takeRead()
{
    std::vector<Read> read;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        read.swap(read_);
    }
    for (const Read& one : read) {
        show(one.moment, one.isJump);
    }
}

void ReplayContent::look()
{
    const Clock::time_point at = options_.clocks.steady();
    course_.goOn(at - wentOnAt_);
    wentOnAt_ = at;
    takeRead();
    bool isBusy = false;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isBusy = underWay_ > 0;
    }
    if (!isBusy && (course_.at() != shownAt() || at - readAt_ >= kReadEach)) {
        read(false, [] {});
    }
    if (at - countedAt_ >= kCountEach) {
        ++sequence_;
        countedAt_ = at;
    }
}

bool ReplayContent::isSameList(const ReplayMoment& moment) const
{
    const auto isSameName = [](const auto& one, const auto& other) {
        return one.first == other.first;
    };
    const auto& asides = moment.past.asides();
    const auto& before = moment_.past.asides();
    return moment.project == moment_.project &&
           std::equal(asides.begin(), asides.end(), before.begin(), before.end(), isSameName) &&
           std::equal(
               moment.values.begin(), moment.values.end(), moment_.values.begin(),
               moment_.values.end(),
               [](const recorder::RecordedValueAt& one, const recorder::RecordedValueAt& other) {
                   return one.variable == other.variable &&
                          one.variable.name == other.variable.name;
               });
}

void ReplayContent::show(const ReplayMoment& moment, bool isJump)
{
    const bool isOtherList = generation_ == 0 || !isSameList(moment);
    const bool isElsewhere = isJump || isOtherList || moment.at < moment_.at;
    ++sequence_;
    moment_ = moment;
    course_.cover(moment.coverage.from / recorder::kMillisecond,
                  moment.coverage.until / recorder::kMillisecond);
    if (isOtherList) {
        showList();
    }
    if (isElsewhere) {
        jumpedAt_ = sequence_;
        events_ = EventStore();
        lastEvent_ = 0;
    }
    events_.setSequence(sequence_);
    showEvents(moment.events);
    for (size_t i = 0; i < moment.values.size(); ++i) {
        showRow(i, moment.values[i]);
    }
}

// Other variables from now on, or others of them are set aside; of their requests as much is known
// as the recorded project says.
void ReplayContent::showList()
{
    ++generation_;
    rows_.reset(moment_.values.size(), sequence_);
    std::set<QString> addresses;
    for (const recorder::RecordedValueAt& value : moment_.values) {
        addresses.insert(value.variable.address);
    }
    polled_.clear();
    for (const PolledElement& one : polledElements(moment_.project->project)) {
        const bool isAside = moment_.past.isAside(one.name) == recorder::WhetherAside::yes;
        if (!isAside && addresses.count(project::shownAddress(one.element)) > 0) {
            polled_.push_back(one);
        }
    }
    frames_ = expectedFrames(polled_);
}

void ReplayContent::showRow(size_t index, const recorder::RecordedValueAt& value)
{
    const recorder::RecordedValue& then = value.standing.value;
    const QString text = then.isNone() ? QString(kNeverRead)
                                       : project::printable(recorder::textOf(value.variable, then));
    const std::optional<double> number = recorder::numberOf(then);
    if (text != rows_.text(index) || number != rows_.number(index)) {
        rows_.setValue(index, text, number, 0, sequence_);
    }
    rows_.setQuality(index, qualityThen(value.standing, moment_.isRecorded),
                     then.isNone() ? 0 : value.standing.at / recorder::kMillisecond, true,
                     sequence_);
}

void ReplayContent::showEvents(const std::vector<recorder::EventRow>& events)
{
    for (const recorder::EventRow& row : events) {
        if (row.at > lastEvent_) {
            events_.add(pageEvent(row));
        }
    }
    lastEvent_ = std::max(lastEvent_, events.empty() ? 0 : events.back().at);
}

void ReplayContent::ask(const std::string& what, const page::Query& query, Done done)
{
    if (what != "history") {
        done(get(what, query));
        return;
    }
    HistoryQuestion question = historyQuestion(query, shownAt());
    if (!question.problem.isEmpty()) {
        done(problem(400, question.problem));
        return;
    }
    const auto found =
        std::find_if(moment_.values.begin(), moment_.values.end(),
                     [&](const auto& value) { return value.variable.address == question.address; });
    const bool isBit = found != moment_.values.end() && found->variable.type == "bit";
    worker_.add([this, question, isBit, done] {
        const HistoryFacts facts = {question.address, question.from, question.to, "recording",
                                    isBit};
        done(answerOf(historyJson(
            facts, past_.history(question.address, question.from, question.to, question.points))));
    });
}

void ReplayContent::post(const std::string& what, const std::string& body, Done done)
{
    if (what == "write") {
        done(problem(403, "a recording cannot be written"));
        return;
    }
    if (what != "replay") {
        done(problem(404, "there is nothing of this name"));
        return;
    }
    look();
    bool isJump = false;
    const QString wrong = course_.order(body, isJump);
    if (!wrong.isEmpty()) {
        done(problem(400, wrong));
        return;
    }
    const std::string answer = course_.json(course_.at());
    read(isJump, [done, answer] { done(answerOf(answer)); });
}

} // namespace tavmir::host
