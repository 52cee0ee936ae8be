// Plays a situation: what a host is sent in return for each request. Decides only; who sends has
// sockets and a clock.
#ifndef TAVMIR_JUDGE_STAGE_H
#define TAVMIR_JUDGE_STAGE_H

#include "event.h"

#include <vector>

namespace tavmir::judge
{

struct Say {
    Us after = 0; // from now
    Bytes bytes;
    Reply reply = Reply::right;
};

struct Act {
    std::vector<Say> says;
    bool close = false; // the connection, instead
};

class Stage
{
public:
    // Nothing but right replies before the first and behind the last.
    void begin(const Situation& situation);
    void end();

    // right  the reply that the request should have; empty: it has none
    Act asked(int client, const Bytes& request, const Bytes& right);
    // What was to come on this connection comes no more.
    void closed(int client);

    // How often the situation has happened since it began.
    int happened() const { return happened_; }

private:
    enum class Step { none, awaitsRepetition, awaitsNext };

    bool isHit(const Bytes& request, bool isNew);
    Act late(const Bytes& request, const Bytes& right, bool isNew);
    Act duplicate(const Bytes& request, const Bytes& right, bool isNew);
    Act once(const Bytes& request, const Bytes& right, bool isNew);
    Act hit(const Bytes& request, const Bytes& right);

    Situation situation_;
    int happened_ = 0;
    int matching_ = 0; // requests that it could have happened to
    int client_ = 0;
    Bytes last_;    // request
    Bytes refused_; // request that is refused again when it is repeated
    Step step_ = Step::none;
    Bytes waiting_; // the request whose reply is late
    Bytes kept_;    // that reply
};

} // namespace tavmir::judge

#endif
