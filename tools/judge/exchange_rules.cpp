// Which rule a request breaks depends on what its predecessor was sent in return.
#include "exchange_rules.h"

#include <algorithm>
#include <utility>

namespace tavmir::judge
{

namespace
{

// What was sent so shortly before the end of a connection may have been lost with it.
constexpr Us kDoubtful = milliseconds(1000);

Rule ruleOf(Reply stray)
{
    if (stray == Reply::late) {
        return Rule::lateDropped;
    }
    return stray == Reply::duplicate ? Rule::duplicateDropped : Rule::foreignDropped;
}

Rule ruleOfBad(Reply bad)
{
    return bad == Reply::tooShort ? Rule::shortRefused : Rule::longRefused;
}

std::string nameOf(Reply stray)
{
    if (stray == Reply::late) {
        return "a late reply";
    }
    return stray == Reply::duplicate ? "the second copy of a reply" : "a foreign reply";
}

std::string after(Us time)
{
    return std::to_string((time + 500) / 1000) + " ms";
}

Us earliest(const Event& event)
{
    return event.busySince > 0 ? std::min(event.busySince, event.at) : event.at;
}

unsigned transactionOf(const Event& event)
{
    return wire::bigEndian16(event.bytes.data());
}

std::string numbered(unsigned transaction)
{
    return "#" + std::to_string(transaction);
}

} // namespace

void ExchangeRules::take(const Event& event)
{
    switch (event.kind) {
    case Event::Kind::request:
        request(event);
        return;
    case Event::Kind::sent:
        sent(event);
        return;
    case Event::Kind::closedByHost:
        closed(event, true);
        return;
    case Event::Kind::closedByController:
        closed(event, false);
        return;
    default:
        return;
    }
}

void ExchangeRules::request(const Event& event)
{
    Line& line = lines_[event.client];
    if (!line.flight) {
        newRequest(line, event);
        return;
    }
    Flight& before = *line.flight;
    const bool isRepeated = before.bytes == event.bytes;
    const std::optional<Reply> end = before.end;
    if (!end) {
        behindWaiting(before, event, isRepeated);
    } else if (*end == Reply::right) {
        behindAnswer(before, event, isRepeated);
    } else if (*end == Reply::exception) {
        behindException(isRepeated);
    } else if (*end == Reply::cut) {
        scene_.broken(Rule::cutCloses, event,
                      "it was sent on, " + after(event.at - before.endAt) + " after half a reply");
    } else {
        behindBad(before, event, isRepeated);
    }
    if (isRepeated) {
        repeated(before, event);
    } else {
        newRequest(line, event);
    }
}

bool ExchangeRules::tooEarly(const Flight& before, const Event& event, bool isRepeated)
{
    const Us waited = event.at - before.lastAt;
    if (!scene_.isEarly(event.at - before.earliestAt)) {
        return false;
    }
    const std::string what = std::string(isRepeated ? "it was repeated" : "it was sent") +
                             " after " + after(waited) + ", while " +
                             numbered(before.transaction()) + " waited";
    if (!before.strays.empty()) {
        scene_.broken(ruleOf(before.strays.back()), event,
                      what + " and only " + nameOf(before.strays.back()) + " had come");
    } else if (before.isSlow) {
        scene_.broken(Rule::slowPatience, event, what);
    } else {
        scene_.broken(isRepeated ? Rule::waitOut : Rule::oneInFlight, event, what);
    }
    return true;
}

void ExchangeRules::behindWaiting(Flight& before, const Event& event, bool isRepeated)
{
    if (tooEarly(before, event, isRepeated)) {
        return;
    }
    learn(before, event, isRepeated);
    straysWereDropped(before);
    if (isRepeated) {
        scene_.kept(Rule::waitOut);
        return;
    }
    scene_.kept(Rule::oneInFlight);
    if (transactionOf(event) == before.transaction()) {
        scene_.broken(Rule::sameBytes, event,
                      "it has the number of the request before, which had no reply, but not its "
                      "bytes");
        return;
    }
    scene_.kept(Rule::attempts);
}

void ExchangeRules::learn(const Flight& before, const Event& event, bool isRepeated)
{
    if (!scene_.plays(Play::silent)) {
        return;
    }
    if (scene_.host.replyTimeout == 0) {
        scene_.host.replyTimeout = event.at - before.lastAt;
    }
    if (scene_.learnsAttempts && !isRepeated) {
        scene_.host.attempts = std::max(scene_.host.attempts, before.sendings);
    }
}

void ExchangeRules::behindAnswer(const Flight& before, const Event& event, bool isRepeated)
{
    if (!isRepeated) {
        scene_.kept(Rule::oneInFlight);
        if (before.isWrite()) {
            scene_.kept(Rule::writeOnce);
        }
        return;
    }
    const Us took = before.endAt - before.earliestAt;
    if (scene_.host.replyTimeout == 0 || !scene_.isEarly(took)) {
        return; // reply and repetition met on their way
    }
    scene_.broken(before.isWrite() ? Rule::writeOnce : Rule::idFresh, event,
                  "it was sent again, " + after(event.at - before.endAt) + " after its reply");
}

void ExchangeRules::behindException(bool isRepeated)
{
    scene_.kept(Rule::exceptionKeepsLine);
    if (!isRepeated) {
        scene_.kept(Rule::oneInFlight);
        scene_.kept(Rule::attempts);
    }
}

// One alone may be a request given up: there are hosts that count failures over all requests.
void ExchangeRules::behindBad(const Flight& before, const Event& event, bool isRepeated)
{
    const Reply bad = *before.end;
    if (isRepeated) {
        badWasRefused(bad);
        return;
    }
    if (before.sendings >= scene_.host.attempts || ++takenInARow_[bad] < 2) {
        return;
    }
    takenInARow_[bad] = 0;
    scene_.broken(ruleOfBad(bad), event,
                  "it was sent behind sending " + std::to_string(before.sendings) + " of " +
                      numbered(before.transaction()) +
                      ", whose reply was none, and so it went the time before");
}

void ExchangeRules::badWasRefused(Reply bad)
{
    takenInARow_[bad] = 0;
    scene_.kept(ruleOfBad(bad));
}

void ExchangeRules::newRequest(Line& line, const Event& event)
{
    const bool isFirst = !line.flight;
    Flight flight;
    flight.bytes = event.bytes;
    flight.lastAt = event.at;
    flight.earliestAt = earliest(event);
    flight.isSlow = scene_.plays(Play::slow);
    flight.strays = std::exchange(line.strays, {});
    if (!isFirst && line.flight->transaction() == flight.transaction() && !line.flight->end) {
        line.flight = flight; // told already: neither a repetition nor a request of its own
        return;
    }
    if (isFirst && acknowledged_ && acknowledged_->bytes == event.bytes) {
        scene_.broken(Rule::writeOnce, event,
                      "it was sent again on a new connection, though it was acknowledged");
    }
    if (isFirst && lost_ && lost_->bytes == event.bytes) {
        flight.sendings = lost_->sendings + 1;
        checkAttempts(flight, event);
    }
    lost_.reset();
    line.flight = flight;
    checkNumber(line, event);
}

void ExchangeRules::repeated(Flight& flight, const Event& event)
{
    if (flight.end != Reply::right) {
        scene_.kept(Rule::sameBytes);
        ++flight.sendings;
        checkAttempts(flight, event);
    }
    flight.lastAt = event.at;
    flight.earliestAt = earliest(event);
    flight.end.reset();
    flight.strays.clear();
}

void ExchangeRules::checkAttempts(const Flight& flight, const Event& event)
{
    const bool isLearning = scene_.learnsAttempts && scene_.plays(Play::silent);
    if (scene_.host.attempts > 0 && !isLearning) {
        scene_.check(flight.sendings <= scene_.host.attempts, Rule::attempts, event,
                     "this is sending " + std::to_string(flight.sendings) + " of " +
                         std::to_string(scene_.host.attempts));
    }
}

void ExchangeRules::checkNumber(Line& line, const Event& event)
{
    const unsigned number = transactionOf(event);
    const bool isKnown =
        std::find(line.numbers.begin(), line.numbers.end(), number) != line.numbers.end();
    if (!line.numbers.empty()) {
        scene_.check(!isKnown, Rule::idFresh, event,
                     "another of the last " + std::to_string(line.numbers.size()) +
                         " requests had the number " + std::to_string(number));
    }
    line.numbers.push_back(number);
    if (line.numbers.size() > Line::kMostNumbers) {
        line.numbers.pop_front();
    }
}

void ExchangeRules::sent(const Event& event)
{
    Line& line = lines_[event.client];
    switch (event.reply) {
    case Reply::late:
    case Reply::duplicate:
    case Reply::foreign:
        if (line.flight && !line.flight->end) {
            line.flight->strays.push_back(event.reply);
        } else {
            line.strays.push_back(event.reply);
        }
        return;
    default:
        ended(line, event);
        return;
    }
}

void ExchangeRules::ended(Line& line, const Event& event)
{
    const bool isAnswer = line.flight && !line.flight->end && event.bytes.size() >= 2 &&
                          transactionOf(event) == line.flight->transaction();
    if (!isAnswer && event.reply != Reply::cut) {
        return; // of an earlier sending
    }
    if (!line.flight) {
        return;
    }
    Flight& flight = *line.flight;
    flight.end = event.reply;
    flight.endAt = event.at;
    if (event.reply != Reply::right) {
        return;
    }
    straysWereDropped(flight);
    if (flight.isSlow) {
        scene_.kept(Rule::slowPatience);
    }
    if (flight.isWrite()) {
        acknowledged_ = flight;
    }
}

void ExchangeRules::straysWereDropped(Flight& flight)
{
    for (const Reply stray : flight.strays) {
        scene_.kept(ruleOf(stray));
    }
    flight.strays.clear();
}

void ExchangeRules::closed(const Event& event, bool byHost)
{
    const auto found = lines_.find(event.client);
    if (found == lines_.end()) {
        return;
    }
    if (found->second.flight) {
        Flight& flight = *found->second.flight;
        if (byHost) {
            closedByHost(flight, event);
        }
        lost_.reset();
        if (flight.end != Reply::right) {
            lost_ = flight;
        }
        forgetDoubtful(event.at);
    }
    lines_.erase(found);
}

void ExchangeRules::closedByHost(const Flight& flight, const Event& event)
{
    if (!flight.end) {
        for (const Reply stray : flight.strays) {
            scene_.kept(ruleOf(stray)); // giving the connection up is no mistake
        }
        if (flight.isSlow && scene_.isEarly(event.at - flight.earliestAt)) {
            scene_.brokenAt(Rule::slowPatience, event.at, event.client,
                            "the connection was ended " + after(event.at - flight.lastAt) +
                                " after " + numbered(flight.transaction()) + " had been sent");
        }
        return;
    }
    switch (*flight.end) {
    case Reply::cut:
        scene_.kept(Rule::cutCloses);
        return;
    case Reply::tooShort:
    case Reply::tooLong:
        badWasRefused(*flight.end);
        return;
    case Reply::exception:
        scene_.brokenAt(Rule::exceptionKeepsLine, event.at, event.client,
                        "the connection was ended " + after(event.at - flight.endAt) + " after " +
                            numbered(flight.transaction()) + " had been refused");
        return;
    default:
        return;
    }
}

void ExchangeRules::forgetDoubtful(Us now)
{
    if (acknowledged_ && now - acknowledged_->endAt < kDoubtful) {
        acknowledged_.reset();
    }
}

} // namespace tavmir::judge
