// Lines into a script.
#include "script.h"

#include <algorithm>
#include <limits>
#include <sstream>

namespace tavmir::judge
{

namespace
{

constexpr Us kMostMs = 3600000;
constexpr int kMostTimes = 1000000;

constexpr PlayRow kPlayRows[] = {
    {Play::calm, "calm", "every request is answered", "for=3s"},
    {Play::slow, "slow", "replies come slowly, but in time",
     "for=20s times=10 every=1 by=250ms of=any"},
    {Play::late, "late", "a request's reply comes when the next one waits, before that one's",
     "for=30s times=3 every=3 hold=200ms of=any"},
    {Play::duplicate, "duplicate", "a reply comes twice; the next request's is held back",
     "for=20s times=3 every=3 hold=200ms of=any"},
    {Play::foreign, "foreign",
     "another reply comes first: by turns another number, station, function, count, an exception "
     "of another number, another address",
     "for=20s times=6 every=3 hold=200ms of=any"},
    {Play::tooShort, "short", "a reply lacks bytes; its length field is that of the rest",
     "for=20s times=3 every=3 of=any"},
    {Play::tooLong, "long", "a reply has bytes too many; its length field counts them",
     "for=20s times=3 every=3 of=any"},
    {Play::cut, "cut", "a reply stops in its middle", "for=30s times=2 every=3 of=any"},
    {Play::exception, "exception", "a request is refused, its repetitions too",
     "for=20s times=3 every=3 code=4 of=any"},
    {Play::drop, "drop", "a request is not answered, its repetition is",
     "for=30s times=3 every=3 of=any"},
    {Play::silent, "silent", "nothing is answered", "for=3s"},
    {Play::disconnect, "disconnect", "the connection is closed instead of a reply",
     "for=30s times=2 every=3 of=any"},
    {Play::restart, "restart", "all connections are closed, and none can be opened for a moment",
     "for=300ms"},
    {Play::refused, "refused", "the same for longer: attempts to connect fail", "for=2s"},
    {Play::rejected, "rejected", "connections are taken and closed at once", "for=5s"},
    {Play::refuseAll, "refuse-all", "every request is refused", "for=6s code=2"},
};
static_assert(sizeof kPlayRows / sizeof kPlayRows[0] == kPlays, "one row for each");

std::vector<std::string> wordsOf(const std::string& line)
{
    std::istringstream stream(line.substr(0, line.find('#')));
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

std::optional<std::int64_t> numberOf(const std::string& text, std::int64_t least, std::int64_t most)
{
    const bool digits = !text.empty() && text.size() <= 10 &&
                        text.find_first_not_of("0123456789") == std::string::npos;
    if (!digits) {
        return std::nullopt;
    }
    const std::int64_t number = std::stoll(text);
    return number >= least && number <= most ? std::optional<std::int64_t>(number) : std::nullopt;
}

// "500ms" or "2s".
std::optional<Us> timeOf(const std::string& text)
{
    const std::size_t unit = text.find_first_not_of("0123456789");
    const std::string name = unit == std::string::npos ? "" : text.substr(unit);
    if (name != "ms" && name != "s") {
        return std::nullopt;
    }
    const Us factor = name == "s" ? 1000 : 1;
    const auto number = numberOf(text.substr(0, unit), 0, kMostMs / factor);
    return number ? std::optional<Us>(milliseconds(*number * factor)) : std::nullopt;
}

// "1,2" or "1-4,9".
std::optional<std::bitset<256>> stationsOf(const std::string& text)
{
    std::bitset<256> stations;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');) {
        const std::size_t dash = part.find('-');
        const auto from = numberOf(part.substr(0, dash), 0, 255);
        const auto to = dash == std::string::npos ? from : numberOf(part.substr(dash + 1), 0, 255);
        if (!from || !to || *from > *to) {
            return std::nullopt;
        }
        for (auto station = *from; station <= *to; ++station) {
            stations.set(static_cast<std::size_t>(station));
        }
    }
    return stations.any() && text.back() != ',' ? std::optional<std::bitset<256>>(stations)
                                                : std::nullopt;
}

std::optional<Whom> whomOf(const std::string& text)
{
    if (text == "any") {
        return Whom::any;
    }
    if (text == "reads") {
        return Whom::reads;
    }
    return text == "writes" ? std::optional<Whom>(Whom::writes) : std::nullopt;
}

template <typename Value, typename Target>
bool take(const std::optional<Value>& value, Target& target)
{
    if (value) {
        target = static_cast<Target>(*value);
    }
    return value.has_value();
}

// "key=value" of a situation. False: the value is none of that key.
bool setKey(Situation& situation, const std::string& key, const std::string& value)
{
    if (key == "for") {
        return take(timeOf(value), situation.lasts);
    }
    if (key == "times") {
        return take(numberOf(value, 1, kMostTimes), situation.times);
    }
    if (key == "every") {
        return take(numberOf(value, 1, kMostTimes), situation.every);
    }
    if (key == "by") {
        return take(timeOf(value), situation.by);
    }
    if (key == "hold") {
        return take(timeOf(value), situation.hold);
    }
    if (key == "code") {
        return take(numberOf(value, 1, 255), situation.code);
    }
    return take(whomOf(value), situation.of);
}

class Reader
{
public:
    // False: the line says nothing that can be; `problem` says why.
    bool line(const std::string& text, int number);
    // Behind the last line. False as above, and `problemLine` says where.
    bool end();

