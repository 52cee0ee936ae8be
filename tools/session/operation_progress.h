// How far an operation has come, element by element, over all requests and attempts it took; and
// what that makes of it in the end.
#ifndef TAVMIR_SESSION_OPERATION_PROGRESS_H
#define TAVMIR_SESSION_OPERATION_PROGRESS_H

#include "feed/exchange.h"
#include "feed/outcome.h"

#include <optional>

namespace tavmir::host
{

// The attempts with one frame. A repetition carries the same transaction id, so a late reply to
// the first attempt answers the second: only all attempts together say what became of it.
class RequestAttempts
{
public:
    // problem  why, as endInWords says it
    void add(const Exchange& exchange, const QString& problem);

    bool acknowledged() const { return acknowledged_; }
    // Some attempt was sent and never answered: the controller may have carried it out.
    bool uncertain() const { return !acknowledged_ && !unansweredWhy_.isNull(); }
    bool refused() const { return !acknowledged_ && !uncertain() && !refusedWhy_.isNull(); }
    // Why the request was not acknowledged.
    QString why() const;

private:
    bool acknowledged_ = false;
    QString unansweredWhy_; // null: every attempt that was sent was answered
    QString refusedWhy_;    // null: no exception came
    QString unsentWhy_;
};

struct OperationProgress {
    int elements = 0; // on the wire
    int acknowledged = 0;
    int uncertain = 0;
    int refused = 0;
    QString uncertainWhy;
    QString refusedWhy;
    QString unsentWhy; // of elements whose request never left

    // A request that carried `count` of the elements is over.
    void requestEnded(int count, const RequestAttempts& attempts);

    // What became of it, if nothing more happens.
    //   whyLeft  why elements that were in no request stay behind
    Outcome outcome(const QString& whyLeft) const;

    // What is known while some of it is still under way.
    Outcome outcomeSoFar() const;
};

} // namespace tavmir::host

#endif
