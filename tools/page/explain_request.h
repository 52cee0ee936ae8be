// The request of a pass in which a variable travels.
#ifndef TAVMIR_PAGE_EXPLAIN_REQUEST_H
#define TAVMIR_PAGE_EXPLAIN_REQUEST_H

#include "explain_facts.h"

namespace tavmir::host
{

struct SharedRequest {
    QString request; // "request 2 of 3"; empty: in none
    int shares = 0;  // other variables in it
    ExplainStep step;
};

SharedRequest sharedRequest(const ExplainFacts& facts, const PolledElement& variable);

} // namespace tavmir::host

#endif
