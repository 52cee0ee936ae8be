// One sentence: why a value is there, or is not.
#ifndef TAVMIR_PAGE_EXPLAIN_CONCLUSION_H
#define TAVMIR_PAGE_EXPLAIN_CONCLUSION_H

#include "feed/line_health.h"
#include "feed/quality.h"

#include <optional>

namespace tavmir::host
{

// What is known of a polled variable.
struct WhyFacts {
    ValueQuality quality;
    std::optional<Clock::duration> age; // none: never read
    QString request;                    // "request 2 of 3"; empty: it is in none
    int shares = 0;                     // other variables in it
    bool isConnected = false;
    bool wasConnected = false;
    QString line; // LineHealth::words
    int station = 0;
    bool isSwitchedOff = false; // the station is
    QString aside;              // why it is set aside; null: it is not
    size_t parts = 1;           // elements on the wire
    size_t missingParts = 0;    // that have not come since it was shown last
    bool wasAsked = false;      // a request for it is known, or may be out of sight
    QString failure;            // of the last one, or that it is out of sight; empty: it went well
};

QString conclusionOf(const WhyFacts& why);

} // namespace tavmir::host

#endif
