// The verdicts as a table for people and as JSON for programs.
#ifndef TAVMIR_JUDGE_REPORT_H
#define TAVMIR_JUDGE_REPORT_H

#include "judge.h"

#include "wire/frame_words.h"

#include <string>

namespace tavmir::judge
{

struct Played {
    std::size_t begun = 0;
    std::size_t situations = 0;
    bool hostCame = false;
    bool isComplete = false;
};

// Why nobody can tell.
std::string whyNotJudged(Rule rule, const Script& script, const Played& played);

// One line a rule, then each broken one with what happened, its frame in words and its bytes.
std::string reportText(const Judge& judge, const Script& script, const Played& played,
                       const wire::DescribeElements& describe);

std::string reportJson(const Judge& judge, const Script& script, const Played& played,
                       const wire::DescribeElements& describe);

// 0: what could be judged is kept, and everything was played. 1: a rule is broken. 3: nobody came,
// or not everything was played.
int exitStatus(const Judge& judge, const Played& played);

} // namespace tavmir::judge

#endif
