// A pause between two reads is judged where replies come; waiting for those that do not takes as
// long as the host's attempts.
#include "polling_rules.h"

#include <algorithm>
#include <string>

namespace tavmir::judge
{

namespace
{

bool isRead(const Bytes& request)
{
    const wire::FunctionCode* function = wire::findFunctionCode(request[wire::kFunctionOffset]);
    return function != nullptr && !function->write;
}

double perSecond(std::size_t count, Us time)
{
    return static_cast<double>(count) * 1e6 / static_cast<double>(std::max<Us>(1, time));
}

std::string rounded(double number)
{
    return std::to_string(static_cast<long long>(number + 0.5));
}

} // namespace

void PollingRules::take(const Event& event)
{
    switch (event.kind) {
    case Event::Kind::begins:
        restartBounds();
        refusedSince_ = event.at;
        refusedRequests_.clear();
        return;
    case Event::Kind::ends:
        restartBounds();
        judgeRate(event);
        return;
    case Event::Kind::recovered:
        restartBounds();
        return;
    case Event::Kind::request:
        request(event);
        return;
    case Event::Kind::sent:
        if (event.reply == Reply::exception) {
            Reads& reads = lines_[event.client];
            reads.refused = reads.last;
            reads.told = false;
            if (reads.lastAt) {
                reads.lastAt = event.at;
            }
        }
        return;
    case Event::Kind::closedByHost:
    case Event::Kind::closedByController:
        lines_.erase(event.client);
        return;
    case Event::Kind::tick:
        tick(event);
        return;
    default:
        return;
    }
}

void PollingRules::restartBounds()
{
    for (auto& [client, reads] : lines_) {
        reads.lastAt.reset();
        reads.refused.clear();
        reads.writesSince = 0;
        reads.told = false;
    }
}

bool PollingRules::hasBound() const
{
    if (!scene_.isPlaying) {
        return false;
    }
    const Play play = scene_.situation.play;
    return play != Play::silent && play != Play::refuseAll && play != Play::refused &&
           play != Play::rejected && play != Play::restart;
}

Us PollingRules::bound() const
{
    return scene_.host.pollWithin + scene_.host.replyTimeout * std::max(1, scene_.host.attempts);
}

Rule PollingRules::ruleOf(const Reads& reads) const
{
    if (!reads.refused.empty()) {
        return Rule::exceptionGoesOn;
    }
    return reads.writesSince > 0 ? Rule::pollBesideWrites : Rule::pollGoesOn;
}

void PollingRules::tooLong(Reads& reads, const Event& event, Us pause)
{
    if (reads.told) {
        return;
    }
    reads.told = true;
    std::string what = "nothing was read for " + std::to_string(pause / 1000) + " ms";
    if (!reads.refused.empty()) {
        what += " behind an exception";
    } else if (reads.writesSince > 1) {
        what += ", and " + std::to_string(reads.writesSince) + " writes were sent";
    }
    // One write alone did not keep it from reading.
    const bool isAlone = reads.refused.empty() && reads.writesSince == 1;
    scene_.brokenAt(isAlone ? Rule::pollGoesOn : ruleOf(reads), event.at, event.client, what);
}

void PollingRules::request(const Event& event)
{
    if (scene_.plays(Play::refuseAll)) {
        refusedRequests_.push_back(event.at);
    }
    Reads& reads = lines_[event.client];
    const bool isNew = reads.last != event.bytes;
    reads.last = event.bytes;
    if (!isNew) {
        return;
    }
    if (!isRead(event.bytes)) {
        ++reads.writesSince;
        return;
    }
    if (reads.lastAt && hasBound()) {
        const Us pause = event.at - *reads.lastAt;
        if (pause > bound()) {
            tooLong(reads, event, pause);
        } else {
            scene_.kept(ruleOf(reads));
        }
    }
    reads.lastAt = event.at;
    reads.writesSince = 0;
    reads.refused.clear();
    reads.told = false;
}

void PollingRules::tick(const Event& event)
{
    if (!hasBound()) {
        return;
    }
    for (auto& [client, reads] : lines_) {
        if (reads.lastAt && event.at - *reads.lastAt > bound()) {
            Event told = event;
            told.client = client;
            tooLong(reads, told, event.at - *reads.lastAt);
        }
    }
}

void PollingRules::judgeRate(const Event& event)
{
    if (scene_.situation.play != Play::refuseAll || refusedRequests_.empty()) {
        return;
    }
    const Us third = (event.at - refusedSince_) / 3;
    const auto countFrom = [this](Us from, Us to) {
        return static_cast<std::size_t>(
            std::count_if(refusedRequests_.begin(), refusedRequests_.end(),
                          [&](Us at) { return at >= from && at < to; }));
    };
    const double first = perSecond(countFrom(refusedSince_, refusedSince_ + third), third);
    const double last = perSecond(countFrom(event.at - third, event.at), third);
    if (last <= scene_.host.refusedRate || last <= first / 2) {
        scene_.kept(Rule::refusedRateFalls);
        return;
    }
    scene_.brokenAt(Rule::refusedRateFalls, event.at, 0,
                    rounded(first) + " requests a second in the first third, " + rounded(last) +
                        " in the last");
}

} // namespace tavmir::judge
