// What all rules share: what is known of the host, what is played just now, and where findings go.
#ifndef TAVMIR_JUDGE_SCENE_H
#define TAVMIR_JUDGE_SCENE_H

#include "verdicts.h"

#include <string>
#include <utility>

namespace tavmir::judge
{

struct Scene {
    HostTraits host;
    bool learnsAttempts = false; // as long as nothing is answered
    Situation situation;         // the last one that began
    bool isPlaying = false;      // it is not over
    Verdicts verdicts;

    bool plays(Play play) const { return isPlaying && situation.play == play; }

    // True when a time of the host is shorter than it may be.
    bool isEarly(Us time) const
    {
        return host.replyTimeout > 0 && time < host.least(host.replyTimeout);
    }

    void kept(Rule rule) { verdicts.kept(rule); }
    void broken(Rule rule, const Event& event, std::string what)
    {
        verdicts.broken(rule,
                        {event.at, event.client, situation.text, std::move(what), event.bytes});
    }
    // Of a tick and of what is no request: without bytes.
    void brokenAt(Rule rule, Us at, int client, std::string what)
    {
        verdicts.broken(rule, {at, client, situation.text, std::move(what), {}});
    }
    void check(bool isKept, Rule rule, const Event& event, const std::string& what)
    {
        if (isKept) {
            kept(rule);
        } else {
            broken(rule, event, what);
        }
    }
};

} // namespace tavmir::judge

#endif
