// Outcomes in words.
#include "outcome.h"

namespace tavmir::host
{

const char* outcomeWord(OutcomeState state)
{
    switch (state) {
    case OutcomeState::done:
        return "done";
    case OutcomeState::refused:
        return "refused";
    case OutcomeState::notSent:
        return "not sent";
    case OutcomeState::unknown:
        return "unknown";
    case OutcomeState::partial:
        break;
    }
    return "partial";
}

QString outcomeInWords(const Outcome& outcome)
{
    return outcome.reason.isEmpty()
               ? QString(outcomeWord(outcome.state))
               : QString("%1: %2").arg(outcomeWord(outcome.state), outcome.reason);
}

} // namespace tavmir::host
