// The target of a request taken apart: path and query, decoded. Whatever cannot be decoded is
// refused, never guessed.
#ifndef TAVMIR_PAGE_QUERY_H
#define TAVMIR_PAGE_QUERY_H

#include "page_content.h"

#include <string_view>

namespace tavmir::page
{

struct Target {
    std::string authority; // of "http://AUTHORITY/…"; empty: the target is a path alone
    std::string path;      // decoded, begins with "/"
    Query query;
};

// "%2B" and the like become bytes, "+" a blank where `plusIsBlank`. False: an escape that is none,
// a control character, or what is not UTF-8; `decoded` is then of no use.
bool decodePercent(std::string_view text, bool plusIsBlank, std::string& decoded);

// Reads "/path?query" or "http://authority/path?query". False: it is neither, or does not decode.
bool readTarget(std::string_view text, Target& target);

} // namespace tavmir::page

#endif
