// One line of a trace, the same wherever frames are traced:
//
//   2026-11-22T02:00:27.123Z client 1 > #7 station 1 read words: Main.W
//   2026-11-22T02:00:27.124Z client 1 < #7 station 1 read words: Main.W=4660 [late] (+0.412 ms)
//   when                     who     way what                                why    since the
//   request
//
// and behind it, where they are wanted, the bytes: " | 00 07 00 00 …".
#ifndef TAVMIR_WIRE_TRACE_LINE_H
#define TAVMIR_WIRE_TRACE_LINE_H

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace tavmir
{
namespace wire
{

enum class TraceWay : char {
    toController = '>',
    fromController = '<',
    nothing = '-' // nothing was on its way: the line says what happened instead
};

struct TraceLine {
    std::chrono::system_clock::time_point at;
    std::string who; // the connection: "client 1"
    TraceWay way = TraceWay::nothing;
    std::string words;
    std::vector<std::string> remarks;         // what is not as usual: "late"
    const unsigned char* bytes = nullptr;     // null: not shown
    std::size_t size = 0;                     // of them
    bool hasRequest = false;                  // something came of a request, or did not
    std::chrono::nanoseconds sinceRequest{0}; // with hasRequest
};

// What it says and what is not as usual: "#7 station 1 read words: Main.W=4660 [late]".
std::string wordsAndRemarks(const TraceLine& line);

// Without the line's end.
std::string traceLine(const TraceLine& line);

} // namespace wire
} // namespace tavmir

#endif
