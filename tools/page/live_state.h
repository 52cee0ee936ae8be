// What a running host knows, folded out of the feed for the page. One thread.
#ifndef TAVMIR_PAGE_LIVE_STATE_H
#define TAVMIR_PAGE_LIVE_STATE_H

#include "feed/feed.h"
#include "feed/line_figures.h"
#include "feed/recent_figures.h"
#include "feed/value_fold.h"
#include "feed_events.h"
#include "history_store.h"
#include "kept_entries.h"
#include "moments.h"
#include "plan/frame_plan.h"
#include "show_budget.h"
#include "value_rows.h"

#include <map>

namespace tavmir::host
{

struct LiveLimits {
    size_t historyBytes = HistoryStore::kMostBytes;
    size_t keptBytes = KeptEntries::kMostBytes;
};

class LiveState
{
public:
    // Subscribes: what happens from now on is in.
    LiveState(Feed& feed, const project::Project& project, const QualityRules& rules,
              const Clocks& clocks, const LiveLimits& limits);

    // Takes what happened since the last call. What is shown follows as the budget allows; another
    // list, an event or the connection at once.
    void look();
    // The same between two looks, which would miss something of a fast line; shows what is shown at
    // once only.
    void keepUp();
    ShowBudget& budget() { return budget_; }

    // Counts looks that changed something; each second one does, as time goes on.
    quint64 sequence() const { return sequence_; }
    // Counts lists of variables, and the look that brought the present one.
    quint64 generation() const { return generation_; }
    quint64 listedAt() const { return listedAt_; }

    const ValueFold& values() const { return values_; }
    const std::vector<PolledElement>& polled() const { return values_.variables(); }
    const ValueRows& rows() const { return rows_; }
    const EventStore& events() const { return events_; }
    FeedEvents& feedEvents() { return feedEvents_; }
    const KeptEntries& kept() const { return kept_; }
    const HistoryStore& history() const { return history_; }
    // The number of the variable's track; none: it is no number, or not polled.
    std::optional<size_t> trackOf(size_t variable) const;

    // Counts plans: what the controller is asked for, the requests, and what is left out.
    quint64 planGeneration() const { return planGeneration_; }
    const std::vector<PolledElement>& asked() const { return asked_; }
    size_t askedOnWire() const { return askedOnWire_; } // elements
    const std::vector<PlannedFrame>& frames() const { return frames_; }
    const std::map<size_t, QString>& setAside() const { return setAside_; }

    const project::ElementNames& names() const { return names_; }
    const LineFigures& figures() const { return figures_; }
    const RecentFigures& recent() const { return recent_; }
    quint64 missed() const { return reader_->missed(); }

    // "connecting", "connected", "silent", "refusing", "lost", "never"; and since when.
    const char* linkState() const;
    WallClock::time_point linkSince() const { return linkSince_; }
    WallClock::time_point startedAt() const { return startedAt_; }

private:
    void take(const FeedEntry& entry);
    void takePlan(const PolledGeneration& plan);
    void followClock(Clock::time_point steady, WallClock::time_point wall);
    void takeLink(const FeedEntry& entry);
    void changed(size_t variable, WallClock::time_point moment);
    void takeIn();
    bool isUrgent() const { return isOther_ || events_.newest() != newestEvent_; }
    void findInTime(Clock::time_point now);
    void findChanges();
    bool differs(size_t variable) const;
    void show(Clock::time_point now);
    void list(qint64 since);
    void tellGap(size_t track, const ValueQuality& quality, qint64 readAt);
    void showChanges();
    void showQualities(Clock::time_point now);

    const Clocks clocks_;
    const project::ElementNames names_;
    const WallClock::time_point startedAt_;
    SteadyMoments moments_;
    SetBacks setBacks_;
    std::unique_ptr<FeedReader> reader_;
    ValueFold values_;
    LineFigures figures_;
    RecentFigures recent_;
    KeptEntries kept_;
    EventStore events_;
    FeedEvents feedEvents_;
    HistoryStore history_;
    ValueRows rows_;

    std::shared_ptr<const PolledGeneration> plan_; // told again behind what was missed
    std::vector<PolledElement> asked_;
    size_t askedOnWire_ = 0;
    std::vector<PlannedFrame> frames_;
    std::map<size_t, QString> setAside_;
    std::map<QString, size_t> tracks_;           // by address
    std::vector<std::optional<size_t>> trackOf_; // by variable
    std::vector<qint64> changedAt_;              // by variable: since the last look; 0: it did not
    // By variable, as they were looked at last: numbers, and what is none.
    std::vector<std::optional<quint32>> numbers_;
    std::vector<QByteArray> bytes_;
    size_t followed_ = 0;                              // changes since foundAt_
    std::optional<WallClock::time_point> notFollowed_; // the last entry that was not, since then
    std::vector<size_t> changed_;                      // variables that did

    ShowBudget budget_;
    quint64 sequence_ = 0;
    quint64 next_ = 1;        // of this look
    bool isOther_ = false;    // something is, since the last look
    quint64 newestEvent_ = 0; // at the last look
    quint64 generation_ = 0;
    quint64 planGeneration_ = 0;
    quint64 listedAt_ = 0;
    Clock::time_point countedAt_;
    Clock::time_point foundAt_; // changes that were not followed
    Clock::time_point qualitiesAt_;
    size_t refreshFrom_ = 0; // the first of the rows that are refreshed next
    bool wasTried_ = false;  // to connect
    WallClock::time_point linkSince_;
};

} // namespace tavmir::host

#endif
