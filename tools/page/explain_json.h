// Why a value is there, or is not: from its address to its age, step by step.
#ifndef TAVMIR_PAGE_EXPLAIN_JSON_H
#define TAVMIR_PAGE_EXPLAIN_JSON_H

#include "feed/value_fold.h"
#include "kept_entries.h"
#include "plan/frame_plan.h"
#include "project/element_names.h"

#include <map>
#include <string>

namespace tavmir::host
{

// What is known, for the time of the call.
struct ExplainFacts {
    const project::Project& project;
    const project::ElementNames& names;
    const ValueFold& values;
    const KeptEntries& kept;
    const std::vector<PolledElement>& asked;   // what the controller is asked for
    const std::vector<PlannedFrame>& frames;   // of it
    const std::map<size_t, QString>& setAside; // why, by place in the polled list
    Clock::time_point now;
};

// {"address","name","steps":[{"step","title","ok","text","detail"}…],"conclusion"}
//   address  any text
std::string explainJson(const QString& address, const ExplainFacts& facts);

} // namespace tavmir::host

#endif
