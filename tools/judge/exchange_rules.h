// Rules of one request after the other: when the next may be sent, what it may be, and what each
// kind of reply leads to.
#ifndef TAVMIR_JUDGE_EXCHANGE_RULES_H
#define TAVMIR_JUDGE_EXCHANGE_RULES_H

#include "flight.h"
#include "scene.h"

#include <map>
#include <optional>
#include <string>

namespace tavmir::judge
{

class ExchangeRules
{
public:
    explicit ExchangeRules(Scene& scene) : scene_(scene) {}
    void take(const Event& event);

private:
    void request(const Event& event);
    // `event` is the next request behind `before`.
    void behindWaiting(Flight& before, const Event& event, bool isRepeated);
    void behindAnswer(const Flight& before, const Event& event, bool isRepeated);
    void behindException(bool isRepeated);
    void behindBad(const Flight& before, const Event& event, bool isRepeated);
    void badWasRefused(Reply bad);
    bool tooEarly(const Flight& before, const Event& event, bool isRepeated);
    void learn(const Flight& before, const Event& event, bool isRepeated);

    void newRequest(Line& line, const Event& event);
    void repeated(Flight& flight, const Event& event);
    void checkAttempts(const Flight& flight, const Event& event);
    void checkNumber(Line& line, const Event& event);

    void sent(const Event& event);
    void ended(Line& line, const Event& event);
    void closed(const Event& event, bool byHost);
    void closedByHost(const Flight& flight, const Event& event);
    void forgetDoubtful(Us now);
    void straysWereDropped(Flight& flight);

    Scene& scene_;
    std::map<int, Line> lines_;
    std::map<Reply, int> takenInARow_;   // bad replies behind which the host went on at once
    std::optional<Flight> lost_;         // not answered when its connection ended
    std::optional<Flight> acknowledged_; // the last write that was
};

} // namespace tavmir::judge

#endif
