// As much of JSON as a greeting needs.
#include "greeting.h"

#include <algorithm>
#include <optional>

namespace tavmir::page
{

namespace
{

class Scanner
{
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool take(std::string_view expected)
    {
        skipBlanks();
        if (rest_.substr(0, expected.size()) != expected) {
            return false;
        }
        rest_.remove_prefix(expected.size());
        return true;
    }

    bool isAtEnd()
    {
        skipBlanks();
        return rest_.empty();
    }

    std::optional<std::string> string()
    {
        if (!take("\"")) {
            return std::nullopt;
        }
        const std::size_t end = rest_.find('"');
        if (end == rest_.npos) {
            return std::nullopt;
        }
        std::string text(rest_.substr(0, end));
        for (const char character : text) {
            if (character == '\\' || static_cast<unsigned char>(character) < 0x20) {
                return std::nullopt;
            }
        }
        rest_.remove_prefix(end + 1);
        return text;
    }

    std::optional<std::uint64_t> number()
    {
        constexpr std::size_t kMostDigits = 19; // of a number that fits
        skipBlanks();
        const std::size_t digits = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        if (digits == 0 || digits > kMostDigits || (digits > 1 && rest_.front() == '0')) {
            return std::nullopt;
        }
        std::uint64_t value = 0;
        for (const char digit : rest_.substr(0, digits)) {
            value = value * 10 + static_cast<std::uint64_t>(digit - '0');
        }
        rest_.remove_prefix(digits);
        return value;
    }

private:
    void skipBlanks()
    {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
    }

    std::string_view rest_;
};

bool readMember(Scanner& scanner, Greeting& greeting)
{
    const auto name = scanner.string();
    if (!name || !scanner.take(":")) {
        return false;
    }
    const bool isText = *name == "token" || *name == "epoch";
    if (auto text = scanner.string()) {
        if (isText) {
            (*name == "token" ? greeting.token : greeting.epoch) = std::move(*text);
        }
        return *name != "sequence";
    }
    if (scanner.take("null")) {
        return true;
    }
    const auto number = scanner.number();
    if (number && *name == "sequence") {
        greeting.sequence = *number;
    }
    return number && !isText;
}

} // namespace

bool readGreeting(std::string_view text, Greeting& greeting)
{
    greeting = Greeting();
    Scanner scanner(text);
    if (!scanner.take("{")) {
        return false;
    }
    do {
        if (!readMember(scanner, greeting)) {
            return false;
        }
    } while (scanner.take(","));
    return scanner.take("}") && scanner.isAtEnd() && !greeting.token.empty();
}

} // namespace tavmir::page
