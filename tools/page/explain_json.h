// Why a value is there, or is not: from its address to its age, step by step.
#ifndef TAVMIR_PAGE_EXPLAIN_JSON_H
#define TAVMIR_PAGE_EXPLAIN_JSON_H

#include "explain_facts.h"

#include <string>

namespace tavmir::host
{

// {"address","name","steps":[{"step","title","ok","text","detail"}…],"conclusion"}
//   address  any text
std::string explainJson(const QString& address, const ExplainFacts& facts);

} // namespace tavmir::host

#endif
