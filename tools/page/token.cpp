// Random bytes as digits.
#include "token.h"

#include <sys/random.h>

#include <array>

namespace tavmir::page
{

std::string makeToken()
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::array<unsigned char, 16> bytes{};
    // So few bytes are never cut short by a signal.
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        return std::string();
    }
    std::string token;
    for (const unsigned char byte : bytes) {
        token += kDigits[byte >> 4];
        token += kDigits[byte & 0xf];
    }
    return token;
}

bool isSameSecret(std::string_view guess, std::string_view secret)
{
    if (guess.size() != secret.size() || secret.empty()) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t i = 0; i < secret.size(); ++i) {
        difference |= static_cast<unsigned char>(guess[i]) ^ static_cast<unsigned char>(secret[i]);
    }
    return difference == 0;
}

} // namespace tavmir::page
