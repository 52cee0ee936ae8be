// What a run knows, folded out of the session's feed: values with their qualities, figures, how the
// line is. Used by one thread, which looks at the feed when it suits it.
#ifndef TAVMIR_HOST_RUN_MONITOR_H
#define TAVMIR_HOST_RUN_MONITOR_H

#include "feed/feed.h"
#include "feed/line_figures.h"
#include "feed/refused_variables.h"
#include "run_view.h"

namespace tavmir::host
{

class RunMonitor
{
public:
    // Subscribes: what happens from now on is in.
    //   rules        name the controller, for messages
    //   everyChange  the view is told each change
    RunMonitor(Feed& feed, const QualityRules& rules, RunView& view, bool everyChange);

    // Takes what has happened since the last call; the view is told of connections and changes.
    void look();

    // Tells the view each value whose quality is another one than was told last. For a run that
    // shows changes only, from time to time: it goes over all values.
    void tellQualities(Clock::time_point now);

    // Shows all values as they are now.
    void show(const RecordingStrip& recording = RecordingStrip());

    const LineFigures& figures() const { return figures_; }
    const RefusedVariables& refused() const { return refused_; }
    // There was a connection once at least.
    bool wasConnected() const { return values_.line().wasConnected(); }

private:
    void take(const FeedEntry& entry);
    void tellLine(const FeedEntry& entry, bool wasConnected);
    void tellSilence(const FeedEntry& entry);
    void rememberQualities(Clock::time_point now);
    void tellChange(size_t variable, const FeedEntry& entry);
    QString withController(const QString& why) const;

    std::unique_ptr<FeedReader> reader_;
    QString controller_;
    RunView& view_;
    bool everyChange_;
    ValueFold values_;
    LineFigures figures_;
    RecentFigures recent_;
    RefusedVariables refused_;
    std::vector<Quality> told_; // of each variable, with everyChange_
    bool failureTold_ = false;
    bool silenceTold_ = false;
};

} // namespace tavmir::host

#endif
