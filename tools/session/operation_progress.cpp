// From attempts to outcomes.
#include "operation_progress.h"

namespace tavmir::host
{

void RequestAttempts::add(const Exchange& exchange, const QString& problem)
{
    if (exchange.isGood()) {
        acknowledged_ = true;
    } else if (exchange.isUncertain()) {
        unansweredWhy_ = problem;
    } else if (exchange.end == ExchangeEnd::exception) {
        refusedWhy_ = problem;
    } else {
        unsentWhy_ = problem;
    }
}

QString RequestAttempts::why() const
{
    if (uncertain()) {
        return unansweredWhy_;
    }
    return refused() ? refusedWhy_ : unsentWhy_;
}

void OperationProgress::requestEnded(int count, const RequestAttempts& attempts)
{
    if (attempts.acknowledged()) {
        acknowledged += count;
    } else if (attempts.uncertain()) {
        uncertain += count;
        uncertainWhy = attempts.why();
    } else if (attempts.refused()) {
        refused += count;
        refusedWhy = attempts.why();
    } else {
        unsentWhy = attempts.why();
    }
}

namespace
{

// Some acknowledged elements make the rest's outcome a partial one.
Outcome withAcknowledged(Outcome outcome)
{
    if (outcome.acknowledged > 0) {
        outcome.reason = QString("%1 of %2 elements done, the rest %3: %4")
                             .arg(outcome.acknowledged)
                             .arg(outcome.elements)
                             .arg(outcomeWord(outcome.state), outcome.reason);
        outcome.state = OutcomeState::partial;
    }
    return outcome;
}

} // namespace

Outcome OperationProgress::outcome(const QString& whyLeft) const
{
    Outcome outcome;
    outcome.elements = elements;
    outcome.acknowledged = acknowledged;
    if (acknowledged >= elements) {
        outcome.state = OutcomeState::done;
        return outcome;
    }
    if (uncertain > 0) {
        outcome.state = OutcomeState::unknown;
        outcome.reason = uncertainWhy;
    } else if (refused > 0) {
        outcome.state = OutcomeState::refused;
        outcome.reason = refusedWhy;
    } else {
        outcome.state = OutcomeState::notSent;
        outcome.reason = unsentWhy.isEmpty() ? whyLeft : unsentWhy;
    }
    return withAcknowledged(outcome);
}

Outcome OperationProgress::outcomeSoFar() const
{
    Outcome outcome;
    outcome.state = OutcomeState::unknown;
    outcome.reason = "no answer in its time, and it is still under way";
    outcome.elements = elements;
    outcome.acknowledged = acknowledged;
    return withAcknowledged(outcome);
}

} // namespace tavmir::host
