// One request on its way: when it was sent, how often, and what it was sent in return.
#ifndef TAVMIR_JUDGE_FLIGHT_H
#define TAVMIR_JUDGE_FLIGHT_H

#include "event.h"

#include <deque>
#include <optional>
#include <vector>

namespace tavmir::judge
{

struct Flight {
    Bytes bytes;
    Us lastAt = 0;     // when it was sent last
    Us earliestAt = 0; // the same, if this machine was slow to notice
    int sendings = 1;
    bool isSlow = false;      // its reply comes slowly, on purpose
    std::optional<Reply> end; // what answered it: right, exception, tooShort, tooLong or cut
    Us endAt = 0;
    std::vector<Reply> strays; // late, duplicate, foreign: what came beside

    std::uint16_t transaction() const { return wire::bigEndian16(bytes.data()); }
    const wire::FunctionCode* function() const
    {
        return wire::findFunctionCode(bytes[wire::kFunctionOffset]);
    }
    bool isWrite() const { return function() != nullptr && function()->write; }
};

// What one connection carries.
struct Line {
    static constexpr std::size_t kMostNumbers = 32;

    std::optional<Flight> flight; // the last request, answered or not
    std::vector<Reply> strays;    // that came behind its end: they meet the next one
    std::deque<unsigned> numbers; // transactions of requests before
};

} // namespace tavmir::judge

#endif
