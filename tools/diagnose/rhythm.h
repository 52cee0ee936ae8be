// How something recurs, in words.
#ifndef TAVMIR_DIAGNOSE_RHYTHM_H
#define TAVMIR_DIAGNOSE_RHYTHM_H

#include "moment.h"

#include <string>
#include <vector>

namespace tavmir::diagnose
{

struct Occurrence {
    Nanoseconds at = 0;
    std::uint64_t ordinal = 0; // of the request, repetitions counted; 0: of none
};

// "every 50th request", "each request", "mostly every 50th request", "every 5.0 s", "in 3 bursts,
// the longest of 12 within 2.1 s", "irregularly, 12.5 a minute"; empty of less than three, or of a
// few close together.
//   occurrences  by time
std::string rhythmOf(const std::vector<Occurrence>& occurrences);

// "0.12 ms", "612.3 ms", "2.1 s"
std::string durationInWords(Nanoseconds duration);

} // namespace tavmir::diagnose

#endif
