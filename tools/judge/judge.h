// Judges a host from what is seen of it: takes events, keeps the verdicts. No clock, no socket.
#ifndef TAVMIR_JUDGE_JUDGE_H
#define TAVMIR_JUDGE_JUDGE_H

#include "connection_rules.h"
#include "exchange_rules.h"
#include "frame_rules.h"
#include "polling_rules.h"
#include "request_stream.h"
#include "scene.h"
#include "write_rules.h"

#include <map>

namespace tavmir::judge
{

class Judge
{
public:
    explicit Judge(const HostTraits& host)
    {
        scene_.host = host;
        scene_.learnsAttempts = host.attempts == 0;
    }
    Judge(const Judge&) = delete;
    Judge& operator=(const Judge&) = delete;

    // Events in the order in which they happen.
    void take(const Event& event);

    const Verdicts& verdicts() const { return scene_.verdicts; }
    // With what was learned.
    const HostTraits& host() const { return scene_.host; }

private:
    void setScene(const Event& event);
    void dispatch(const Event& event);
    void tick(const Event& event);

    Scene scene_;
    std::map<int, RequestStream> streams_;
    FrameRules frames_{scene_};
    ExchangeRules exchanges_{scene_};
    ConnectionRules connections_{scene_};
    PollingRules polling_{scene_};
    WriteRules writes_{scene_};
};

} // namespace tavmir::judge

#endif
