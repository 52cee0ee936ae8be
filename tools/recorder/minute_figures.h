// The line's figures of one minute after the other. One thread.
#ifndef TAVMIR_RECORDER_MINUTE_FIGURES_H
#define TAVMIR_RECORDER_MINUTE_FIGURES_H

#include "feed/line_figures.h"
#include "recorded_rows.h"

namespace tavmir::recorder
{

class MinuteFigures
{
public:
    void take(const host::FeedEntry& entry) { figures_->take(entry); }
    void gap(quint64 count) { figures_->gap(count); }

    // The minute that is under way, until now; begins the next one when the clock's minute is over.
    MinuteRow row(Micros now);
    // The next row begins now, without what was counted before.
    void restart(Micros now);

private:
    Micros began_ = 0;
    std::unique_ptr<host::LineFigures> figures_ = std::make_unique<host::LineFigures>();
};

} // namespace tavmir::recorder

#endif
