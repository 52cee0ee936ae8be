// What one client, and all of them together, may ask of the server.
#ifndef TAVMIR_PAGE_PAGE_LIMITS_H
#define TAVMIR_PAGE_PAGE_LIMITS_H

#include <chrono>
#include <cstddef>

namespace tavmir::page
{

struct PageLimits {
    using Ms = std::chrono::milliseconds;

    int clients = 32;                      // at a time; beyond: the place of an idle one, or 503
    std::size_t headerBytes = 8 * 1024;    // of a request, with its first line; beyond: 431
    std::size_t bodyBytes = 64 * 1024;     // of a request; beyond: 413
    std::size_t frameBytes = 64 * 1024;    // of a live message from a client; beyond: closed
    std::size_t unreadBytes = 1024 * 1024; // that a client may have sendTime to read some of
    Ms headerTime{10 * 1000};              // for a request's header; beyond: 408
    Ms bodyTime{10 * 1000};                // for its body; beyond: 408
    Ms answerTime{120 * 1000};             // for the content to answer an order; beyond: 504
    Ms idleTime{30 * 1000};                // between two requests of a connection
    Ms sendTime{30 * 1000};                // in which a client must have read something
    Ms unreadTime{5 * 1000};               // the same while it has more than `unreadBytes` to read
    Ms helloTime{10 * 1000};               // for a live client's greeting
    Ms silence{10 * 1000};           // of a live client before it is pinged; three times: gone
    Ms closeTime{1000};              // for a client to take leave
    Ms lookEvery{100};               // while somebody listens; also how often time is looked at
    Ms lookUnheard{1000};            // while nobody does
    Ms keepUpEvery{25};              // whether somebody listens or not
    Ms acceptPause{250};             // when the system has no descriptor left
    int sendBufferBytes = 64 * 1024; // of the system, for each client
};

} // namespace tavmir::page

#endif