    Script script;
    std::string problem;
    int problemLine = 0;

private:
    bool fail(const std::string& why)
    {
        problem = why;
        return false;
    }
    bool situation(const PlayRow& row, const std::vector<std::string>& words, int number);
    bool parameter(const std::vector<std::string>& words);
    bool timeParameter(const std::string& name, const std::string& value, bool& isOne);
    bool numberParameter(const std::string& name, const std::string& value, bool& isOne);
    bool counting(const std::vector<std::string>& words);
};

bool Reader::line(const std::string& text, int number)
{
    const std::vector<std::string> words = wordsOf(text);
    if (words.empty()) {
        return true;
    }
    for (const PlayRow& row : kPlayRows) {
        if (words[0] == row.name) {
            return situation(row, words, number);
        }
    }
    if (!script.situations.empty()) {
        return fail("\"" + words[0] + "\" is no situation; what is known of the host stands first");
    }
    return parameter(words);
}

bool Reader::situation(const PlayRow& row, const std::vector<std::string>& words, int number)
{
    Situation situation;
    situation.play = row.play;
    situation.line = number;
    std::vector<std::string> keys;
    for (const std::string& standard : wordsOf(row.keys)) {
        const std::size_t mark = standard.find('=');
        keys.push_back(standard.substr(0, mark));
        setKey(situation, keys.back(), standard.substr(mark + 1));
    }
    bool lastsAsSaid = false;
    bool hasTimes = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        situation.text += (i == 0 ? "" : " ") + words[i];
        if (i == 0) {
            continue;
        }
        const std::size_t mark = words[i].find('=');
        const std::string key = words[i].substr(0, mark);
        if (mark == std::string::npos || std::find(keys.begin(), keys.end(), key) == keys.end()) {
            return fail("\"" + words[i] + "\" is nothing that \"" + row.name +
                        "\" takes: " + row.keys);
        }
        if (!setKey(situation, key, words[i].substr(mark + 1))) {
            return fail("\"" + words[i] + "\": the value is none of \"" + key + "\"");
        }
        lastsAsSaid = lastsAsSaid || key == "for";
        hasTimes = hasTimes || key == "times";
    }
    if (lastsAsSaid && !hasTimes) {
        situation.times = 0; // the whole time
    }
    script.situations.push_back(situation);
    return true;
}

bool Reader::timeParameter(const std::string& name, const std::string& value, bool& isOne)
{
    struct Time {
        const char* name;
        Us& target;
    };
    const Time times[] = {{"reply-timeout", script.host.replyTimeout},
                          {"reconnect-within", script.host.reconnectWithin},
                          {"reconnect-pause", script.host.reconnectPause},
                          {"reconnect-rest", script.host.reconnectRest},
                          {"poll-within", script.host.pollWithin},
                          {"wait-for-host", script.waitForHost}};
    for (const Time& time : times) {
        if (name == time.name) {
            isOne = true;
            return take(timeOf(value), time.target) ||
                   fail("\"" + value + "\" is no time up to an hour, like 500ms or 2s");
        }
    }
    return true;
}

bool Reader::numberParameter(const std::string& name, const std::string& value, bool& isOne)
{
    struct Number {
        const char* name;
        int& target;
        int least;
        int most;
    };
    const Number numbers[] = {{"attempts", script.host.attempts, 1, 1000},
                              {"refused-rate", script.host.refusedRate, 0, 1000000},
                              {"slack", script.host.slackPercent, 0, 90}};
    for (const Number& number : numbers) {
        if (name == number.name) {
            isOne = true;
            return take(numberOf(value, number.least, number.most), number.target) ||
                   fail("\"" + value + "\" is no number from " + std::to_string(number.least) +
                        " to " + std::to_string(number.most));
        }
    }
    return true;
}

bool Reader::counting(const std::vector<std::string>& words)
{
    if (words.size() != 4 || words[1] != "counting" ||
        (words[2] != "word" && words[2] != "dword")) {
        return fail("\"writes\" is followed by: counting word|dword ADDRESS");
    }
    const auto address = numberOf(words[3], 0, std::numeric_limits<std::uint32_t>::max());
    if (!address) {
        return fail("\"" + words[3] + "\" is no address");
    }
    CountingWrites writes;
    writes.elements =
        words[2] == "word" ? wire::ElementClass::words : wire::ElementClass::doubleWords;
    writes.address = static_cast<std::uint32_t>(*address);
    script.host.counting = writes;
    return true;
}

bool Reader::parameter(const std::vector<std::string>& words)
{
    const std::string& name = words[0];
    if (name == "writes") {
        return counting(words);
    }
    const std::string value = words.size() == 2 ? words[1] : "";
    if (name == "stations") {
        const auto stations = stationsOf(value);
        script.host.stations = stations;
        return stations || fail("\"stations\" is followed by a list like 1,2 or 1-4");
    }
    if (value == "learn" && name == "reply-timeout") {
        script.host.replyTimeout = 0;
        return true;
    }
    if (value == "learn" && name == "attempts") {
        script.host.attempts = 0;
        return true;
    }
    bool isOne = false;
    const bool isGood = timeParameter(name, value, isOne) && numberParameter(name, value, isOne);
    return isOne ? isGood
                 : fail("\"" + name + "\" is neither a situation nor anything known of a host");
}

bool Reader::end()
{
    problemLine = 1;
    if (script.situations.empty()) {
        return fail("there is no situation to play");
    }
    for (const Situation& situation : script.situations) {
        const Us wait = std::max(situation.by, situation.hold);
        if (script.host.replyTimeout > 0 && wait > 0 &&
            wait >= script.host.least(script.host.replyTimeout)) {
            problemLine = situation.line;
            return fail("\"" + situation.text +
                        "\": what is held back so long does not come within the reply time-out");
        }
    }
    return true;
}

} // namespace

const PlayRow& rowOf(Play play)
{
    return kPlayRows[static_cast<std::size_t>(play)];
}

ScriptOutcome parseScript(const std::string& text)
{
    ScriptOutcome outcome;
    Reader reader;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        ++outcome.line;
        if (!reader.line(line, outcome.line)) {
            outcome.problem = reader.problem;
            return outcome;
        }
    }
    if (!reader.end()) {
        outcome.line = reader.problemLine;
        outcome.problem = reader.problem;
        return outcome;
    }
    outcome.script = reader.script;
    return outcome;
}

} // namespace tavmir::judge
