// What became of each variable in the request that polling puts it into, folded out of the feed of
// one pass. One thread.
#ifndef TAVMIR_SESSION_PASS_CHECK_H
#define TAVMIR_SESSION_PASS_CHECK_H

#include "feed/feed_entry.h"

#include <map>
#include <set>

namespace tavmir::host
{

enum class CheckEnd {
    answered,
    refused,  // with an exception
    noAnswer, // asked for, but nothing that answers came
    notAsked
};

// What became of one question.
struct CheckAnswer {
    CheckEnd end = CheckEnd::notAsked;
    quint8 code = 0; // of a refused one
    double ms = 0;   // from request to reply, or until it was over
    QString why;     // of what is not answered
};

CheckAnswer answerOf(const Exchange& exchange);

class PassCheck
{
public:
    explicit PassCheck(const std::vector<PolledElement>& polled);

    // True when this was the end of a polled request.
    bool take(const FeedEntry& entry);

    // Every element was in a request, and what became of the last is known.
    bool isOver() const { return seen_.size() == users_.size() && !isUnderWay_; }
    int requests() const { return requests_; }
    // Of the request that ended last.
    int station() const { return station_; }
    const CheckAnswer& last() const { return last_; }

    struct Variable {
        CheckAnswer answer;
        int request = 0; // from 1; 0: it was in none. Of several the first
        int sharing = 0; // elements of that request
    };
    const std::vector<Variable>& variables() const { return variables_; }

private:
    void begin(const Exchange& exchange);
    void end();

    std::map<WireElement, std::vector<size_t>> users_;
    std::set<WireElement> seen_;
    std::vector<Variable> variables_;
    std::set<size_t> asked_; // variables whose elements were first asked for by the present request
    bool isUnderWay_ = false;
    int requests_ = 0;
    int station_ = 0;
    CheckAnswer last_;
};

} // namespace tavmir::host

#endif
