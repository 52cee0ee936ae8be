// The feed, folded for a view.
#include "run_monitor.h"

#include "project/counted.h"

namespace tavmir::host
{

RunMonitor::RunMonitor(Feed& feed, const QualityRules& rules, RunView& view, bool everyChange)
    : reader_(feed.subscribe()), controller_(rules.controller), view_(view),
      everyChange_(everyChange), values_(rules)
{
}

void RunMonitor::look()
{
    reader_->read([this](const FeedEntry& entry) { take(entry); },
                  [this](quint64 count) {
                      figures_.gap(count);
                      values_.gap();
                      if (everyChange_) {
                          view_.message(project::counted(count, "event was", "events were") +
                                        " missed: changes meanwhile are not shown");
                      }
                  });
}

void RunMonitor::take(const FeedEntry& entry)
{
    const bool wasConnected = values_.line().isConnected();
    figures_.take(entry);
    recent_.take(entry);
    refused_.take(entry);
    if (everyChange_) {
        values_.take(entry, [&](size_t variable) { tellChange(variable, entry); });
    } else {
        values_.take(entry);
    }
    if (entry.kind == FeedKind::planChanged) {
        rememberQualities(entry.at);
    }
    tellLine(entry, wasConnected);
    tellSilence(entry);
}

// What was known before another list came was told before.
void RunMonitor::rememberQualities(Clock::time_point now)
{
    told_.clear();
    for (size_t i = 0; i < values_.variables().size(); ++i) {
        told_.push_back(values_.quality(i, now).quality);
    }
}

void RunMonitor::tellChange(size_t variable, const FeedEntry& entry)
{
    const ValueRow row = rowOf(values_, variable, entry.at);
    told_[variable] = row.quality;
    view_.change(row, entry.wall);
}

void RunMonitor::tellQualities(Clock::time_point now)
{
    for (size_t i = 0; i < told_.size(); ++i) {
        if (values_.quality(i, now).quality != told_[i]) {
            const ValueRow row = rowOf(values_, i, now);
            told_[i] = row.quality;
            view_.change(row, WallClock::now());
        }
    }
}

// What failed names its address by itself, unless it is a name that was looked up.
QString RunMonitor::withController(const QString& why) const
{
    return why.startsWith(controller_ + ": ") ? why : controller_ + ": " + why;
}

void RunMonitor::tellLine(const FeedEntry& entry, bool wasConnected)
{
    if (entry.standing && (entry.kind == FeedKind::connected) == wasConnected) {
        return; // known
    }
    switch (entry.kind) {
    case FeedKind::connected:
        failureTold_ = false;
        silenceTold_ = false;
        view_.message("connected to " + controller_);
        break;
    case FeedKind::connectFailed:
        if (!failureTold_) {
            view_.message(
                QString("cannot connect to %1; trying again").arg(withController(entry.text)));
        }
        failureTold_ = true;
        break;
    case FeedKind::connectionLost:
        failureTold_ = true;
        view_.message(QString("lost %1: %2").arg(controller_, entry.text));
        break;
    case FeedKind::elementSetAside:
        view_.message(QString("%1: %2").arg(entry.variable, entry.text));
        break;
    case FeedKind::elementBack:
        view_.message(entry.variable + ": answers again");
        break;
    default:
        break;
    }
}

// One lost reply is no news: a request that was given up is.
void RunMonitor::tellSilence(const FeedEntry& entry)
{
    const LineHealth& line = values_.line();
    if (!silenceTold_ && entry.kind == FeedKind::gaveUp && line.isSilent()) {
        silenceTold_ = true;
        view_.message(QString("no reply from %1: %2").arg(controller_, line.problem()));
    } else if (silenceTold_ && line.isAlive()) {
        silenceTold_ = false;
        view_.message(controller_ + " answers again");
    }
}

void RunMonitor::show(const RecordingStrip& recording)
{
    const LineHealth& line = values_.line();
    const Clock::time_point now = Clock::now();
    view_.show(rowsOf(values_, now), {line.isAlive(), line.words(now), recent_.at(now), recording});
}

} // namespace tavmir::host
