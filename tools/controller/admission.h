// Whether a request is served at all: the controller has some stations and lacks some addresses,
// and it serves so many requests in a second. Says why not; it changes no memory and knows no
// clock.
#ifndef TAVMIR_CONTROLLER_ADMISSION_H
#define TAVMIR_CONTROLLER_ADMISSION_H

#include "rate_limit.h"
#include "refused_addresses.h"
#include "request.h"
#include "station_list.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tavmir::controller
{

struct AdmissionRules {
    std::vector<RefusedRange> refused;
    std::optional<Stations> stations; // none: all 256
    bool silentForOthers = false;     // else exception 11
    int mostRequestsPerSecond = 0;    // 0: any number
    bool delaysAboveRate = false;     // else exception 6
};

struct Verdict {
    bool aboveRate = false;
    bool unknownStation = false;
    bool refusedAddress = false;
    bool isAnswered = true;
    std::uint8_t exceptionCode = 0; // 0: it is served
    std::int64_t waitUs = 0;        // the answer is held back so long
};

class Gatekeeper
{
public:
    explicit Gatekeeper(AdmissionRules rules = AdmissionRules());

    // The rate is looked at first, then the station, then whether the request is well formed, then
    // its addresses. What is refused for the rate takes no part of it.
    Verdict judge(const Request& request, std::int64_t nowUs);

private:
    AdmissionRules rules_;
    RateLimit rate_;
};

} // namespace tavmir::controller

#endif
