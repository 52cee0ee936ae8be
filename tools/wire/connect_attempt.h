// One attempt to connect to one address: between which ends, from when to when, and how it ended.
#ifndef TAVMIR_WIRE_CONNECT_ATTEMPT_H
#define TAVMIR_WIRE_CONNECT_ATTEMPT_H

#include "deadline.h"
#include "endpoint.h"

namespace tavmir
{
namespace wire
{

struct ConnectAttempt {
    Endpoint local; // numeric; without host when the system had not chosen one yet
    Endpoint peer;  // numeric
    Clock::time_point began;
    Clock::time_point ended;
    int error = 0; // the errno that ended it; 0: connected
};

} // namespace wire
} // namespace tavmir

#endif
