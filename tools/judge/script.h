// What is played to a host, and what is known of it: a plain text, one thing a line.
//
//   # how the host is set up
//   reply-timeout 500ms
//   attempts 3
//   # what is played, one after the other
//   calm for=2s
//   late times=3 every=4
#ifndef TAVMIR_JUDGE_SCRIPT_H
#define TAVMIR_JUDGE_SCRIPT_H

#include "wire/frame_layout.h"

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavmir::judge
{

using Us = std::int64_t; // microseconds

constexpr Us milliseconds(Us ms)
{
    return ms * 1000;
}

// Writes whose values count: each one more than the one before.
struct CountingWrites {
    wire::ElementClass elements = wire::ElementClass::words;
    std::uint32_t address = 0;
};

struct HostTraits {
    Us replyTimeout = milliseconds(500); // 0: to be learned
    int attempts = 3;                    // sendings of one request; 0: to be learned
    Us reconnectWithin = milliseconds(10000);
    Us reconnectPause = milliseconds(50);  // between an end and the next connection, at least
    Us reconnectRest = milliseconds(2000); // pauses this long need not grow
    Us pollWithin = milliseconds(2000);
    int refusedRate = 20;  // requests a second that need not fall when all are refused
    int slackPercent = 20; // of each time, for what the line and this machine add
    std::optional<std::bitset<256>> stations; // none: any
    std::optional<CountingWrites> counting;

    // The least of a time that a host keeps, as it may look from here.
    Us least(Us time) const { return time - time * slackPercent / 100; }
};

enum class Play {
    calm,
    slow,
    late,
    duplicate,
    foreign,
    tooShort,
    tooLong,
    cut,
    exception,
    drop,
    silent,
    disconnect,
    restart,
    refused,
    rejected,
    refuseAll
};

enum class Whom { any, reads, writes };

struct Situation {
    Play play = Play::calm;
    int line = 0;          // of the script
    Us lasts = 0;          // at most
    int times = 0;         // it is over when it has happened so often; 0: it lasts
    int every = 1;         // it happens to every n-th request
    Us by = 0;             // slow: how late a reply comes
    Us hold = 0;           // how long the right reply waits behind a wrong one
    std::uint8_t code = 0; // of exceptions
    Whom of = Whom::any;   // which requests it happens to
    std::string text;      // the line itself
};

struct PlayRow {
    Play play;
    const char* name;
    const char* help;
    const char* keys; // that its line may have, and their defaults
};

// Every play in the order of the enumeration.
const PlayRow& rowOf(Play play);
constexpr int kPlays = static_cast<int>(Play::refuseAll) + 1;

struct Script {
    HostTraits host;
    Us waitForHost = milliseconds(60000);
    std::vector<Situation> situations; // at least one
};

struct ScriptOutcome {
    std::optional<Script> script;
    int line = 0;        // of what is wrong
    std::string problem; // empty when there is a script
};

ScriptOutcome parseScript(const std::string& text);

} // namespace tavmir::judge

#endif
