// What is wrong in one conversation, told: each trouble with how often, since when, in which
// rhythm, and which requests and variables it meets.
#ifndef TAVMIR_DIAGNOSE_FINDINGS_H
#define TAVMIR_DIAGNOSE_FINDINGS_H

#include "conversation.h"

#include <optional>

namespace tavmir::diagnose
{

struct Counted {
    std::string what;
    std::uint64_t times = 0;
};

struct Finding {
    Trouble trouble = Trouble::unanswered;
    std::optional<int> code = {}; // of exceptions
    std::uint64_t times = 0;
    Nanoseconds since = 0;
    Nanoseconds until = 0;
    std::uint64_t goodBefore = 0; // requests that were answered well before the first
    std::string rhythm = {};
    std::string advice = {};
    std::vector<Counted> variables = {};       // those to blame, where some are
    std::vector<Counted> requests = {};        // most often first
    std::vector<std::string> occurrences = {}; // the first ones
};

// A number of the summary. Its label is the key in JSON, in camelCase.
struct Figure {
    const char* label;
    double value;
    bool isKnown = true;
};

struct ConversationReport {
    std::string host;
    std::string controller;
    std::vector<Figure> figures;
    std::string slowest; // "50.1 ms, …Z #12 station 1 read words: Main.Mode"; empty: none
    std::vector<std::string> notes;
    std::vector<Finding> findings; // troubles before remarks
    std::vector<Counted> neverAnswered;
    std::vector<int> silentStations;
    bool isWrong = false;
};

// The ends' names are the caller's to set.
ConversationReport reportOf(const Conversation& conversation,
                            const wire::DescribeElements& describe);

} // namespace tavmir::diagnose

#endif
