// The last thing that went wrong on the line, and when. Kept as it came: words are made when
// somebody asks. One thread.
#ifndef TAVMIR_FEED_LAST_ERROR_H
#define TAVMIR_FEED_LAST_ERROR_H

#include "feed_entry.h"

namespace tavmir::host
{

class LastError
{
public:
    void take(const FeedEntry& entry);

    bool happened() const { return happened_; }
    WallClock::time_point time() const { return time_; }
    // "the controller did not answer within 500 ms"
    QString words() const;

private:
    bool happened_ = false;
    bool ofLink_ = false; // else failed_
    QString linkProblem_;
    Exchange failed_;
    WallClock::time_point time_;
};

} // namespace tavmir::host

#endif
