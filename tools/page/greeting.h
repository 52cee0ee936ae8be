// The first message of a live client: {"token":"…","epoch":"…"|null,"sequence":N}.
#ifndef TAVMIR_PAGE_GREETING_H
#define TAVMIR_PAGE_GREETING_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tavmir::page
{

struct Greeting {
    std::string token;
    std::string epoch;          // empty: it has seen nothing yet
    std::uint64_t sequence = 0; // that it has seen of that epoch
};

// One flat JSON object of strings without escapes, whole numbers and null; names that are not known
// are passed over. False: it is something else, or has no token.
bool readGreeting(std::string_view text, Greeting& greeting);

} // namespace tavmir::page

#endif
