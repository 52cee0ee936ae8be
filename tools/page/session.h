// One connection of a client. All calls on the server's thread.
#ifndef TAVMIR_PAGE_SESSION_H
#define TAVMIR_PAGE_SESSION_H

#include <chrono>

namespace tavmir::page
{

using Clock = std::chrono::steady_clock;

class Session
{
public:
    virtual ~Session() = default;

    // Every fraction of a second: ends what takes too long, sends what is new.
    virtual void tick(Clock::time_point now) = 0;

    // The program ends: takes leave, as far as the client lets it.
    virtual void goAway() = 0;

    // Ends at once.
    virtual void drop() = 0;

    // Has been answered, and has asked nothing since.
    virtual bool isIdle() const = 0;

    // Is sent live messages.
    virtual bool isListening() const = 0;
};

} // namespace tavmir::page

#endif
