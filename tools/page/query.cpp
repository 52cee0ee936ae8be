// Percent-decoding, with what no address of the page needs left out.
#include "query.h"

#include "ascii_text.h"

#include <algorithm>

namespace tavmir::page
{

namespace
{

constexpr std::string_view kScheme = "http://";

int digitOf(char character)
{
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const char lower = lowerAscii(character);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool isControl(unsigned char byte)
{
    return byte < 0x20 || byte == 0x7f;
}

// How many bytes follow the first one of a character; -1: it cannot be a first one.
int followersOf(unsigned char first)
{
    if (first < 0x80) {
        return 0;
    }
    if (first >= 0xc2 && first <= 0xdf) {
        return 1;
    }
    if (first >= 0xe0 && first <= 0xef) {
        return 2;
    }
    return first >= 0xf0 && first <= 0xf4 ? 3 : -1;
}

// Longer than need be, a surrogate, or beyond the last character there is.
bool isOddSecond(unsigned char first, unsigned char second)
{
    return (first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) ||
           (first == 0xf0 && second < 0x90) || (first == 0xf4 && second > 0x8f);
}

bool isUtf8(const std::string& text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto first = static_cast<unsigned char>(text[i]);
        const int followers = followersOf(first);
        if (followers < 0 || text.size() - i <= static_cast<std::size_t>(followers)) {
            return false;
        }
        for (int k = 1; k <= followers; ++k) {
            const auto byte = static_cast<unsigned char>(text[++i]);
            if ((byte & 0xc0) != 0x80 || (k == 1 && isOddSecond(first, byte))) {
                return false;
            }
        }
    }
    return true;
}

bool readQuery(std::string_view text, Query& query)
{
    while (!text.empty()) {
        const std::string_view item = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(text.size(), item.size() + 1));
        if (item.empty()) {
            continue;
        }
        const std::size_t equals = item.find('=');
        std::pair<std::string, std::string> decoded;
        if (!decodePercent(item.substr(0, equals), true, decoded.first) ||
            (equals != item.npos &&
             !decodePercent(item.substr(equals + 1), true, decoded.second))) {
            return false;
        }
        query.items.push_back(std::move(decoded));
    }
    return true;
}

} // namespace

bool decodePercent(std::string_view text, bool plusIsBlank, std::string& decoded)
{
    decoded.clear();
    for (std::size_t i = 0; i < text.size(); ++i) {
        char byte = text[i];
        if (byte == '+' && plusIsBlank) {
            byte = ' ';
        } else if (byte == '%') {
            if (text.size() - i < 3 || digitOf(text[i + 1]) < 0 || digitOf(text[i + 2]) < 0) {
                return false;
            }
            byte = static_cast<char>(digitOf(text[i + 1]) * 16 + digitOf(text[i + 2]));
            i += 2;
        }
        if (isControl(static_cast<unsigned char>(byte))) {
            return false;
        }
        decoded += byte;
    }
    return isUtf8(decoded);
}

bool readTarget(std::string_view text, Target& target)
{
    target = Target();
    if (startsWithIgnoringCase(text, kScheme)) {
        text.remove_prefix(kScheme.size());
        target.authority = text.substr(0, text.find_first_of("/?"));
        text.remove_prefix(target.authority.size());
        if (target.authority.empty()) {
            return false;
        }
    }
    const std::size_t mark = text.find('?');
    const std::string_view path = text.substr(0, mark);
    if (path.empty() || path.front() != '/' || !decodePercent(path, false, target.path)) {
        return false;
    }
    return mark == text.npos || readQuery(text.substr(mark + 1), target.query);
}

} // namespace tavmir::page
