// Comparing what the protocol writes in letters of either case, whatever the locale.
#ifndef TAVMIR_PAGE_ASCII_TEXT_H
#define TAVMIR_PAGE_ASCII_TEXT_H

#include <algorithm>
#include <string_view>

namespace tavmir::page
{

inline char lowerAscii(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

inline bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowerAscii(x) == lowerAscii(y); });
}

inline bool startsWithIgnoringCase(std::string_view text, std::string_view start)
{
    return equalIgnoringCase(text.substr(0, start.size()), start);
}

} // namespace tavmir::page

#endif
