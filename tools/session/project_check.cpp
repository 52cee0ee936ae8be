// One pass, then one after the other.
#include "project_check.h"

#include <thread>

namespace tavmir::host
{

namespace
{

constexpr int kOncePerDayMs = 24 * 3600 * 1000;
constexpr int kSlackMs = 2000;    // for threads that are late and a machine that is busy
constexpr int kNeverAnswered = 3; // requests in a row after which a station that never did is left
constexpr int kGoneSilent = 5;    // the same of one that did
constexpr auto kLook = std::chrono::milliseconds(2);

} // namespace

SessionOptions ProjectCheck::sessionOptions()
{
    SessionOptions options;
    options.passMs = kOncePerDayMs;
    options.searches = false;
    options.mostRetries = 1;
    return options;
}

ProjectCheck::ProjectCheck(HostSession& session, const project::Connection& connection, Tell tell)
    : session_(session), tell_(std::move(tell)),
      askMs_(2 * (connection.connectTimeoutMs + 2 * connection.replyTimeoutMs) + kSlackMs),
      reader_(session.feed().subscribe()), polled_(session.polled()), pass_(polled_)
{
    for (const PolledElement& one : polled_) {
        stations_[one.station];
    }
    result_.variables.resize(polled_.size());
}

CheckResult ProjectCheck::run()
{
    askTogether();
    session_.poll({});
    for (auto& [number, station] : stations_) {
        station.unanswered = 0; // alone some may answer
        station.whyGivenUp = QString();
        session_.enableStation(number, true);
    }
    for (size_t i = 0; i < polled_.size() && !session_.isStopping(); ++i) {
        askAlone(i);
        tell_(pass_.requests(), i + 1, polled_.size());
    }
    for (size_t i = 0; i < polled_.size(); ++i) {
        result_.variables[i].together = pass_.variables()[i];
    }
    result_.requests = pass_.requests();
    for (const auto& [number, station] : stations_) {
        if (!station.hasAnswered && station.unanswered > 0) {
            result_.silentStations.push_back(number);
        }
    }
    return result_;
}

void ProjectCheck::askTogether()
{
    Clock::time_point last = Clock::now();
    while (!pass_.isOver() && !allGivenUp() && !session_.isStopping()) {
        reader_->read([&](const FeedEntry& entry) {
            if (pass_.take(entry)) {
                takeAnswer(pass_.station(), pass_.last());
                last = Clock::now();
            }
        });
        for (const auto& [number, station] : stations_) {
            if (!station.whyGivenUp.isNull()) {
                session_.enableStation(number, false);
            }
        }
        if (Clock::now() > last + std::chrono::milliseconds(askMs_)) {
            return; // nothing is sent any more
        }
        tell_(pass_.requests(), 0, polled_.size());
        std::this_thread::sleep_for(kLook);
    }
}

bool ProjectCheck::allGivenUp() const
{
    return std::all_of(stations_.begin(), stations_.end(),
                       [](const auto& station) { return !station.second.whyGivenUp.isNull(); });
}

void ProjectCheck::askAlone(size_t variable)
{
    CheckedVariable& checked = result_.variables[variable];
    const int number = polled_[variable].station;
    Station& station = stations_[number];
    if (!station.whyGivenUp.isNull()) {
        checked.alone.why = station.whyGivenUp;
        return;
    }
    checked.alone = ask(polled_[variable], checked.bytes);
    takeAnswer(number, checked.alone);
    if (checked.alone.end == CheckEnd::answered) {
        station.answering = variable;
    } else if (station.hasAnswered && station.unanswered >= kGoneSilent) {
        askAgainWhoAnswered(number);
    }
}

CheckAnswer ProjectCheck::ask(const PolledElement& variable, QByteArray& bytes)
{
    const Outcome outcome = session_.read(variable.element, Deadline(askMs_));
    CheckAnswer answer;
    answer.why = outcome.reason;
    double ms = 0;
    bool isDecided = false; // by a request that was not answered
    reader_->read([&](const FeedEntry& entry) {
        if (entry.kind != FeedKind::exchange || entry.exchange.kind != RequestKind::read) {
            return;
        }
        const CheckAnswer one = answerOf(entry.exchange);
        ms += one.ms;
        if (!isDecided || one.end != CheckEnd::answered) {
            answer = one;
        }
        isDecided = one.end != CheckEnd::answered;
    });
    if (outcome.ok()) {
        answer = CheckAnswer();
        answer.end = CheckEnd::answered;
        bytes = valueBytes(variable.element, outcome.bytes);
    }
    answer.ms = ms;
    return answer;
}

void ProjectCheck::takeAnswer(int number, const CheckAnswer& answer)
{
    Station& station = stations_[number];
    if (answer.end == CheckEnd::answered || answer.end == CheckEnd::refused) {
        station.hasAnswered = true;
        station.unanswered = 0;
        return;
    }
    ++station.unanswered;
    const int most = station.hasAnswered ? 2 * kGoneSilent : kNeverAnswered;
    if (station.unanswered >= most) {
        station.whyGivenUp = QString("not asked: station %1 does not answer").arg(number);
    }
}

// Single addresses may be silent: whether the station is, one that answered before says.
void ProjectCheck::askAgainWhoAnswered(int number)
{
    Station& station = stations_[number];
    QByteArray bytes;
    if (station.answering) {
        takeAnswer(number, ask(polled_[*station.answering], bytes));
    }
    if (station.unanswered > 0) {
        station.whyGivenUp = QString("not asked: station %1 does not answer any more").arg(number);
    }
}

} // namespace tavmir::host
