// The wall clock set back while the host runs: its times come once more.
#include "live_state.h"

#include <algorithm>

namespace tavmir::host
{

// Behind what happened by then, and before what did since.
void LiveState::followClock(Clock::time_point steady, WallClock::time_point wall)
{
    const std::chrono::nanoseconds by = setBacks_.at(steady, wall);
    if (by == std::chrono::nanoseconds::zero()) {
        return;
    }
    history_.forgetLater(wholeMsOf(wall));
    for (qint64& moment : changedAt_) {
        moment = std::min(moment, wholeMsOf(wall));
    }
    if (notFollowed_) {
        notFollowed_ = std::min(*notFollowed_, wall);
    }
    linkSince_ -= std::chrono::duration_cast<WallClock::duration>(by);
    PageEvent event;
    event.at = msOf(wall);
    event.kind = "clock";
    event.text = QString("the clock was set back by %1: values kept of later times are forgotten")
                     .arg(durationText(std::chrono::duration_cast<Clock::duration>(by)));
    event.bad = true;
    events_.add(event);
}

} // namespace tavmir::host
