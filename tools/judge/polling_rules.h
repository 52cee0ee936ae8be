// Rules of going on: reads beside writes, behind a refused request, and ever more seldom when
// everything is refused.
#ifndef TAVMIR_JUDGE_POLLING_RULES_H
#define TAVMIR_JUDGE_POLLING_RULES_H

#include "scene.h"

#include <map>
#include <optional>
#include <vector>

namespace tavmir::judge
{

class PollingRules
{
public:
    explicit PollingRules(Scene& scene) : scene_(scene) {}
    void take(const Event& event);

private:
    // Of one connection.
    struct Reads {
        std::optional<Us> lastAt; // none: no bound runs
        Bytes last;               // the last request
        int writesSince = 0;
        Bytes refused; // behind which no other request has come
        bool told = false;
    };

    void request(const Event& event);
    void tick(const Event& event);
    void restartBounds();
    void judgeRate(const Event& event);
    // The rule that a pause between two reads is a matter of.
    Rule ruleOf(const Reads& reads) const;
    // Nobody can tell while nothing, or everything, is refused.
    bool hasBound() const;
    Us bound() const;
    void tooLong(Reads& reads, const Event& event, Us pause);

    Scene& scene_;
    std::map<int, Reads> lines_;
    Us refusedSince_ = 0;
    std::vector<Us> refusedRequests_;
};

} // namespace tavmir::judge

#endif
