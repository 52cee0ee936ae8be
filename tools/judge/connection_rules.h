// Rules of connections: how many, how soon again, how seldom, and whether the host comes back.
#ifndef TAVMIR_JUDGE_CONNECTION_RULES_H
#define TAVMIR_JUDGE_CONNECTION_RULES_H

#include "scene.h"

#include <optional>
#include <set>
#include <vector>

namespace tavmir::judge
{

class ConnectionRules
{
public:
    explicit ConnectionRules(Scene& scene) : scene_(scene) {}
    void take(const Event& event);

private:
    void begins();
    void ends(const Event& event);
    void connected(const Event& event);
    void ended(const Event& event, bool byHost);
    void notRecovered(const Event& event);
    void tick(const Event& event);
    void judgeGrowth(const Event& event);
    bool canConnect() const;
    bool isAboutConnections() const;

    Scene& scene_;
    std::set<int> open_;
    int connections_ = 0;
    std::optional<Us> endedAt_; // by the controller, and not opened since
    std::optional<Us> awaited_; // since when the host could connect again
    std::optional<Us> crowded_; // since when there is more than one
    std::vector<Us> pauses_;    // while connections are ended at once
};

} // namespace tavmir::judge

#endif
