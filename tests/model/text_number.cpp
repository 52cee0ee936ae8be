#include "model/address_model.h"

#include <limits>

namespace tavmir::model
{

namespace
{

bool isBlank(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f' || c == u'\v';
}

Text trimmed(const Text& text)
{
    std::size_t first = 0;
    std::size_t last = text.size();
    while (first < last && isBlank(text[first])) {
        ++first;
    }
    while (last > first && isBlank(text[last - 1])) {
        --last;
    }
    return text.substr(first, last - first);
}

// The digit's value; 99 for what is no digit in any radix.
std::int32_t digitOf(char16_t c)
{
    if (c >= u'0' && c <= u'9') {
        return c - u'0';
    }
    if (c >= u'a' && c <= u'z') {
        return c - u'a' + 10;
    }
    if (c >= u'A' && c <= u'Z') {
        return c - u'A' + 10;
    }
    return 99;
}

} // namespace

std::optional<std::int32_t> numberOf(const Text& text, std::int32_t radix)
{
    if (radix != 0 && (radix < 2 || radix > 36)) {
        return std::nullopt;
    }
    Text digits = trimmed(text);
    const bool negative = !digits.empty() && digits.front() == u'-';
    if (!digits.empty() && (negative || digits.front() == u'+')) {
        digits.erase(0, 1);
    }
    const bool hexPrefix = digits.size() > 2 && digits[0] == u'0' &&
                           (digits[1] == u'x' || digits[1] == u'X') && digitOf(digits[2]) < 16;
    if (hexPrefix && (radix == 0 || radix == 16)) {
        digits.erase(0, 2);
        radix = 16;
    }
    if (radix == 0) {
        radix = !digits.empty() && digits.front() == u'0' ? 8 : 10;
    }
    if (digits.empty()) {
        return std::nullopt;
    }

    std::int64_t value = 0;
    for (const char16_t c : digits) {
        if (digitOf(c) >= radix) {
            return std::nullopt;
        }
        value = value * radix + digitOf(c);
        if (value > std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1) {
            return std::nullopt;
        }
    }
    const std::int64_t number = negative ? -value : value;
    if (number > std::numeric_limits<std::int32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(number);
}

} // namespace tavmir::model
