// Which reply belongs to which attempt. A repetition has its first attempt's transaction, so this
// is told by order and time.
#ifndef TAVMIR_DIAGNOSE_EXCHANGE_FOLD_H
#define TAVMIR_DIAGNOSE_EXCHANGE_FOLD_H

#include "exchange.h"

namespace tavmir::diagnose
{

constexpr std::size_t kNothing = static_cast<std::size_t>(-1);

struct Pairing {
    std::vector<std::size_t> replyOf;    // for each attempt: which of those that came, or kNothing
    std::vector<std::size_t> duplicates; // of those that came
};

// A reply right behind an attempt answers it; the other attempts are answered in their order, the
// last ones first, as many as can be. A reply that is the one before it once more, right behind it,
// is a duplicate, unless the one before it must be the answer to an earlier attempt.
Pairing pairUp(const Exchange& exchange);

// True when the host had gone on before the reply came.
bool cameLate(const Attempt& attempt, const Came& reply);

// True when the host waited for the attempt until its time was over.
bool nothingCameDuring(const Exchange& exchange, const Attempt& attempt);

} // namespace tavmir::diagnose

#endif
