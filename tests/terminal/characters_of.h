// A locale that knows all characters, or one that knows ASCII only, while a test runs.
#ifndef TAVMIR_TESTS_TERMINAL_CHARACTERS_OF_H
#define TAVMIR_TESTS_TERMINAL_CHARACTERS_OF_H

#include <clocale>
#include <string>

namespace tavmir::host
{

class CharactersOf
{
public:
    explicit CharactersOf(const char* locale) : before_(std::setlocale(LC_CTYPE, nullptr))
    {
        isThere_ = std::setlocale(LC_CTYPE, locale) != nullptr;
    }
    ~CharactersOf() { std::setlocale(LC_CTYPE, before_.c_str()); }
    CharactersOf(const CharactersOf&) = delete;
    CharactersOf& operator=(const CharactersOf&) = delete;

    bool isThere() const { return isThere_; }

private:
    std::string before_;
    bool isThere_ = false;
};

} // namespace tavmir::host

#endif
