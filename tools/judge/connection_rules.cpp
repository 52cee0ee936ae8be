// Pauses are counted from the moment when the controller ended a connection: when a host notices
// is its own affair.
#include "connection_rules.h"

#include <string>

namespace tavmir::judge
{

namespace
{

constexpr Us kCrowdedFor = milliseconds(1000);
constexpr std::size_t kLeastPauses = 3;

std::string inMs(Us time)
{
    return std::to_string((time + 500) / 1000) + " ms";
}

} // namespace

void ConnectionRules::take(const Event& event)
{
    switch (event.kind) {
    case Event::Kind::begins:
        begins();
        return;
    case Event::Kind::ends:
        ends(event);
        return;
    case Event::Kind::recovered:
        if (!isAboutConnections()) {
            scene_.kept(Rule::recovers);
        }
        return;
    case Event::Kind::notRecovered:
        notRecovered(event);
        return;
    case Event::Kind::connected:
        connected(event);
        return;
    case Event::Kind::closedByHost:
        ended(event, true);
        return;
    case Event::Kind::closedByController:
        ended(event, false);
        return;
    case Event::Kind::tick:
        tick(event);
        return;
    default:
        return;
    }
}

// False while whoever connects is turned away.
bool ConnectionRules::canConnect() const
{
    return !scene_.plays(Play::restart) && !scene_.plays(Play::refused) &&
           !scene_.plays(Play::rejected);
}

bool ConnectionRules::isAboutConnections() const
{
    const Play play = scene_.situation.play;
    return play == Play::restart || play == Play::refused || play == Play::rejected ||
           play == Play::disconnect;
}

void ConnectionRules::begins()
{
    pauses_.clear();
    if (!canConnect()) {
        awaited_.reset();
    }
}

void ConnectionRules::ends(const Event& event)
{
    if (scene_.situation.play == Play::rejected) {
        judgeGrowth(event);
    }
    if (isAboutConnections() && open_.empty() && !awaited_) {
        awaited_ = event.at;
    }
}

void ConnectionRules::judgeGrowth(const Event& event)
{
    const Us rest = scene_.host.least(scene_.host.reconnectRest);
    if (pauses_.size() < kLeastPauses) {
        return;
    }
    const bool grows = 2 * pauses_.back() >= 3 * pauses_.front() || pauses_.back() >= rest;
    if (grows) {
        scene_.kept(Rule::reconnectGrows);
        return;
    }
    scene_.brokenAt(Rule::reconnectGrows, event.at, 0,
                    "the first pause was " + inMs(pauses_.front()) + ", number " +
                        std::to_string(pauses_.size()) + " was " + inMs(pauses_.back()));
}

void ConnectionRules::connected(const Event& event)
{
    open_.insert(event.client);
    if (++connections_ > 1) {
        scene_.kept(Rule::oneConnection);
    }
    if (open_.size() > 1 && !crowded_) {
        crowded_ = event.at;
    }
    if (endedAt_) {
        const Us pause = event.at - *endedAt_;
        const bool isKept = pause >= scene_.host.least(scene_.host.reconnectPause);
        scene_.check(isKept, Rule::reconnectPause, event,
                     "a connection was opened " + inMs(pause) + " after the end of the last one");
        if (scene_.plays(Play::rejected)) {
            pauses_.push_back(pause);
        }
        endedAt_.reset();
    }
    if (awaited_ && canConnect()) {
        scene_.kept(Rule::reconnectWithin);
        awaited_.reset();
    }
}

void ConnectionRules::ended(const Event& event, bool byHost)
{
    open_.erase(event.client);
    if (open_.size() <= 1) {
        crowded_.reset();
    }
    if (byHost) {
        return;
    }
    endedAt_ = event.at;
    if (canConnect() && open_.empty()) {
        awaited_ = event.at;
    }
}

void ConnectionRules::tick(const Event& event)
{
    if (crowded_ && event.at - *crowded_ >= kCrowdedFor) {
        scene_.brokenAt(Rule::oneConnection, event.at, 0,
                        std::to_string(open_.size()) + " connections have been open for " +
                            inMs(event.at - *crowded_));
        crowded_.reset();
    }
    if (awaited_ && canConnect() && event.at - *awaited_ > scene_.host.reconnectWithin) {
        scene_.brokenAt(Rule::reconnectWithin, event.at, 0,
                        "no connection for " + inMs(event.at - *awaited_));
        awaited_.reset();
    }
}

void ConnectionRules::notRecovered(const Event& event)
{
    if (awaited_) {
        scene_.brokenAt(Rule::reconnectWithin, event.at, 0,
                        "no connection for " + inMs(event.at - *awaited_));
        awaited_.reset();
        return;
    }
    if (open_.empty() && isAboutConnections()) {
        return; // told when its time was over
    }
    scene_.brokenAt(Rule::recovers, event.at, 0,
                    open_.empty() ? "the host has no connection any more"
                                  : "the host is connected, and does not go on");
}

} // namespace tavmir::judge
