// A host goes on when it sends a request behind one that was answered rightly.
#include "course.h"

namespace tavmir::judge
{

Course::Door Course::door() const
{
    if (phase_ != Phase::playing) {
        return Door::open;
    }
    switch (script_.situations[begun_ - 1].play) {
    case Play::restart:
    case Play::refused:
        return Door::shut;
    case Play::rejected:
        return Door::turnsAway;
    default:
        return Door::open;
    }
}

std::vector<Event> Course::take(const Event& event)
{
    std::vector<Event> made;
    if (phase_ == Phase::over) {
        return made;
    }
    if (phase_ != Phase::playing && goesOn(event)) {
        hostCame_ = true;
        if (phase_ == Phase::recovering) {
            makes(Event::Kind::recovered, event.at, made);
        }
        begin(event.at, made);
    } else if (event.kind == Event::Kind::tick) {
        tick(event.at, made);
    }
    return made;
}

bool Course::goesOn(const Event& event)
{
    if (event.kind == Event::Kind::sent && event.reply == Reply::right) {
        answered_.insert(event.client);
    } else if (event.kind == Event::Kind::closedByHost ||
               event.kind == Event::Kind::closedByController) {
        answered_.erase(event.client);
    }
    return event.kind == Event::Kind::received && answered_.count(event.client) != 0;
}

void Course::tick(Us now, std::vector<Event>& made)
{
    const Us passed = now - since_;
    if (phase_ == Phase::waiting && passed >= script_.waitForHost) {
        phase_ = Phase::over;
        makes(Event::Kind::over, now, made);
        return;
    }
    if (phase_ == Phase::recovering && passed >= script_.host.reconnectWithin) {
        makes(Event::Kind::notRecovered, now, made);
        phase_ = Phase::over;
        makes(Event::Kind::over, now, made);
        return;
    }
    if (phase_ != Phase::playing) {
        return;
    }
    const Situation& situation = script_.situations[begun_ - 1];
    const bool oftenEnough = situation.times > 0 && stage_.happened() >= situation.times;
    if (passed < situation.lasts && !oftenEnough) {
        return;
    }
    stage_.end();
    phase_ = Phase::recovering;
    since_ = now;
    answered_.clear();
    makes(Event::Kind::ends, now, made);
}

void Course::begin(Us now, std::vector<Event>& made)
{
    answered_.clear();
    since_ = now;
    if (begun_ == script_.situations.size()) {
        phase_ = Phase::over;
        isComplete_ = true;
        makes(Event::Kind::over, now, made);
        return;
    }
    phase_ = Phase::playing;
    stage_.begin(script_.situations[begun_++]);
    makes(Event::Kind::begins, now, made);
}

void Course::makes(Event::Kind kind, Us now, std::vector<Event>& made)
{
    Event event;
    event.kind = kind;
    event.at = now;
    if (begun_ > 0) {
        event.situation = script_.situations[begun_ - 1];
    }
    made.push_back(event);
}

} // namespace tavmir::judge
