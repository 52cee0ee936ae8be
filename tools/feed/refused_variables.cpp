// What is set aside and what comes back.
#include "refused_variables.h"

namespace tavmir::host
{

void RefusedVariables::take(const FeedEntry& entry)
{
    switch (entry.kind) {
    case FeedKind::elementSetAside:
        whyByName_[entry.variable] = entry.text;
        break;
    case FeedKind::elementBack:
        whyByName_.erase(entry.variable);
        break;
    case FeedKind::planChanged:
        whyByName_.clear();
        for (const SetAside& one : entry.plan->setAside) {
            whyByName_[entry.plan->polled[one.place].name] = one.why;
        }
        break;
    default:
        break;
    }
}

} // namespace tavmir::host
