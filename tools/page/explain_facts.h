// What an explanation is made of, and of what.
#ifndef TAVMIR_PAGE_EXPLAIN_FACTS_H
#define TAVMIR_PAGE_EXPLAIN_FACTS_H

#include "feed/value_fold.h"
#include "kept_entries.h"
#include "plan/frame_plan.h"
#include "project/element_names.h"

#include <map>

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

// One step from the address to the age.
struct ExplainStep {
    const char* step = "";
    QString title;
    std::optional<bool> ok; // none: nothing is known yet, or it cannot be said
    QString text;
    QString detail; // null: none
};

} // namespace tavmir::host

#endif
