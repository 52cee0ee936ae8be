// How many requests the controller serves in a second, whichever clients send them. Each request
// takes its part of a second; parts that nobody used are kept for a tenth of a second, so that
// requests need not come like a clock's ticks. It knows no clock.
#ifndef TAVMIR_CONTROLLER_RATE_LIMIT_H
#define TAVMIR_CONTROLLER_RATE_LIMIT_H

#include <cstdint>

namespace tavmir::controller
{

class RateLimit
{
public:
    // perSecond  0: any number
    explicit RateLimit(int perSecond = 0);

    // Of a request that comes at `nowUs` microseconds of a steady clock: how long until there is
    // room for it; 0: at once.
    std::int64_t waitUs(std::int64_t nowUs) const;

    // The request is served, at once or after its wait, and takes its part.
    void take(std::int64_t nowUs);

private:
    std::int64_t partUs_;       // of one request; 0: no limit
    std::int64_t keptUs_;       // unused time that requests may still take
    std::int64_t usedUpTo_ = 0; // the time that served requests have taken
};

} // namespace tavmir::controller

#endif
