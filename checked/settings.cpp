#include "checked/settings.h"

namespace tavmir
{
namespace checked
{

namespace
{

std::vector<std::string> split(const std::string& text, const char* separators)
{
    std::vector<std::string> pieces;
    std::size_t at = text.find_first_not_of(separators);
    while (at != std::string::npos) {
        const std::size_t end = text.find_first_of(separators, at);
        pieces.push_back(text.substr(at, end - at));
        at = text.find_first_not_of(separators, end);
    }
    return pieces;
}

bool startsWith(const std::string& text, const char* beginning)
{
    return text.compare(0, std::string(beginning).size(), beginning) == 0;
}

std::bitset<kDuties> dutiesOf(const std::string& ids, std::vector<std::string>& problems)
{
    std::bitset<kDuties> duties;
    const std::vector<std::string> names = split(ids, ",");
    for (std::size_t i = 0; i < names.size(); ++i) {
        const Duty duty = dutyOf(names[i]);
        if (duty == kDuties) {
            problems.push_back("no duty is called \"" + names[i] + "\"");
        } else {
            duties.set(static_cast<std::size_t>(duty));
        }
    }
    return duties;
}

// What the words `only:` name together. Without a known name: nothing is watched.
struct Only {
    bool given;
    std::bitset<kDuties> duties;

    Only() : given(false) {}
};

// Adds what one word asks for.
void takeWord(const std::string& word, Settings& settings, Only& only)
{
    if (word == "report") {
        return;
    }
    if (word == "abort") {
        settings.endsProcess = true;
    } else if (startsWith(word, "log:") && word.size() > 4) {
        settings.logFile = word.substr(4);
    } else if (startsWith(word, "only:")) {
        only.given = true;
        only.duties |= dutiesOf(word.substr(5), settings.problems);
    } else if (startsWith(word, "not:")) {
        settings.watched &= ~dutiesOf(word.substr(4), settings.problems);
    } else {
        settings.problems.push_back("TAVMIR_CHECK does not know \"" + word + "\"");
    }
}

} // namespace

Settings readSettings(const std::string& text)
{
    Settings settings;
    Only only;
    const std::vector<std::string> words = split(text, "; \t\n");
    for (std::size_t i = 0; i < words.size(); ++i) {
        takeWord(words[i], settings, only);
    }
    if (only.given) {
        settings.watched &= only.duties;
    }
    return settings;
}

} // namespace checked
} // namespace tavmir
