// The list of variables, and what each is.
#ifndef TAVMIR_PAGE_VARIABLE_WORDS_H
#define TAVMIR_PAGE_VARIABLE_WORDS_H

#include "plan/polled_plan.h"

#include <functional>
#include <string>

namespace tavmir::host
{

// [{"index","name","address","station","type","format","elements","writable","isBit","low",
// "high"}…]; `low` and `high` of what has narrow bounds: bits and whole numbers.
//   writable  who may be written
std::string variablesJson(const std::vector<PolledElement>& polled,
                          const std::function<bool(const project::Element&)>& writable);

} // namespace tavmir::host

#endif
