// The requests of a pass.
#ifndef TAVMIR_PAGE_PLAN_JSON_H
#define TAVMIR_PAGE_PLAN_JSON_H

#include "feed/feed_entry.h"
#include "plan/frame_plan.h"
#include "project/element_names.h"

#include <string>

namespace tavmir::host
{

// What the controller is asked for: all but what is set aside.
std::vector<PolledElement> askedOf(const PolledGeneration& plan);

// {"generation","requests":[{"number","of","station","class","function","elements","bytes",
// "replyBytes","first","last","ends","variables"}…],"hints","passElements"}
//   frames  of `asked`
std::string planJson(quint64 generation, const std::vector<PolledElement>& asked,
                     const std::vector<PlannedFrame>& frames, const project::ElementNames& names);

} // namespace tavmir::host

#endif
