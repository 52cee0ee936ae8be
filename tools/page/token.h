// The secret of one start of the server.
#ifndef TAVMIR_PAGE_TOKEN_H
#define TAVMIR_PAGE_TOKEN_H

#include <string>
#include <string_view>

namespace tavmir::page
{

// 128 bits of the system's random numbers, as 32 hexadecimal digits. Empty: it gave none.
std::string makeToken();

// Takes as long for a guess that is nearly right as for any other of that length.
bool isSameSecret(std::string_view guess, std::string_view secret);

} // namespace tavmir::page

#endif
