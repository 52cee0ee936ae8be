// The quality of each value with its reason, folded out of the feed alone: by what became of the
// requests for it and the writes of it, its age, and how the line is. It works for each request,
// never for each value of a good reply. One thread.
#ifndef TAVMIR_FEED_QUALITY_FOLD_H
#define TAVMIR_FEED_QUALITY_FOLD_H

#include "element_troubles.h"
#include "line_health.h"
#include "pass_time.h"
#include "quality.h"

#include <optional>
#include <vector>

namespace tavmir::host
{

// An element of a variable and when a good reply brought it last.
struct ReadPlace {
    WireElement element;
    Clock::rep readAt = 0; // 0: never
};

class QualityFold
{
public:
    explicit QualityFold(const QualityRules& rules);

    void take(const FeedEntry& entry);

    // Entries were missed: what went before does not belong to what comes.
    void gap() { lastFailed_ = false; }

    // The newest trouble of a refused, given up or unacknowledged request counts; without any, the
    // line and the age decide.
    //   places  of the variable
    //   readAt  when the oldest part of the shown value was read; none: nothing is shown
    ValueQuality of(const std::vector<ReadPlace>& places,
                    const std::optional<Clock::time_point>& readAt, Clock::time_point now) const;

    // True when no place has ever had trouble: of() needs no places then.
    bool isUntroubled() const { return troubles_.empty(); }

    const LineHealth& line() const { return line_; }

private:
    void takeExchange(const Exchange& exchange);
    void takeGiveUp();
    std::optional<ValueQuality> trouble(const std::vector<ReadPlace>& places) const;
    ValueQuality byAge(Clock::duration age, Clock::time_point now) const;

    Clock::duration staleAfter_;
    LineHealth line_;
    PassTime pass_;
    ElementTroubles troubles_;
    Exchange failed_;         // the last attempt, when it was a bad one to read
    bool lastFailed_ = false; // failed_ is the last exchange
};

} // namespace tavmir::host

#endif
