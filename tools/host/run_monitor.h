// What a run knows, folded out of the session's feed: values, figures, how the connection is. Used
// by one thread, which looks at the feed when it suits it.
#ifndef TAVMIR_HOST_RUN_MONITOR_H
#define TAVMIR_HOST_RUN_MONITOR_H

#include "feed/feed.h"
#include "feed/line_figures.h"
#include "run_view.h"

namespace tavmir::host
{

class RunMonitor
{
public:
    // Subscribes: what happens from now on is in.
    //   controller   "HOST:PORT", for messages
    //   everyChange  the view is told each change
    RunMonitor(Feed& feed, const QString& controller, RunView& view, bool everyChange);

    // Takes what has happened since the last call; the view is told of connections and changes.
    void look();

    // Shows all values as they are now.
    void show();

    const LineFigures& figures() const { return figures_; }

private:
    void take(const FeedEntry& entry);
    void tellLine(const FeedEntry& entry);
    QString withController(const QString& why) const;

    std::unique_ptr<FeedReader> reader_;
    QString controller_;
    RunView& view_;
    bool everyChange_;
    ValueFold values_;
    LineFigures figures_;
    RecentFigures recent_;
    LineState state_;
    bool failureTold_ = false;
};

} // namespace tavmir::host

#endif
